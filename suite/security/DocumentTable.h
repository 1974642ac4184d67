#pragma once

#include "DocumentRecord.h"

#include <QHash>
#include <QStringList>

namespace nebra {

class AuditTrail;
class SecurityDatabase;
class SiteKey;
class StoreState;

// The newest fingerprint of every document, in the embedded security
// database, for quick look-ups; the audit trail stays the evidence. Each
// row carries a MAC made with the site key over its fields, the sequence
// number of the audit entry that recorded it and the store's count of
// changes at that commit (StoreState), so a row edited behind the suite's
// back fails its MAC. A row written back from an older state, or removed,
// keeps valid MACs of its own, so check() compares the table with the
// newest document entry of every path in the trail.
//
// Rows are written only with their entry, in its transaction (record()).
class DocumentTable
{
public:
    DocumentTable(SecurityDatabase& database, const SiteKey& key, StoreState& state, AuditTrail& trail);

    // Records the entry for change (by userName, the session's user) and
    // updates the row, in one transaction; both are committed or neither.
    // Returns the entry's sequence number, 0 with *error when nothing was committed.
    qint64 record(const QString& userName, const DocumentChange& change, QString* error);
    // The same for several changes, in order, in one transaction: the
    // sequence numbers of all of them, or none with *error.
    QList<qint64> record(const QString& userName, const QList<DocumentChange>& changes, QString* error);

    // Every row, keyed by path, with its seal checked.
    bool read(QHash<QString, DocumentRecord>* records, QString* error) const;

    // One sentence per row whose MAC does not match, and per path whose row
    // is not what its newest document entry in the trail says (a row written
    // back from an older state, removed, or slipped in).
    QStringList alteredRows(QString* error) const;

private:
    QByteArray seal(const DocumentRecord& record, qint64 changes) const;
    bool writeRow(const DocumentChange& change, qint64 sequence, qint64 changes, QString* error);

    SecurityDatabase& m_database;
    const SiteKey& m_key;
    StoreState& m_state;
    AuditTrail& m_trail;
};

} // namespace nebra
