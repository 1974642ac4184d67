#include "AuditTrailModel.h"

#include "DocumentSignature.h"

#include <QDateTime>

#include <algorithm>
#include <limits>

namespace nebra {

namespace {

// Exports read bigger pages than the table: fewer round trips, still bounded.
constexpr int ExportPageSize = 2048;

QString columnTitle(int column)
{
    switch (AuditColumn(column)) {
    case AuditColumn::Sequence:
        return QStringLiteral("Sequence");
    case AuditColumn::Time:
        return QStringLiteral("Time");
    case AuditColumn::User:
        return QStringLiteral("User");
    case AuditColumn::Workstation:
        return QStringLiteral("Workstation");
    case AuditColumn::Area:
        return QStringLiteral("Area");
    case AuditColumn::Text:
        return QStringLiteral("Text");
    }
    return {};
}

QVariant cell(const AuditEntry& entry, int column)
{
    switch (AuditColumn(column)) {
    case AuditColumn::Sequence:
        return entry.sequence;
    case AuditColumn::Time:
        return AuditTrailModel::localTimeText(entry.utc);
    case AuditColumn::User:
        return entry.userName;
    case AuditColumn::Workstation:
        return entry.workstation;
    case AuditColumn::Area:
        return entry.area;
    case AuditColumn::Text:
        return SignatureEntries::shownText(entry);
    }
    return {};
}

} // namespace

AuditTrailModel::AuditTrailModel(AuditSource source, QObject* parent)
    : QAbstractTableModel(parent), m_source(std::move(source))
{
}

QString AuditTrailModel::localTimeText(const QString& utc)
{
    const QDateTime time = QDateTime::fromString(utc, Qt::ISODateWithMs);
    if (!time.isValid())
        return utc; // shown as recorded rather than hidden
    const QDateTime local = time.toLocalTime();
    return local.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss ")) + local.timeZoneAbbreviation();
}

AuditFilter AuditTrailModel::pinnedFilter() const
{
    AuditFilter pinned = m_filter;
    pinned.throughSequence = m_newest;
    return pinned;
}

void AuditTrailModel::setFilter(const AuditFilter& filter)
{
    m_filter = filter;
    m_filter.throughSequence = 0;
    reload();
}

void AuditTrailModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || column >= columnCount())
        return;
    m_order = {AuditColumn(column), order};
    reload();
}

// The newest entry is the count of the unfiltered trail (its sequence has
// no gaps); the view is then counted up to that entry.
bool AuditTrailModel::count(QString* error)
{
    qint64 rows = 0;
    if (!m_source.count(AuditFilter{}, &m_newest, error) ||
        (!m_filter.isEmpty() && !m_source.count(pinnedFilter(), &rows, error)))
        return false;
    if (m_filter.isEmpty())
        rows = m_newest;
    m_rows = int(std::clamp<qint64>(rows, 0, std::numeric_limits<int>::max()));
    return true;
}

void AuditTrailModel::reload()
{
    beginResetModel();
    m_pages.clear();
    m_failed = false;
    m_rows = 0;
    QString error;
    const bool counted = count(&error);
    if (!counted) {
        m_rows = 0;
        m_failed = true;
    }
    endResetModel();
    if (!counted)
        Q_EMIT readFailed(error);
}

// The store steps over the rows before a page; a page in the second half of
// the view is read as the first rows of the reversed order instead, so the
// end of a long view costs what its start does. The snapshot keeps the
// count exact, and the sequence number makes the order total.
bool AuditTrailModel::readRows(qint64 offset, int limit, QList<AuditEntry>* entries, QString* error) const
{
    if (offset <= m_rows / 2)
        return m_source.read(pinnedFilter(), m_order, offset, limit, entries, error);
    const int rows = int(qMin<qint64>(limit, qMax<qint64>(0, m_rows - offset)));
    const AuditOrder reversed{m_order.column,
                              m_order.order == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder};
    if (!m_source.read(pinnedFilter(), reversed, m_rows - offset - rows, rows, entries, error))
        return false;
    std::reverse(entries->begin(), entries->end());
    return true;
}

const QList<AuditEntry>* AuditTrailModel::page(qint64 index) const
{
    if (m_failed)
        return nullptr;
    for (qsizetype i = 0; i < m_pages.size(); ++i) {
        if (m_pages[i].first == index) {
            if (i > 0)
                m_pages.move(i, 0);
            return &m_pages.first().second;
        }
    }
    QList<AuditEntry> entries;
    QString error;
    if (!readRows(index * PageSize, PageSize, &entries, &error)) {
        failLater(error);
        return nullptr;
    }
    if (m_pages.size() >= CachedPages)
        m_pages.removeLast();
    m_pages.prepend({index, std::move(entries)});
    return &m_pages.first().second;
}

// A view asks for data while it paints; the table is emptied once that is over.
void AuditTrailModel::failLater(const QString& error) const
{
    m_failed = true;
    m_pages.clear();
    auto* self = const_cast<AuditTrailModel*>(this);
    QMetaObject::invokeMethod(
        self, [self, error] { self->fail(error); }, Qt::QueuedConnection);
}

void AuditTrailModel::fail(const QString& error)
{
    beginResetModel();
    m_rows = 0;
    m_pages.clear();
    endResetModel();
    Q_EMIT readFailed(error);
}

std::optional<AuditEntry> AuditTrailModel::entryAt(int row) const
{
    if (row < 0 || row >= m_rows)
        return std::nullopt;
    const QList<AuditEntry>* entries = page(row / PageSize);
    if (!entries || row % PageSize >= entries->size())
        return std::nullopt;
    return entries->at(row % PageSize);
}

bool AuditTrailModel::forEachEntry(const std::function<bool(const AuditEntry&)>& visit, QString* error) const
{
    for (qint64 offset = 0;; offset += ExportPageSize) {
        QList<AuditEntry> entries;
        if (!readRows(offset, ExportPageSize, &entries, error))
            return false;
        for (const AuditEntry& entry : std::as_const(entries))
            if (!visit(entry))
                return true;
        if (entries.size() < ExportPageSize || offset + ExportPageSize >= m_rows)
            return true;
    }
}

int AuditTrailModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int AuditTrailModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(AuditColumn::Text) + 1;
}

QVariant AuditTrailModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    if (role == Qt::TextAlignmentRole && index.column() == int(AuditColumn::Sequence))
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    const std::optional<AuditEntry> entry = entryAt(index.row());
    return entry ? cell(*entry, index.column()) : QVariant();
}

QVariant AuditTrailModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= columnCount())
        return QAbstractTableModel::headerData(section, orientation, role);
    return columnTitle(section);
}

} // namespace nebra
