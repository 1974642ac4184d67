#include "FileListModel.h"

#include "DirectoryReader.h"
#include "WildcardFilter.h"

#include <QDateTime>
#include <QFile>
#include <QLocale>

#include <algorithm>

#include <sys/xattr.h>

namespace nebra {

const QString FileListModel::NameColumn = QStringLiteral("Name");
const QString FileListModel::SizeColumn = QStringLiteral("Size");
const QString FileListModel::TypeColumn = QStringLiteral("Type");
const QString FileListModel::DateModifiedColumn = QStringLiteral("Date Modified");
const QString FileListModel::CommentColumn = QStringLiteral("Comment");

namespace {

int compareNames(const QString& a, const QString& b)
{
    const int c = a.compare(b, Qt::CaseInsensitive);
    return c != 0 ? c : a.compare(b, Qt::CaseSensitive);
}

template <typename T> int threeWay(T a, T b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

// The freedesktop comment of a file; empty when it has none or the file
// system keeps no extended attributes.
QString readComment(const QString& path)
{
    const QByteArray encoded = QFile::encodeName(path);
    char buffer[4096];
    const ssize_t length = ::getxattr(encoded.constData(), "user.xdg.comment", buffer, sizeof buffer);
    return length > 0 ? QString::fromUtf8(buffer, qsizetype(length)) : QString();
}

} // namespace

FileListModel::FileListModel(QObject* parent)
    : QAbstractTableModel(parent), m_columns{NameColumn, SizeColumn, TypeColumn, DateModifiedColumn},
      m_kinds{Kind::Name, Kind::Size, Kind::Type, Kind::DateModified}, m_sources(4), m_shown{0, 1, 2, 3}
{
}

void FileListModel::addColumn(const QString& name, ColumnSource source)
{
    if (m_columns.contains(name))
        return;
    beginInsertColumns({}, columnCount(), columnCount());
    m_shown.push_back(int(m_columns.size()));
    m_columns.append(name);
    m_kinds.push_back(kindOfName(name));
    m_sources.push_back(std::move(source));
    endInsertColumns();
}

void FileListModel::updateEntry(const QString& path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (m_rows.empty() || slash < 0 || QStringView(path).left(slash) != QStringView(m_folder))
        return;
    // The views repaint only the rows they show: no search for the entry's row.
    for (std::size_t column = 0; column < m_shown.size(); ++column)
        if (m_sources[size_t(m_shown[column])])
            Q_EMIT dataChanged(index(0, int(column)), index(int(m_rows.size()) - 1, int(column)));
}

int FileListModel::columnOf(const QString& name) const
{
    const auto found = std::find(m_shown.begin(), m_shown.end(), int(m_columns.indexOf(name)));
    return found == m_shown.end() ? -1 : int(found - m_shown.begin());
}

QString FileListModel::columnName(int column) const
{
    return column >= 0 && size_t(column) < m_shown.size() ? m_columns.at(m_shown[size_t(column)]) : QString();
}

int FileListModel::sortColumn() const
{
    return columnOf(sortColumnName());
}

// Removing the column rather than hiding a view's section keeps it from
// everything that walks the model, accessibility included.
void FileListModel::setColumnShown(const QString& name, bool shown)
{
    const int position = int(m_columns.indexOf(name));
    if (position < 0 || (columnOf(name) >= 0) == shown)
        return;
    const int column = int(std::lower_bound(m_shown.begin(), m_shown.end(), position) - m_shown.begin());
    if (shown) {
        beginInsertColumns({}, column, column);
        m_shown.insert(m_shown.begin() + column, position);
        endInsertColumns();
    } else {
        beginRemoveColumns({}, column, column);
        m_shown.erase(m_shown.begin() + column);
        endRemoveColumns();
    }
}

FileListModel::Kind FileListModel::kindOfName(const QString& name)
{
    if (name == NameColumn)
        return Kind::Name;
    if (name == SizeColumn)
        return Kind::Size;
    if (name == TypeColumn)
        return Kind::Type;
    if (name == DateModifiedColumn)
        return Kind::DateModified;
    if (name == CommentColumn)
        return Kind::Comment;
    return Kind::Other;
}

bool FileListModel::load(const QString& folder, const QString& filter)
{
    return load(folder, read(folder, filter, needsComments()));
}

FileListModel::Listing FileListModel::read(const QString& folder, const QString& filter, bool comments)
{
    Listing listing{DirectoryReader::files(QFile::encodeName(folder), WildcardFilter(filter)), {}};
    if (comments) {
        std::vector<QString> names;
        names.reserve(listing.files.records.size());
        for (const DirectoryReader::FileRecord& record : listing.files.records)
            names.push_back(record.name);
        listing.comments = readComments(folder, names);
    }
    return listing;
}

std::vector<QString> FileListModel::namesById() const
{
    std::vector<QString> names(static_cast<size_t>(m_idCount));
    for (const Entry& entry : m_entries)
        names[size_t(entry.id)] = entry.name;
    return names;
}

std::vector<QString> FileListModel::readComments(const QString& folder, const std::vector<QString>& names)
{
    std::vector<QString> comments;
    comments.reserve(names.size());
    for (const QString& name : names)
        comments.push_back(name.isEmpty() ? QString() : readComment(folder + QLatin1Char('/') + name));
    return comments;
}

void FileListModel::setComments(quint32 generation, std::vector<QString> comments)
{
    if (generation != m_generation || comments.size() != size_t(m_idCount))
        return;
    for (Entry& entry : m_entries)
        entry.comment = std::move(comments[size_t(entry.id)]);
    m_hasComments = true;
    if (m_kinds[size_t(m_sortColumn)] == Kind::Comment) {
        relayout([this] { sortEntries(); });
        return;
    }
    if (const int column = columnOf(CommentColumn); column >= 0 && rowCount() > 0)
        Q_EMIT dataChanged(index(0, column), index(rowCount() - 1, column));
}

bool FileListModel::load(const QString& folder, Listing listing)
{
    beginResetModel();
    m_folder = folder;
    m_error = listing.files.error;
    m_hasComments = listing.comments.size() == listing.files.records.size();
    ++m_generation;
    m_entries.clear();
    m_entries.reserve(listing.files.records.size());
    m_foldedNamesMade = false;
    qint32 id = 0;
    for (DirectoryReader::FileRecord& record : listing.files.records) {
        Entry entry;
        entry.name = std::move(record.name);
        entry.mtimeSeconds = record.mtimeSeconds;
        entry.mtimeNanoseconds = record.mtimeNanoseconds;
        entry.size = record.size;
        entry.isFolder = record.isFolder;
        if (size_t(id) < listing.comments.size())
            entry.comment = std::move(listing.comments[size_t(id)]);
        entry.id = id++;
        m_entries.push_back(std::move(entry));
    }
    m_idCount = id;
    sortEntries();
    endResetModel();
    return m_error == 0;
}

void FileListModel::setShowExtensions(bool show)
{
    if (m_showExtensions == show)
        return;
    m_foldedNamesMade = false; // made from the names as shown
    if (!m_nameFilter.isEmpty()) {
        relayout([this, show] {
            m_showExtensions = show;
            applyNameFilter();
        });
        return;
    }
    m_showExtensions = show;
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, 0));
}

