#pragma once

#include <QAbstractTableModel>
#include <QStringList>

#include <vector>

namespace nebra {

// The entries of one folder as the file list shows them: the folder's
// subfolders and the files its filter lets through, in named columns.
//
// The columns this model knows are "Name", "Size", "Type", "Date Modified"
// and "Comment" (the file's user.xdg.comment extended attribute); any other
// column is empty. Sorting keeps folders before files and compares the raw
// modification times (seconds and nanoseconds), never converted dates; the
// date text and the comment are made only for the rows a view asks for.
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

    void addColumn(const QString& name);
    QStringList columns() const { return m_columns; }
    int columnOf(const QString& name) const { return int(m_columns.indexOf(name)); }

    // Lists folder through filter and sorts it by the current sort column.
    // Returns false when the folder cannot be read (error() says why); the
    // model is then empty.
    bool load(const QString& folder, const QString& filter);
    QString folder() const { return m_folder; }
    int error() const { return m_error; }
    // Moves on with every load, so that old item handles can tell they are stale.
    quint32 generation() const { return m_generation; }

    // With extensions hidden a file's displayed name leaves out its last extension.
    void setShowExtensions(bool show);
    bool showExtensions() const { return m_showExtensions; }

    int sortColumn() const { return m_sortColumn; }
    Qt::SortOrder sortOrder() const { return m_sortOrder; }

    // Per row: the entry's name on disk, displayed name, full path and folder flag.
    QString fileName(int row) const { return m_entries[size_t(row)].name; }
    QString displayedName(int row) const;
    QString fullPath(int row) const;
    bool isFolder(int row) const { return m_entries[size_t(row)].isFolder; }
    // Stable identity of an entry within one load, whatever the sorting.
    qint32 idAt(int row) const { return m_entries[size_t(row)].id; }
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
        mutable QString comment;
        qint64 mtimeSeconds = 0;
        qint64 size = 0;
        qint32 mtimeNanoseconds = 0;
        qint32 id = 0;
        bool isFolder = false;
        mutable bool commentLoaded = false;
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
    Kind kindOf(int column) const;
    const QString& commentOf(const Entry& entry) const;
    QString typeText(const Entry& entry) const;
    QString cell(const Entry& entry, Kind kind) const;
    void sortEntries();
    void rebuildRowIndex();

    QStringList m_columns;
    QString m_folder;
    std::vector<Entry> m_entries;
    std::vector<qint32> m_rowOfId;
    int m_sortColumn = 0;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    int m_error = 0;
    quint32 m_generation = 0;
    bool m_showExtensions = true;
};

} // namespace nebra
