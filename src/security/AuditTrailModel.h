#pragma once

#include "AuditQuery.h"
#include "AuditTrail.h"

#include <QAbstractTableModel>
#include <QList>
#include <QPair>

#include <functional>
#include <optional>

namespace nebra {

// Where the audit trail is read from: the security manager's reviewer entry
// points in the Organiser, or a store's back end directly (the benchmark).
struct AuditSource
{
    std::function<bool(const AuditFilter&, qint64* count, QString* error)> count;
    std::function<bool(const AuditFilter&, const AuditOrder&, qint64 offset, int limit, QList<AuditEntry>*,
                       QString* error)>
        read;
};

// The audit trail as a table for review: Sequence, Time (in the user's local
// zone, with the zone shown), User, Workstation, Area, Text; newest first
// until sorted otherwise. The rows are read a page at a time when first
// shown and only a few pages are kept, so the memory used does not grow
// with the trail. Each filter or order shows one snapshot: entries recorded
// after it are left out until reload().
//
// A read that fails empties the table and is reported by readFailed: no
// rows are shown that may no longer be what the trail holds.
class AuditTrailModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    static constexpr int PageSize = 256;
    static constexpr int CachedPages = 8;

    // Empty until reload() (connect readFailed first): all entries, newest first.
    explicit AuditTrailModel(AuditSource source, QObject* parent = nullptr);

    AuditFilter filter() const { return m_filter; }
    // Shows the entries the filter lets through (its throughSequence is the model's own).
    void setFilter(const AuditFilter& filter);
    AuditOrder order() const { return m_order; }
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    // Counts the view anew and takes in the entries recorded since.
    void reload();

    // The entry shown in row; empty when the row is out of range or cannot be read.
    std::optional<AuditEntry> entryAt(int row) const;
    // Visits every entry of the view, in its order and from its snapshot, a
    // page at a time; stops early when visit returns false. False, with
    // *error, when a page cannot be read.
    bool forEachEntry(const std::function<bool(const AuditEntry&)>& visit, QString* error) const;

    // "2026-11-25 09:14:03 CET": an entry's UTC time in the local zone.
    static QString localTimeText(const QString& utc);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    void readFailed(const QString& error);

private:
    using Page = QPair<qint64, QList<AuditEntry>>;

    AuditFilter pinnedFilter() const;
    bool count(QString* error);
    const QList<AuditEntry>* page(qint64 index) const;
    void failLater(const QString& error) const;
    void fail(const QString& error);

    AuditSource m_source;
    AuditFilter m_filter;
    AuditOrder m_order;
    qint64 m_newest = 0; // the snapshot: no entry after this one is shown
    int m_rows = 0;
    mutable QList<Page> m_pages; // most recently used first
    mutable bool m_failed = false;
};

} // namespace nebra