QStringView FileListModel::shownName(const Entry& entry) const
{
    if (m_showExtensions || entry.isFolder)
        return entry.name;
    const qsizetype dot = entry.name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? QStringView(entry.name).left(dot) : QStringView(entry.name);
}

const FoldedNames& FileListModel::foldedNames() const
{
    if (!m_foldedNamesMade) {
        m_foldedNames.clear();
        size_t characters = 0;
        for (const Entry& entry : m_entries)
            characters += size_t(entry.name.size()) + 1;
        m_foldedNames.reserve(m_entries.size(), characters);
        for (const Entry& entry : m_entries)
            m_foldedNames.append(shownName(entry));
        m_foldedNamesMade = true;
    }
    return m_foldedNames;
}

void FileListModel::prepareNameFilter() const
{
    foldedNames();
}

QString FileListModel::displayedName(int row) const
{
    const Entry& entry = at(row);
    const QStringView name = shownName(entry);
    return name.size() == entry.name.size() ? entry.name : name.toString();
}

QString FileListModel::fullPath(int row) const
{
    if (m_folder.endsWith(QLatin1Char('/')))
        return m_folder + at(row).name;
    return m_folder + QLatin1Char('/') + at(row).name;
}

int FileListModel::rowOfId(qint32 id) const
{
    return id >= 0 && size_t(id) < m_rowOfId.size() ? m_rowOfId[size_t(id)] : -1;
}

