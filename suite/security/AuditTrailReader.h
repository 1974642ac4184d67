#pragma once

#include "AuditQuery.h"
#include "AuditTrail.h"

#include <QList>
#include <QString>

namespace nebra {

class SecurityDatabase;

// Reads the audit trail of a security database the way a reviewer looks at
// it: counted and paged under a filter and an order, each answer from one
// read snapshot. The text columns are compared as recorded, the user name
// without regard to case (ASCII letters), so sorting by user and filtering
// by user agree; the sequence number breaks every tie. Times in a filter are
// compared with the entries' UTC times.
//
// Indexes on the time, the user and the area (SecurityDatabase) keep
// sorting by those columns and filtering by user or area fast on a long
// trail; a text filter reads every entry. Without a filter the view in
// sequence order is read through the gapless sequence itself, so the last
// page of a long trail costs what the first does.
class AuditTrailReader
{
public:
    explicit AuditTrailReader(SecurityDatabase& database);

    bool count(const AuditFilter& filter, qint64* count, QString* error) const;
    // Up to limit entries from offset (0 = the first of the view).
    bool read(const AuditFilter& filter, const AuditOrder& order, qint64 offset, int limit,
              QList<AuditEntry>* entries, QString* error) const;

private:
    SecurityDatabase& m_database;
};

} // namespace nebra
