#pragma once

#include "AuditChainHead.h"

#include <QByteArray>
#include <QString>

namespace nebra {

class SecurityDatabase;
class SiteKey;

// The security database's own account of itself, one row sealed with the
// site key: how many changes it has committed, how many of them changed
// users, roles, rights or memberships (the number every such row's MAC is
// bound to), a digest of those rows, and its newest audit entry. Each write
// transaction moves it on together with what it changed, and the chain head
// file records the count of changes too. So a row written back from an
// older state fails its MAC, a removed row changes the digest, entries cut
// off leave the trail short of the record, and an older head file lies
// behind the store: only the database and its head copied back together
// look consistent (and an anchor kept elsewhere shows that).
class StoreState
{
public:
    struct Record
    {
        qint64 changes = 0;    // write transactions committed
        qint64 rowChanges = 0; // of them, those that changed the security rows
        QByteArray rowsDigest; // over every security row's MAC, see UserStore
        qint64 entries = 0;    // the newest audit entry's sequence number
        QByteArray newestMac;  // and its MAC (empty while there is none)
    };

    StoreState(SecurityDatabase& database, const SiteKey& key, const AuditChainHead& head);

    // The record as sealed; false, with *error, when it is missing or altered.
    bool read(Record* record, QString* error) const;
    // read(), and the record agrees with the audit trail's newest entry and
    // with the chain head: false, with *error naming what was done, when
    // entries were cut off or slipped in, the head is an older copy, or the
    // database is older than its head.
    bool check(Record* record, QString* error) const;
    // The same, against a chain head already read.
    bool check(Record* record, const AuditChainHead::Record& head, QString* error) const;
    // Seals and stores the record (inside the caller's transaction).
    bool write(const Record& record, QString* error);

    // A problem check() found, as the users of the store are told it (what
    // verify says, and who can look into it).
    static QString forUsers(const QString& problem);

private:
    QByteArray seal(const Record& record) const;
    bool agreesWithTrail(const Record& record, QString* error) const;
    bool agreesWithHead(const Record& record, const AuditChainHead::Record& head, QString* error) const;

    SecurityDatabase& m_database;
    const SiteKey& m_key;
    const AuditChainHead& m_head;
};

} // namespace nebra
