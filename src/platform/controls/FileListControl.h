#pragma once

#include "DirectoryReader.h"
#include "FileListItem.h"
#include "FileListModel.h"

#include <QList>
#include <QSet>
#include <QStringList>
#include <QWidget>

#include <functional>

class QAction;
class QLabel;
class QTimer;
class QTreeView;

namespace nebra {

class FileListFilterBox;
class FileListView;

class FolderReaders;
class FolderWatch;

// The file list pane: the subfolders and documents of one folder, filtered
// by a wildcard pattern (WildcardFilter), in the columns "Name", "Size",
// "Type", "Date Modified" and any added after them.
//
// The listing is read on a reader thread (FolderReaders) once the folder or
// the filter changed (so setting both one after the other costs one
// listing), and again, with the selection kept, when the folder changes on
// disk. Until it arrives the list keeps its rows; listed() says it has
// arrived, and what acts on the listing acts then. A folder that has not
// answered within two seconds shows no rows and one line saying that the
// list waits for it, and waiting() is emitted; the rows follow when it
// answers. A folder that vanishes while shown lists no documents. Before a column is
// shown columnAboutToBeShown() may refuse it; a header click sorts by that
// column (ascending, then descending) after announcing the click.
//
// The user renames an item in place (F2, or a click on the selected name):
// beforeItemRenamed() may cancel, and a name the file system cannot take,
// or an existing name, is refused with a message and changes nothing. The
// Delete key moves the selected items to the desktop's trash after the user
// confirms. Both reach the file system on a reader thread: the list changes,
// and itemRenamed() or itemRemoved() follow, when it has answered; a folder
// that has not answered within two seconds is said to be waited for.
// Double-click or Enter activates an item: unless a handler of
// itemActivated() marks it handled, a folder is opened in the list and a
// file is opened with the desktop's application for it.
//
// Above the list an optional filter box narrows the rows to the names the
// user types (NameFilter); it never changes what is listed nor the sort, and
// a new folder starts with it empty. The view's context menu offers the
// actions added with addContextAction(), when there are any.
//
// A list with no rows says why above the rows: the folder cannot be read,
// "No documents in this folder", or "No document matches the filter".
//
// Messages go through nebra::Messages.
class FileListControl : public QWidget
{
    Q_OBJECT
public:
    explicit FileListControl(QWidget* parent = nullptr);
    ~FileListControl() override;

    void setFolder(const QString& path);
    QString folder() const { return m_folder; }
    void setFilter(const QString& pattern);
    QString filter() const { return m_filter; }
    // The user's name filter; itemCount() and item() then see only the names it lets through.
    void setNameFilter(const QString& text);
    QString nameFilter() const;
    void setFilterBoxShown(bool shown);
    // The picture of every file listed (the listed type's); a null icon: a plain page.
    void setDocumentIcon(const QIcon& icon);
    QIcon documentIcon() const;
    FileListFilterBox* filterBox() const { return m_filterBox; }
    // An action on the view's context menu, acting on the selected items.
    void addContextAction(QAction* action);

    // Reads the folder again, keeping the selection.
    void refresh();
    // errno of the last listing; 0 when the folder could be read.
    int listingError() const;
    // A listing of the folder and filter set last is still on its way.
    bool isListing() const { return m_dirty || m_pendingRead != 0; }
    static QString waitingText(const QString& folder);

    // Adds a column after the standard ones; a source gives its cells (FileListModel::ColumnSource).
    void addColumn(const QString& name,
                   std::function<QVariant(const QString& fullPath, int role)> source = {});
    // The added columns' cells of the item at path may have changed.
    void updateItem(const QString& path);
    QStringList columns() const;
    bool isColumnShown(const QString& name) const;
    // Shows or hides a column as the user does from the header's menu;
    // showing asks columnAboutToBeShown() first. Returns whether it is shown.
    bool setColumnShown(const QString& name, bool shown);

    void sortByColumn(const QString& name, Qt::SortOrder order = Qt::AscendingOrder);
    QString sortColumn() const;
    Qt::SortOrder sortOrder() const;
    // Clicks a column header as the user would.
    void clickColumnHeader(const QString& name);

    int itemCount() const;
    FileListItem item(int index) const; // one-based
    int selectedCount() const;
    FileListItem firstSelectedItem() const;
    QList<FileListItem> selectedItems() const;
    FileListItem currentItem() const;

    // Show names with their extensions (the default) or without.
    void setShowExtensions(bool show);
    bool showExtensions() const;

    // The list's text colour (0xAARRGGBB), which the folder tree copies.
    quint32 colour() const;

    // What the user's in-place edit, Delete key and double-click do.
    // renameItem() is false when the name was refused, true once the rename is asked of the disk.
    bool renameItem(const FileListItem& item, const QString& newName);
    void editItem(const FileListItem& item);
    void deleteSelectedItems();
    void activateItem(const FileListItem& item);

    QTreeView* view() const;

    // Used by FileListItem.
    bool isItemListed(const FileListItem& item) const;
    bool isItemSelected(const FileListItem& item) const;
    void setItemSelected(const FileListItem& item, bool selected);
    void ensureItemVisible(const FileListItem& item);

Q_SIGNALS:
    void columnAboutToBeShown(const QString& name, bool& show);
    void columnHeaderClicked(const QString& name);
    void beforeSelectionChange(const FileListItem& item);
    void selectionChanged(const FileListItem& item);
    void itemActivated(const FileListItem& item, bool& handled);
    void beforeItemRenamed(const FileListItem& item, const QString& newName, bool& cancel);
    void itemRenamed(const FileListItem& item, const QString& oldPath);
    // Items that appeared in or vanished from the folder since it was listed.
    void itemAdded(const FileListItem& item);
    void itemRemoved(const FileListItem& item);
    // The listing of folder() has arrived and is shown (sorted, selection kept).
    void listed();
    // The listing of folder has not answered within two seconds.
    void waiting(const QString& folder);

private:
    void setUpView();
    void connectEvents();
    void markDirty();
    void list(bool keepSelection);
    void showListing(const QString& folder, FileListModel::Listing listing, bool keepSelection);
    void showWaiting(const QString& folder);
    void showBusy(const QString& folder);
    int rowOfName(const QString& name) const;
    void applyColumnVisibility();
    void readComments();
    int rowOf(const FileListItem& item) const;
    FileListItem itemAtRow(int row) const;
    void onSelectionChanged();
    QSet<QString> selectedNames() const;
    void reselect(const QSet<QString>& names, const QString& currentName);
    void onHeaderClicked(int section);
    void showHeaderMenu(const QPoint& position);
    void showListingState();
    void showContextMenu(const QPoint& position);
    void applyNameFilter(const QString& text);
    void reportChanges(const QHash<QString, bool>& before, const QString& oldFolder);

    FileListModel* m_model;
    FileListView* m_view;
    FileListFilterBox* m_filterBox;
    QList<QAction*> m_contextActions;
    QLabel* m_state;
    FolderReaders* m_readers;
    FolderWatch* m_watch;
    quint64 m_pendingRead = 0;
    QTimer* m_refreshTimer;
    QString m_folder;
    QString m_filter = QStringLiteral("*.*");
    QSet<QString> m_hiddenByUser;
    bool m_dirty = false;
    bool m_quiet = false; // no selection events while the list is rebuilt
};

} // namespace nebra
