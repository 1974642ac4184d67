#include "StoreUpgrade.h"

#include "AuditChainHead.h"
#include "MacMessage.h"
#include "RowSeals.h"
#include "SecurityDatabase.h"
#include "SiteKey.h"
#include "StoreState.h"
#include "UserStore.h"

#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>

#include <functional>

namespace nebra {

StoreUpgrade::StoreUpgrade(SecurityDatabase& database, const SiteKey& key, AuditChainHead& head,
                           StoreState& state, RowSeals& seals)
    : m_database(database), m_key(key), m_head(head), m_state(state), m_seals(seals)
{
}

bool StoreUpgrade::headHolds(qint64* entries, QByteArray* newestMac, QString* error) const
{
    AuditChainHead::Record head;
    QSqlQuery q = m_database.newQuery();
    if (m_head.read(&head, error) != AuditChainHead::ReadStatus::Ok ||
        !m_database.exec(q, QStringLiteral("SELECT seq, mac FROM audit_trail ORDER BY seq DESC LIMIT 1"), {},
                         error))
        return false;
    *entries = q.next() ? q.value(0).toLongLong() : 0;
    *newestMac = *entries > 0 ? q.value(1).toByteArray() : QByteArray();
    q.finish();
    if (head.count > 0 &&
        m_database.exec(q, QStringLiteral("SELECT mac FROM audit_trail WHERE seq = ?"), {head.count},
                        error) &&
        q.next() && SiteKey::sameMac(q.value(0).toByteArray(), head.mac))
        return true;
    if (head.count == 0 && error->isEmpty())
        return true;
    *error =
        QStringLiteral("The security database \"%1\" cannot be brought up to date: its audit chain head no "
                       "longer seals its trail. Ask your security administrator to run \"nebra-secadmin "
                       "verify\".")
            .arg(m_database.path());
    return false;
}

// The rows of each table, with their MAC of the previous schema and their new one.
QList<StoreUpgrade::Kind> StoreUpgrade::kinds() const
{
    const QByteArray id = m_database.databaseId();
    const auto previous = [id](const char* label) { return MacMessage(label).add(id); };
    // Rights of users and of roles: the owner's id, area and operation, in that order.
    const auto rights = [=, this](const char* table) -> Kind {
        return {3,
                QStringLiteral("SELECT %1, area, operation, mac FROM %2")
                    .arg(QLatin1String(table[0] == 'u' ? "user_id" : "role_id"), QLatin1String(table)),
                QStringLiteral("UPDATE %2 SET mac = ? WHERE %1 = ? AND area = ? AND operation = ?")
                    .arg(QLatin1String(table[0] == 'u' ? "user_id" : "role_id"), QLatin1String(table)),
                [=, this](const QSqlQuery& q) {
                    return m_key.mac(MacMessage("nebra-right-v2")
                                         .add(QString::fromLatin1(table))
                                         .add(id)
                                         .add(q.value(0).toLongLong())
                                         .add(q.value(1).toString())
                                         .add(q.value(2).toString())
                                         .bytes());
                },
                [=, this](const QSqlQuery& q) {
                    return m_seals.right(table, q.value(0).toLongLong(), q.value(1).toString(),
                                         q.value(2).toString(), 0);
                }};
    };
    return {
        {1, QStringLiteral("SELECT %1 FROM users").arg(UserStore::Columns),
         QStringLiteral("UPDATE users SET mac = ? WHERE id = ?"),
         [=, this](const QSqlQuery& q) {
             const UserRecord u = UserStore::recordOf(q);
             return m_key.mac(previous("nebra-user-v2")
                                  .add(u.id)
                                  .add(UserStore::nameKey(u.name))
                                  .add(u.passwordHash)
                                  .add(qint64(u.disabled))
                                  .add(qint64(u.locked))
                                  .add(qint64(u.failedLogIns))
                                  .add(qint64(u.mustChangePassword))
                                  .bytes());
         },
         [=, this](const QSqlQuery& q) { return m_seals.user(UserStore::recordOf(q), 0); }},
        rights("user_rights"),
        rights("role_rights"),
        {2, QStringLiteral("SELECT user_id, role_id, mac FROM user_roles"),
         QStringLiteral("UPDATE user_roles SET mac = ? WHERE user_id = ? AND role_id = ?"),
         [=, this](const QSqlQuery& q) {
             return m_key.mac(previous("nebra-membership-v2")
                                  .add(q.value(0).toLongLong())
                                  .add(q.value(1).toLongLong())
                                  .bytes());
         },
         [=, this](const QSqlQuery& q) {
             return m_seals.membership(q.value(0).toLongLong(), q.value(1).toLongLong(), 0);
         }},
        // Roles had no MAC: they are taken as they are.
        {1,
         QStringLiteral("SELECT id, name, mac FROM roles"),
         QStringLiteral("UPDATE roles SET mac = ? WHERE id = ?"),
         {},
         [=, this](const QSqlQuery& q) {
             return m_seals.role(q.value(0).toLongLong(), q.value(1).toString(), 0);
         }},
    };
}

bool StoreUpgrade::sealRows(QString* error)
{
    for (const Kind& kind : kinds()) {
        QSqlQuery q = m_database.newQuery();
        if (!m_database.exec(q, kind.select, {}, error))
            return false;
        const int macColumn = q.record().count() - 1;
        QList<QVariantList> updates;
        while (q.next()) {
            const bool held = !kind.old || SiteKey::sameMac(q.value(macColumn).toByteArray(), kind.old(q));
            QVariantList values{QVariant(held ? kind.fresh(q) : QByteArray(""))};
            for (int i = 0; i < kind.keys; ++i)
                values.append(q.value(i));
            updates.append(values);
        }
        q.finish();
        for (const QVariantList& values : updates)
            if (!m_database.exec(q, kind.update, values, error))
                return false;
    }
    return true;
}

bool StoreUpgrade::run(QString* error)
{
    StoreState::Record record;
    const bool upgraded = m_database.writeTransaction(
        [&](QString* why) {
            return headHolds(&record.entries, &record.newestMac, why) &&
                   m_database.upgradeSchema(
                       {QStringLiteral("ALTER TABLE roles ADD COLUMN mac BLOB NOT NULL DEFAULT x''"),
                        QStringLiteral(
                            "CREATE TABLE store_state(id INTEGER PRIMARY KEY CHECK (id = 1), "
                            "changes INTEGER NOT NULL, row_changes INTEGER NOT NULL, rows_digest BLOB, "
                            "entries INTEGER NOT NULL, newest_mac BLOB, seal BLOB)")},
                       why) &&
                   sealRows(why) && m_seals.digest(0, &record.rowsDigest, why) && m_state.write(record, why);
        },
        error);
    // A head left in the previous format (this failing) reads as older than
    // the store by one change, which is accepted until the next write.
    return upgraded && m_head.reset({record.entries, record.newestMac, 0}, error);
}

} // namespace nebra