void FileListModel::renameEntry(int row, const QString& newName)
{
    if (row < 0 || size_t(row) >= m_rows.size())
        return;
    at(row).name = newName; // kept in the rows even when the filter would not let it through now
    m_foldedNamesMade = false;
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

void FileListModel::removeEntry(int row)
{
    if (row < 0 || size_t(row) >= m_rows.size())
        return;
    beginRemoveRows({}, row, row);
    const qint32 position = m_rows[size_t(row)];
    m_entries.erase(m_entries.begin() + position);
    m_idOfPosition.erase(m_idOfPosition.begin() + position);
    m_foldedNamesMade = false;
    m_rows.erase(m_rows.begin() + row);
    for (qint32& later : m_rows)
        if (later > position)
            --later;
    rebuildRowIndex();
    endRemoveRows();
}

QString FileListModel::typeText(const Entry& entry) const
{
    if (entry.isFolder)
        return tr("File folder");
    const qsizetype dot = entry.name.lastIndexOf(QLatin1Char('.'));
    if (dot <= 0 || dot == entry.name.size() - 1)
        return tr("File");
    return tr("%1 File").arg(entry.name.mid(dot + 1).toUpper());
}

QString FileListModel::cell(const Entry& entry, Kind kind) const
{
    switch (kind) {
    case Kind::Name:
        return entry.name;
    case Kind::Size:
        return entry.isFolder ? QString() : QLocale().formattedDataSize(entry.size, 0);
    case Kind::Type:
        return typeText(entry);
    case Kind::DateModified:
        // One conversion per row shown, never one per row sorted.
        return QLocale().toString(QDateTime::fromSecsSinceEpoch(entry.mtimeSeconds), QLocale::ShortFormat);
    case Kind::Comment:
        return entry.comment;
    case Kind::Other:
        break;
    }
    return {};
}

int FileListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int FileListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_shown.size());
}

QVariant FileListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || size_t(index.row()) >= m_rows.size())
        return {};
    const Entry& entry = at(index.row());
    const Kind kind = kindOf(index.column());
    if (const ColumnSource& source = m_sources[size_t(m_shown[size_t(index.column())])]) {
        switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return source(fullPath(index.row()), Qt::DisplayRole);
        case Qt::DecorationRole:
        case Qt::AccessibleDescriptionRole:
        case Qt::ToolTipRole:
            return source(fullPath(index.row()), role);
        default:
            break;
        }
    }
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return kind == Kind::Name ? displayedName(index.row()) : cell(entry, kind);
    case Qt::EditRole:
        return kind == Kind::Name ? displayedName(index.row()) : QVariant();
    case Qt::TextAlignmentRole:
        return kind == Kind::Size ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case FullPathRole:
        return fullPath(index.row());
    case IsFolderRole:
        return entry.isFolder;
    default:
        return {};
    }
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return columnName(section);
    return {};
}

Qt::ItemFlags FileListModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (kindOf(index.column()) == Kind::Name)
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool FileListModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || role != Qt::EditRole || kindOf(index.column()) != Kind::Name)
        return false;
    // Nothing changes here: the owner renames on disk and then calls renameEntry().
    Q_EMIT renameRequested(index.row(), value.toString());
    return false;
}

