#pragma once

#include "DirectoryReader.h"
#include "FoldedNames.h"
#include "NameFilter.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QStringList>

#include <functional>

#include <vector>

namespace nebra {

// The entries of one folder as the file list shows them: the folder's
// subfolders and the files its filter lets through, in named columns.
//
// The columns this model knows are "Name", "Size", "Type", "Date Modified"
// and "Comment" (the file's user.xdg.comment extended attribute, read with
// or after the listing, never when drawn); any other column is empty. Sorting keeps folders before files and
// compares the raw modification times (seconds and nanoseconds), never converted dates; the date text and the
// comment are made only for the rows a view asks for.
//
// A hidden column is no column of the model at all (views and screen
// readers see only the shown ones); columns() still names every column in
// its place, and the sort may stay on a hidden column.
//
// A name filter (the user's filter box) narrows the rows to the entries
// whose displayed names it matches; the rows are then positions in the
// sorted entries, so filtering neither moves nor compares entries. It never changes what was
// listed nor the sort, and it lasts until changed, also across loads.
class FileListModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Role
    {
        FullPathRole = Qt::UserRole + 1,
        IsFolderRole,
    };

    static const QString NameColumn;
    static const QString SizeColumn;
    static const QString TypeColumn;
    static const QString DateModifiedColumn;
    static const QString CommentColumn;

    explicit FileListModel(QObject* parent = nullptr);

    // The cell of an added column for an entry, asked by the entry's full
    // path and the role (display, decoration, accessible description, tool
    // tip); an empty variant shows nothing.
    using ColumnSource = std::function<QVariant(const QString& fullPath, int role)>;
    // Adds a shown column after the others; one this model does not know is
    // empty unless it has a source.
    void addColumn(const QString& name, ColumnSource source = {});
    // What the sources say of the entry at path may have changed.
    void updateEntry(const QString& path);
    // Every column, shown or hidden, in its order.
    QStringList columns() const { return m_columns; }
    // The model column showing name; -1 when it is hidden or unknown.
    int columnOf(const QString& name) const;
    // The name of a model column; empty when there is none.
    QString columnName(int column) const;
    void setColumnShown(const QString& name, bool shown);

    // What read() brings: the entries and, when asked for, each one's comment.
    struct Listing
    {
        DirectoryReader::FileListing files;
        std::vector<QString> comments; // by record; empty when not asked for
    };

    // Lists folder through filter and sorts it by the current sort column.
    // Returns false when the folder cannot be read (error() says why); the
    // model is then empty.
    bool load(const QString& folder, const QString& filter);
    // The same in two halves: read() touches only the disk and may run on
    // any thread; load() takes its result on the model's thread. data()
    // never reads the disk: the comments come from here or readComments().
    static Listing read(const QString& folder, const QString& filter, bool comments);
    bool load(const QString& folder, Listing listing);
    // A listing needs the comments: a "Comment" column is shown.
    bool needsComments() const { return columnOf(CommentColumn) >= 0; }
    // The entries of the last load have their comments.
    bool hasComments() const { return m_hasComments; }
    // The comments read apart from the listing, so that a long folder shows
    // its rows first: readComments() of namesById() touches only the disk and
    // may run on any thread; setComments() takes them unless another load
    // came meanwhile.
    std::vector<QString> namesById() const;
    static std::vector<QString> readComments(const QString& folder, const std::vector<QString>& names);
    void setComments(quint32 generation, std::vector<QString> comments);
    QString folder() const { return m_folder; }
    int error() const { return m_error; }
    // Moves on with every load, so that old item handles can tell they are stale.
    quint32 generation() const { return m_generation; }

    // With extensions hidden a file's displayed name leaves out its last extension.
    void setShowExtensions(bool show);
    bool showExtensions() const { return m_showExtensions; }

    void setNameFilter(const QString& text);
    // Makes now what the name filter needs of every entry, so that the
    // first keystroke after a listing costs no more than the others.
    void prepareNameFilter() const;
    QString nameFilter() const { return m_nameFilter.text(); }
    // Every entry of the last load, shown or not: name -> is a folder.
    QHash<QString, bool> allEntries() const;

    // The model column sorted by; -1 when that column is hidden.
    int sortColumn() const;
    QString sortColumnName() const { return m_columns.value(m_sortColumn); }
    Qt::SortOrder sortOrder() const { return m_sortOrder; }

    // Per row: the entry's name on disk, displayed name, full path and folder flag.
    QString fileName(int row) const { return at(row).name; }
    QString displayedName(int row) const;
    QString fullPath(int row) const;
    bool isFolder(int row) const { return at(row).isFolder; }
    // Stable identity of an entry within one load, whatever the sorting.
    qint32 idAt(int row) const { return at(row).id; }
    int rowOfId(qint32 id) const;

    // After the entry was renamed on disk.
    void renameEntry(int row, const QString& newName);
    void removeEntry(int row);

    // QAbstractItemModel
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

Q_SIGNALS:
    // An editor asks for a new name; the owner decides and renames on disk.
    void renameRequested(int row, const QString& newName);

private:
    struct Entry
    {
        QString name;
        QString comment;
        qint64 mtimeSeconds = 0;
        qint64 size = 0;
        qint32 mtimeNanoseconds = 0;
        qint32 id = 0;
        bool isFolder = false;
    };

    enum class Kind
    {
        Name,
        Size,
        Type,
        DateModified,
        Comment,
        Other
    };
    static Kind kindOfName(const QString& name);
    // Asked for every row a view lays out: no comparison of column names.
    Kind kindOf(int column) const { return m_kinds[size_t(m_shown[size_t(column)])]; }
    QStringView shownName(const Entry& entry) const;
    const FoldedNames& foldedNames() const;
    QString typeText(const Entry& entry) const;
    QString cell(const Entry& entry, Kind kind) const;
    void sortEntries();
    void rebuildRowIndex();
    // Puts the positions the name filter lets through in m_rows.
    void applyNameFilter();
    // The same into m_spareRows; false when they are the rows shown now.
    bool filterRows(bool narrowing) const;
    // Rearranges the rows through change, keeping persistent indexes on their entries.
    void relayout(const std::function<void()>& change);

    QStringList m_columns;
    std::vector<Kind> m_kinds;           // of each column
    std::vector<ColumnSource> m_sources; // of each column; empty for most
    std::vector<int> m_shown;            // the model's columns: positions in m_columns, in order
    QString m_folder;
    const Entry& at(int row) const { return m_entries[size_t(m_rows[size_t(row)])]; }
    Entry& at(int row) { return m_entries[size_t(m_rows[size_t(row)])]; }

    std::vector<Entry> m_entries;            // everything listed, sorted
    std::vector<qint32> m_rows;              // the positions in m_entries the name filter lets through
    mutable std::vector<qint32> m_spareRows; // the next m_rows, kept to spare an allocation per keystroke
    NameFilter m_nameFilter;
    // The displayed names case-folded, by position; made when a name filter
    // first needs them and again when the entries change.
    mutable FoldedNames m_foldedNames;
    mutable bool m_foldedNamesMade = false;
    std::vector<qint32> m_rowOfId;
    std::vector<qint32> m_idOfPosition; // beside the entries, so that the row index touches no entry
    qint32 m_idCount = 0;               // the ids of the last load: 0 to m_idCount - 1
    int m_sortColumn = 0;               // a position in m_columns
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    int m_error = 0;
    quint32 m_generation = 0;
    bool m_showExtensions = true;
    bool m_hasComments = false;
};

} // namespace nebra
