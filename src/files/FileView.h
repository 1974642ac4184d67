#pragma once

#include "DocumentTypes.h"
#include "FileListItem.h"
#include "FolderNode.h"
#include "SortByColumnTimer.h"

#include <QObject>

#include <functional>

namespace nebra {

class CommandSwitches;
class FileListControl;
class FolderReaders;
class FolderTreeControl;
class SuitePaths;
class SuiteSettings;

// The Organiser's side of the file list: what it shows for the folder
// selected in the tree, the columns it refuses, keeping the selection in
// view after a sort, what a selection change and a double-click set off,
// the rename rule, and the enabled state of the document commands, each as
// the document type table says for the selected node's type.
class FileView : public QObject
{
    Q_OBJECT
public:
    using ShowPreview = std::function<void(const FileListItem&)>;
    using ClearPreview = std::function<void(bool waitUntilLoaded)>;

    // instrumentDriversInUse is read once at start-up: with drivers in use
    // every document folder previews its documents, without only layouts do.
    FileView(FolderTreeControl& tree, FileListControl& list, CommandSwitches& commands,
             const SuiteSettings& settings, const SuitePaths& paths, bool instrumentDriversInUse,
             SortByColumnTimer::Clock clock = &SortByColumnTimer::secondsSinceMidnight,
             QObject* parent = nullptr);

    // Connects the handlers to the controls' events.
    void connectEvents();
    // Whether New may create a protocol (there is a wizard to start); until
    // set, New is disabled on the protocols folder.
    void setCanCreateProtocol(bool can) { m_canCreateProtocol = can; }
    // The preview pane's entry points; both do nothing until set.
    void setPreviewHandlers(ShowPreview show, ClearPreview clear);

    // The tree's node-selected event: the list shows the node's folder with
    // its type's filter; when the listing has arrived it is sorted by date
    // and its newest document selected.
    void ShowFolder(const FolderNode& node);
    // New, Open and Run on the tree's buttons and the tool bar, by the
    // selected node's type and the list's selection.
    void UpdateDocumentCommands();
    // Selects the document's folder in the tree and, once listed, the
    // document in the list (File > Recent, the welcome page's recent links);
    // a document no longer in a folder of the tree, or no longer listed, is
    // reported. While the tree reads its branches, both wait for them.
    void ShowDocument(const QString& path);
    // Selects the tree's node of the folder; a folder not in the tree selects nothing.
    void selectFolder(const QString& folder);

    // The caption of the last document folder shown; a visit to the root leaves it.
    QString CurrentDocumentTypeName() const { return m_currentDocumentTypeName; }
    bool listingComplete() const { return m_listingComplete; }
    SortByColumnTimer& TimerSortByColumn() { return m_sortTimer; }

    // Handlers of the file list's events.
    void OnColumnAboutToBeShown(const QString& name, bool& show);
    void OnColumnHeaderClicked(const QString& name);
    void OnSelectionChanged(const FileListItem& item);
    void OnItemActivated(const FileListItem& item, bool& handled);
    void OnBeforeItemRenamed(const FileListItem& item, const QString& newName, bool& cancel);
    void OnItemRenamed(const FileListItem& item, const QString& oldPath);
    void OnItemAdded(const FileListItem& item);
    void OnItemRemoved(const FileListItem& item);

Q_SIGNALS:
    // A subfolder appeared in or vanished from the folder shown; the tree
    // adds or removes the branch of that path.
    void folderAppeared(const QString& path);
    void folderVanished(const QString& path);

private:
    const DocumentTypeDescription& selectedType() const;
    void showSelectionAfterSort();
    FolderNode trackedChild(const FileListItem& item, bool& tracked) const;
    void renamePreviewFile(const QString& oldPath, const QString& newPath);
    bool waitForTree(const QString& folder, const std::function<void()>& again);
    void onListed();
    void selectDocument(const QString& path);
    void documentGone(const QString& path);

    FolderTreeControl& m_tree;
    FileListControl& m_list;
    CommandSwitches& m_commands;
    const SuiteSettings& m_settings;
    const SuitePaths& m_paths;
    bool m_instrumentDriversInUse;
    SortByColumnTimer m_sortTimer;
    FolderReaders* m_readers;
    ShowPreview m_showPreview;
    ClearPreview m_clearPreview;
    QString m_currentDocumentTypeName;
    bool m_listingComplete = true;
    QString m_pendingDocument; // to select once the listing has arrived
    bool m_canCreateProtocol = false;
};

} // namespace nebra