void FileListModel::sortEntries()
{
    const Kind kind = m_kinds[size_t(m_sortColumn)];
    const bool descending = m_sortOrder == Qt::DescendingOrder;
    std::sort(m_entries.begin(), m_entries.end(), [this, kind, descending](const Entry& a, const Entry& b) {
        if (a.isFolder != b.isFolder)
            return a.isFolder; // folders first, in either order
        int c = 0;
        switch (kind) {
        case Kind::DateModified:
            c = threeWay(a.mtimeSeconds, b.mtimeSeconds);
            if (c == 0)
                c = threeWay(a.mtimeNanoseconds, b.mtimeNanoseconds);
            break;
        case Kind::Size:
            c = threeWay(a.size, b.size);
            break;
        case Kind::Type:
            c = typeText(a).compare(typeText(b), Qt::CaseInsensitive);
            break;
        case Kind::Comment:
            c = a.comment.compare(b.comment, Qt::CaseInsensitive);
            break;
        case Kind::Name:
        case Kind::Other:
            break;
        }
        if (c == 0)
            c = compareNames(a.name, b.name);
        if (c == 0)
            c = threeWay(a.id, b.id);
        return descending ? c > 0 : c < 0;
    });
    m_idOfPosition.resize(m_entries.size());
    for (size_t position = 0; position < m_entries.size(); ++position)
        m_idOfPosition[position] = m_entries[position].id;
    // The folded names follow the positions; made again now only if they were in use.
    if (m_foldedNamesMade) {
        m_foldedNamesMade = false;
        foldedNames();
    }
    applyNameFilter();
}

void FileListModel::rebuildRowIndex()
{
    m_rowOfId.assign(size_t(m_idCount), -1);
    for (size_t row = 0; row < m_rows.size(); ++row)
        m_rowOfId[size_t(m_idOfPosition[size_t(m_rows[row])])] = qint32(row);
}

void FileListModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || column >= columnCount())
        return;
    relayout([this, column, order] {
        m_sortColumn = m_shown[size_t(column)];
        m_sortOrder = order;
        sortEntries();
    });
}

void FileListModel::relayout(const std::function<void()>& change)
{
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<std::pair<qint32, int>> kept; // entry id and column of each persistent index
    kept.reserve(size_t(before.size()));
    for (const QModelIndex& index : before)
        kept.emplace_back(at(index.row()).id, index.column());
    change();
    QModelIndexList after;
    after.reserve(before.size());
    for (const auto& [id, column] : kept) {
        const int row = rowOfId(id);
        after.append(row >= 0 ? index(row, column) : QModelIndex()); // filtered out: gone
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void FileListModel::setNameFilter(const QString& text)
{
    NameFilter filter(text);
    if (filter.text() == m_nameFilter.text())
        return;
    const bool narrowing = filter.narrows(m_nameFilter);
    m_nameFilter = std::move(filter);
    if (!filterRows(narrowing))
        return; // the same rows: a view has nothing to lay out again
    relayout([this] {
        m_rows.swap(m_spareRows);
        rebuildRowIndex();
    });
}

void FileListModel::applyNameFilter()
{
    filterRows(false);
    m_rows.swap(m_spareRows);
    rebuildRowIndex();
}

// Narrowing only looks at the rows: what the old filter left out the new
// one would too.
bool FileListModel::filterRows(bool narrowing) const
{
    if (m_nameFilter.isEmpty()) {
        m_spareRows.resize(m_entries.size());
        for (size_t position = 0; position < m_entries.size(); ++position)
            m_spareRows[position] = qint32(position);
    } else if (narrowing) {
        m_nameFilter.select(foldedNames(), m_rows, m_spareRows);
    } else {
        m_nameFilter.select(foldedNames(), m_spareRows);
    }
    return m_spareRows != m_rows;
}

QHash<QString, bool> FileListModel::allEntries() const
{
    QHash<QString, bool> entries;
    entries.reserve(qsizetype(m_entries.size()));
    for (const Entry& entry : m_entries)
        entries.insert(entry.name, entry.isFolder);
    return entries;
}

} // namespace nebra
