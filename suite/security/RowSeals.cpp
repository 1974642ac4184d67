#include "RowSeals.h"

#include "MacMessage.h"
#include "SecurityDatabase.h"
#include "SiteKey.h"
#include "StoreState.h"
#include "UserStore.h"

#include <QSqlQuery>
#include <QVariant>

namespace nebra {

struct RowSeals::Table
{
    enum Kind
    {
        Users,
        Roles,
        UserRights,
        RoleRights,
        Memberships
    };
    Kind kind;
    QString name;
    QStringList keys; // in the order the rows are visited
    QString columns;  // the keys first, the MAC last
};

RowSeals::RowSeals(SecurityDatabase& database, const SiteKey& key, StoreState& state)
    : m_database(database), m_key(key), m_state(state)
{
}

const QList<RowSeals::Table>& RowSeals::tables()
{
    static const QList<Table> list = {
        {Table::Users, QStringLiteral("users"), {QStringLiteral("id")}, UserStore::Columns},
        {Table::Roles, QStringLiteral("roles"), {QStringLiteral("id")}, QStringLiteral("id, name, mac")},
        {Table::UserRights,
         QStringLiteral("user_rights"),
         {QStringLiteral("user_id"), QStringLiteral("area"), QStringLiteral("operation")},
         QStringLiteral("user_id, area, operation, mac")},
        {Table::RoleRights,
         QStringLiteral("role_rights"),
         {QStringLiteral("role_id"), QStringLiteral("area"), QStringLiteral("operation")},
         QStringLiteral("role_id, area, operation, mac")},
        {Table::Memberships,
         QStringLiteral("user_roles"),
         {QStringLiteral("user_id"), QStringLiteral("role_id")},
         QStringLiteral("user_id, role_id, mac")},
    };
    return list;
}

bool RowSeals::current(qint64* rowChanges, QString* error) const
{
    StoreState::Record record;
    if (!m_state.read(&record, error))
        return false;
    *rowChanges = record.rowChanges;
    return true;
}

QByteArray RowSeals::user(const UserRecord& user, qint64 rowChanges) const
{
    return m_key.mac(MacMessage("nebra-user-v3")
                         .add(m_database.databaseId())
                         .add(rowChanges)
                         .add(user.id)
                         .add(UserStore::nameKey(user.name))
                         .add(user.passwordHash)
                         .add(qint64(user.disabled))
                         .add(qint64(user.locked))
                         .add(qint64(user.failedLogIns))
                         .add(qint64(user.mustChangePassword))
                         .bytes());
}

QByteArray RowSeals::right(const char* table, qint64 owner, const QString& area, const QString& operation,
                           qint64 rowChanges) const
{
    return m_key.mac(MacMessage("nebra-right-v3")
                         .add(QString::fromLatin1(table))
                         .add(m_database.databaseId())
                         .add(rowChanges)
                         .add(owner)
                         .add(area)
                         .add(operation)
                         .bytes());
}

QByteArray RowSeals::membership(qint64 userId, qint64 roleId, qint64 rowChanges) const
{
    return m_key.mac(MacMessage("nebra-membership-v3")
                         .add(m_database.databaseId())
                         .add(rowChanges)
                         .add(userId)
                         .add(roleId)
                         .bytes());
}

QByteArray RowSeals::role(qint64 roleId, const QString& name, qint64 rowChanges) const
{
    return m_key.mac(MacMessage("nebra-role-v3")
                         .add(m_database.databaseId())
                         .add(rowChanges)
                         .add(roleId)
                         .add(name)
                         .bytes());
}

QByteArray RowSeals::macOf(const Table& table, const QSqlQuery& row, qint64 rowChanges) const
{
    const auto text = [&](int i) { return row.value(i).toString(); };
    const auto id = [&](int i) { return row.value(i).toLongLong(); };
    switch (table.kind) {
    case Table::Users:
        return user(UserStore::recordOf(row), rowChanges);
    case Table::Roles:
        return role(id(0), text(1), rowChanges);
    case Table::UserRights:
        return right("user_rights", id(0), text(1), text(2), rowChanges);
    case Table::RoleRights:
        return right("role_rights", id(0), text(1), text(2), rowChanges);
    case Table::Memberships:
        return membership(id(0), id(1), rowChanges);
    }
    return {};
}

bool RowSeals::sealAfresh(QString* error)
{
    StoreState::Record record;
    if (!m_state.read(&record, error))
        return false;
    const qint64 next = record.rowChanges + 1;
    for (const Table& table : tables()) {
        QSqlQuery q = m_database.newQuery();
        if (!m_database.exec(q, QStringLiteral("SELECT %1 FROM %2").arg(table.columns, table.name), {},
                             error))
            return false;
        const int macColumn = table.columns.count(QLatin1Char(','));
        QList<QVariantList> updates;
        while (q.next()) {
            const bool held =
                SiteKey::sameMac(q.value(macColumn).toByteArray(), macOf(table, q, record.rowChanges));
            // An empty MAC (not a null one, which the column refuses) leaves the row unsealed.
            QVariantList values{QVariant(held ? macOf(table, q, next) : QByteArray(""))};
            for (int i = 0; i < table.keys.size(); ++i)
                values.append(q.value(i));
            updates.append(values);
        }
        q.finish();
        const QString update = QStringLiteral("UPDATE %1 SET mac = ? WHERE %2 = ?")
                                   .arg(table.name, table.keys.join(QLatin1String(" = ? AND ")));
        for (const QVariantList& values : updates)
            if (!m_database.exec(q, update, values, error))
                return false;
    }
    record.rowChanges = next;
    return digest(next, &record.rowsDigest, error) && m_state.write(record, error);
}

bool RowSeals::digest(qint64 rowChanges, QByteArray* digest, QString* error) const
{
    MacMessage message("nebra-rows-v1");
    message.add(m_database.databaseId()).add(rowChanges);
    for (const Table& table : tables()) {
        QSqlQuery q = m_database.newQuery();
        if (!m_database.exec(q,
                             QStringLiteral("SELECT mac FROM %1 ORDER BY %2")
                                 .arg(table.name, table.keys.join(QLatin1String(", "))),
                             {}, error))
            return false;
        QByteArray macs;
        qint64 count = 0;
        while (q.next()) {
            macs += q.value(0).toByteArray().leftJustified(SiteKey::MacSize, '\0', true);
            ++count;
        }
        message.add(table.name).add(count).add(macs);
    }
    *digest = m_key.mac(message.bytes());
    return true;
}

} // namespace nebra
