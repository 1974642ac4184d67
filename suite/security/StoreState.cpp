#include "StoreState.h"

#include "AuditChainHead.h"
#include "MacMessage.h"
#include "SecurityDatabase.h"
#include "SiteKey.h"

#include <QSqlQuery>
#include <QVariant>

namespace nebra {

QString StoreState::forUsers(const QString& problem)
{
    return problem + QStringLiteral(" Ask your security administrator to run \"nebra-secadmin verify\".");
}

StoreState::StoreState(SecurityDatabase& database, const SiteKey& key, const AuditChainHead& head)
    : m_database(database), m_key(key), m_head(head)
{
}

QByteArray StoreState::seal(const Record& record) const
{
    return m_key.mac(MacMessage("nebra-store-state-v1")
                         .add(m_database.databaseId())
                         .add(record.changes)
                         .add(record.rowChanges)
                         .add(record.rowsDigest)
                         .add(record.entries)
                         .add(record.newestMac)
                         .bytes());
}

bool StoreState::read(Record* record, QString* error) const
{
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(q,
                         QStringLiteral("SELECT changes, row_changes, rows_digest, entries, newest_mac, seal "
                                        "FROM store_state WHERE id = 1"),
                         {}, error))
        return false;
    if (q.next()) {
        *record = {q.value(0).toLongLong(), q.value(1).toLongLong(), q.value(2).toByteArray(),
                   q.value(3).toLongLong(), q.value(4).toByteArray()};
        if (SiteKey::sameMac(q.value(5).toByteArray(), seal(*record)))
            return true;
    }
    *error =
        QStringLiteral("The security database's record of its own changes is missing or has been altered.");
    return false;
}

bool StoreState::agreesWithTrail(const Record& record, QString* error) const
{
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(q, QStringLiteral("SELECT seq, mac FROM audit_trail ORDER BY seq DESC LIMIT 1"), {},
                         error))
        return false;
    const qint64 newest = q.next() ? q.value(0).toLongLong() : 0;
    if (newest == record.entries &&
        (newest == 0 || SiteKey::sameMac(q.value(1).toByteArray(), record.newestMac)))
        return true;
    if (newest < record.entries)
        *error = QStringLiteral("The audit trail ends at entry %1, but the security database "
                                "recorded %2 entries: the newest entries have been cut off.")
                     .arg(newest)
                     .arg(record.entries);
    else
        *error = QStringLiteral("The audit trail's newest entry is not the one the security database "
                                "recorded (entry %1): entries have been replaced or slipped in.")
                     .arg(record.entries);
    return false;
}

bool StoreState::agreesWithHead(const Record& record, const AuditChainHead::Record& head,
                                QString* error) const
{
    // The head is written just after each commit: a writer killed in
    // between leaves it one change behind, never more, never ahead.
    if (head.changes > record.changes) {
        *error = QStringLiteral("The security database is older than its audit chain head (change %1 "
                                "of %2): it has been rolled back.")
                     .arg(record.changes)
                     .arg(head.changes);
        return false;
    }
    // A head without the count (-1) is older than the record of changes itself.
    if (head.changes < record.changes - 1) {
        *error = QStringLiteral("The audit chain head file \"%1\" is older than the security database "
                                "(change %2 of %3): it has been replaced by an older copy.")
                     .arg(m_head.path())
                     .arg(head.changes)
                     .arg(record.changes);
        return false;
    }
    return true;
}

bool StoreState::check(Record* record, QString* error) const
{
    AuditChainHead::Record head;
    return m_head.read(&head, error) == AuditChainHead::ReadStatus::Ok && check(record, head, error);
}

bool StoreState::check(Record* record, const AuditChainHead::Record& head, QString* error) const
{
    return read(record, error) && agreesWithTrail(*record, error) && agreesWithHead(*record, head, error);
}

bool StoreState::write(const Record& record, QString* error)
{
    QSqlQuery q = m_database.newQuery();
    return m_database.exec(
        q,
        QStringLiteral(
            "INSERT INTO store_state(id, changes, row_changes, rows_digest, entries, newest_mac, seal) "
            "VALUES(1, ?, ?, ?, ?, ?, ?) ON CONFLICT(id) DO UPDATE SET changes = excluded.changes, "
            "row_changes = excluded.row_changes, rows_digest = excluded.rows_digest, "
            "entries = excluded.entries, newest_mac = excluded.newest_mac, seal = excluded.seal"),
        {record.changes, record.rowChanges, record.rowsDigest, record.entries, record.newestMac,
         seal(record)},
        error);
}

} // namespace nebra
