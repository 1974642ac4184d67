#include "UserStore.h"

#include "SecurityDatabase.h"
#include "SiteKey.h"
#include "StoreState.h"

#include <QSqlQuery>
#include <QVariant>

namespace nebra {

namespace {

QString noUser(const QString& name)
{
    return QStringLiteral("There is no user \"%1\".").arg(name);
}

QString noRole(const QString& name)
{
    return QStringLiteral("There is no role \"%1\".").arg(name);
}

QString altered(const QString& name)
{
    return QStringLiteral("The record of user \"%1\" has been changed outside the suite; an administrator "
                          "must set the user's password anew.")
        .arg(name);
}

QString alteredRole(const QString& name)
{
    return QStringLiteral("The record of role \"%1\" has been changed outside the suite, so it is not used; "
                          "add the role anew under another name.")
        .arg(name);
}

} // namespace

UserStore::UserStore(SecurityDatabase& database, const SiteKey& key, StoreState& state)
    : m_database(database), m_state(state), m_seals(database, key, state)
{
}

QString UserStore::nameKey(const QString& name)
{
    return name.normalized(QString::NormalizationForm_C).toCaseFolded();
}

UserRecord UserStore::recordOf(const QSqlQuery& q)
{
    return {q.value(0).toLongLong(),  q.value(1).toString(), q.value(2).toString(),
            q.value(3).toByteArray(), q.value(4).toBool(),   q.value(5).toInt(),
            q.value(6).toBool(),      q.value(7).toBool(),   true};
}

UserRecord UserStore::userFrom(const QSqlQuery& q, qint64 rowChanges) const
{
    UserRecord user = recordOf(q);
    user.intact = SiteKey::sameMac(q.value(8).toByteArray(), m_seals.user(user, rowChanges));
    return user;
}

std::optional<UserRecord> UserStore::find(const QString& name, QString* error) const
{
    qint64 rowChanges = 0;
    QSqlQuery q = m_database.newQuery();
    if (!m_seals.current(&rowChanges, error) ||
        !m_database.exec(q, QStringLiteral("SELECT %1 FROM users WHERE name_key = ?").arg(Columns),
                         {nameKey(name)}, error) ||
        !q.next())
        return std::nullopt;
    return userFrom(q, rowChanges);
}

QList<UserRecord> UserStore::users(QString* error) const
{
    QList<UserRecord> all;
    qint64 rowChanges = 0;
    QSqlQuery q = m_database.newQuery();
    if (m_seals.current(&rowChanges, error) &&
        m_database.exec(q, QStringLiteral("SELECT %1 FROM users ORDER BY name_key").arg(Columns), {}, error))
        while (q.next())
            all.append(userFrom(q, rowChanges));
    return all;
}

// Seals the row with the count it was written at; sealAfresh then moves every intact row on.
bool UserStore::sealUser(qint64 id, QString* error)
{
    qint64 rowChanges = 0;
    QSqlQuery q = m_database.newQuery();
    if (!m_seals.current(&rowChanges, error) ||
        !m_database.exec(q, QStringLiteral("SELECT %1 FROM users WHERE id = ?").arg(Columns), {id}, error))
        return false;
    if (!q.next()) {
        *error = QStringLiteral("The user record vanished while it was being changed.");
        return false;
    }
    const QByteArray mac = m_seals.user(recordOf(q), rowChanges);
    q.finish();
    return m_database.exec(q, QStringLiteral("UPDATE users SET mac = ? WHERE id = ?"), {mac, id}, error);
}

bool UserStore::updateUser(const QString& name, const QString& assignments, const QVariantList& values,
                           bool requireIntact, QString* error)
{
    return m_database.writeTransaction(
        [&](QString* why) {
            const std::optional<UserRecord> user = find(name, why);
            if (!user) {
                if (why->isEmpty())
                    *why = noUser(name);
                return false;
            }
            if (requireIntact && !user->intact) {
                *why = altered(user->name);
                return false;
            }
            QSqlQuery q = m_database.newQuery();
            return m_database.exec(q, QStringLiteral("UPDATE users SET %1 WHERE id = ?").arg(assignments),
                                   QVariantList(values) << user->id, why) &&
                   sealUser(user->id, why) && m_seals.sealAfresh(why);
        },
        error);
}

std::optional<qint64> UserStore::idOf(const char* table, const QString& name, const QString& what,
                                      qint64 rowChanges, QString* error) const
{
    const bool users = qstrcmp(table, "users") == 0;
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(q,
                         users ? QStringLiteral("SELECT id, name, mac FROM users WHERE name_key = ?")
                               : QStringLiteral("SELECT id, name, mac FROM roles WHERE name = ?"),
                         {users ? nameKey(name) : name}, error))
        return std::nullopt;
    if (!q.next()) {
        *error = what;
        return std::nullopt;
    }
    const qint64 id = q.value(0).toLongLong();
    // A role's name decides which rights an administrator gives by it.
    if (!users &&
        !SiteKey::sameMac(q.value(2).toByteArray(), m_seals.role(id, q.value(1).toString(), rowChanges))) {
        *error = alteredRole(name);
        return std::nullopt;
    }
    return id;
}

bool UserStore::addUser(const QString& name, const QString& fullName, const QByteArray& passwordHash,
                        QString* error)
{
    return m_database.writeTransaction(
        [&](QString* why) {
            QSqlQuery q = m_database.newQuery();
            if (!m_database.exec(q, QStringLiteral("SELECT 1 FROM users WHERE name_key = ?"), {nameKey(name)},
                                 why))
                return false;
            if (q.next()) {
                *why = QStringLiteral("There is already a user \"%1\".").arg(name);
                return false;
            }
            q.finish();
            return m_database.exec(
                       q,
                       QStringLiteral("INSERT INTO users(name, name_key, full_name, password_hash) "
                                      "VALUES(?, ?, ?, ?)"),
                       {name, nameKey(name), fullName.isNull() ? QStringLiteral("") : fullName,
                        QString::fromLatin1(passwordHash)},
                       why) &&
                   sealUser(q.lastInsertId().toLongLong(), why) && m_seals.sealAfresh(why);
        },
        error);
}

bool UserStore::setDisabled(const QString& name, bool disabled, QString* error)
{
    return updateUser(name, QStringLiteral("disabled = ?"), {disabled ? 1 : 0}, false, error);
}

bool UserStore::setPasswordHash(const QString& name, const QByteArray& hash, bool mustChange, QString* error)
{
    return updateUser(name, QStringLiteral("password_hash = ?, must_change_password = ?"),
                      {QString::fromLatin1(hash), mustChange ? 1 : 0}, false, error);
}

bool UserStore::recordFailedLogIn(const QString& name, int threshold, bool* lockedNow, QString* error)
{
    *lockedNow = false;
    return m_database.writeTransaction(
        [&](QString* why) {
            const std::optional<UserRecord> before = find(name, why);
            if (!updateUser(
                    name,
                    QStringLiteral("failed_logins = failed_logins + 1, "
                                   "locked = CASE WHEN failed_logins + 1 >= ? THEN 1 ELSE locked END"),
                    {threshold}, true, why))
                return false;
            const std::optional<UserRecord> after = find(name, why);
            *lockedNow = before && after && after->locked && !before->locked;
            return after.has_value();
        },
        error);
}

bool UserStore::resetFailedLogIns(const QString& name, QString* error)
{
    return updateUser(name, QStringLiteral("failed_logins = 0"), {}, true, error);
}

bool UserStore::unlock(const QString& name, QString* error)
{
    return updateUser(name, QStringLiteral("failed_logins = 0, locked = 0"), {}, false, error);
}

bool UserStore::linkChange(const QString& sql, const QList<Link>& links, const Binder& bind, QString* error)
{
    return m_database.writeTransaction(
        [&](QString* why) {
            qint64 rowChanges = 0;
            if (!m_seals.current(&rowChanges, why))
                return false;
            QList<qint64> ids;
            for (const Link& link : links) {
                const std::optional<qint64> id = idOf(link.table, link.name, link.notFound, rowChanges, why);
                if (!id)
                    return false;
                ids.append(*id);
            }
            QSqlQuery q = m_database.newQuery();
            return m_database.exec(q, sql, bind(ids, rowChanges), why) && m_seals.sealAfresh(why);
        },
        error);
}

bool UserStore::grant(const QString& user, const Right& right, QString* error)
{
    return linkChange(
        QStringLiteral(
            "INSERT OR REPLACE INTO user_rights(user_id, area, operation, mac) VALUES(?, ?, ?, ?)"),
        {{"users", user, noUser(user)}},
        [&](const QList<qint64>& ids, qint64 rowChanges) {
            return QVariantList{
                ids[0], right.area, right.operation,
                m_seals.right("user_rights", ids[0], right.area, right.operation, rowChanges)};
        },
        error);
}

bool UserStore::revoke(const QString& user, const Right& right, QString* error)
{
    return linkChange(
        QStringLiteral("DELETE FROM user_rights WHERE user_id = ? AND area = ? AND operation = ?"),
        {{"users", user, noUser(user)}},
        [&](const QList<qint64>& ids, qint64) {
            return QVariantList{ids[0], right.area, right.operation};
        },
        error);
}

bool UserStore::addRole(const QString& role, QString* error)
{
    return m_database.writeTransaction(
        [&](QString* why) {
            qint64 rowChanges = 0;
            QSqlQuery q = m_database.newQuery();
            if (!m_seals.current(&rowChanges, why) ||
                !m_database.exec(q, QStringLiteral("SELECT 1 FROM roles WHERE name = ?"), {role}, why))
                return false;
            if (q.next()) {
                *why = QStringLiteral("There is already a role \"%1\".").arg(role);
                return false;
            }
            if (!m_database.exec(q, QStringLiteral("INSERT INTO roles(name) VALUES(?)"), {role}, why))
                return false;
            const qint64 id = q.lastInsertId().toLongLong();
            return m_database.exec(q, QStringLiteral("UPDATE roles SET mac = ? WHERE id = ?"),
                                   {m_seals.role(id, role, rowChanges), id}, why) &&
                   m_seals.sealAfresh(why);
        },
        error);
}

bool UserStore::grantToRole(const QString& role, const Right& right, QString* error)
{
    return linkChange(
        QStringLiteral(
            "INSERT OR REPLACE INTO role_rights(role_id, area, operation, mac) VALUES(?, ?, ?, ?)"),
        {{"roles", role, noRole(role)}},
        [&](const QList<qint64>& ids, qint64 rowChanges) {
            return QVariantList{
                ids[0], right.area, right.operation,
                m_seals.right("role_rights", ids[0], right.area, right.operation, rowChanges)};
        },
        error);
}

bool UserStore::revokeFromRole(const QString& role, const Right& right, QString* error)
{
    return linkChange(
        QStringLiteral("DELETE FROM role_rights WHERE role_id = ? AND area = ? AND operation = ?"),
        {{"roles", role, noRole(role)}},
        [&](const QList<qint64>& ids, qint64) {
            return QVariantList{ids[0], right.area, right.operation};
        },
        error);
}

bool UserStore::assignRole(const QString& user, const QString& role, QString* error)
{
    return linkChange(
        QStringLiteral("INSERT OR REPLACE INTO user_roles(user_id, role_id, mac) VALUES(?, ?, ?)"),
        {{"users", user, noUser(user)}, {"roles", role, noRole(role)}},
        [&](const QList<qint64>& ids, qint64 rowChanges) {
            return QVariantList{ids[0], ids[1], m_seals.membership(ids[0], ids[1], rowChanges)};
        },
        error);
}

bool UserStore::unassignRole(const QString& user, const QString& role, QString* error)
{
    return linkChange(
        QStringLiteral("DELETE FROM user_roles WHERE user_id = ? AND role_id = ?"),
        {{"users", user, noUser(user)}, {"roles", role, noRole(role)}},
        [](const QList<qint64>& ids, qint64) {
            return QVariantList{ids[0], ids[1]};
        },
        error);
}

bool UserStore::allowedByOwnRights(qint64 userId, const QString& area, const QString& operation,
                                   qint64 rowChanges, QString* error) const
{
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(
            q,
            QStringLiteral("SELECT area, operation, mac FROM user_rights WHERE user_id = ? "
                           "AND (area = ? OR area = '*') AND (operation = ? OR operation = '*')"),
            {userId, area, operation}, error))
        return false;
    while (q.next())
        if (SiteKey::sameMac(q.value(2).toByteArray(),
                             m_seals.right("user_rights", userId, q.value(0).toString(),
                                           q.value(1).toString(), rowChanges)))
            return true;
    return false;
}

bool UserStore::allowedByRoles(qint64 userId, const QString& area, const QString& operation,
                               qint64 rowChanges, QString* error) const
{
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(
            q,
            QStringLiteral("SELECT ur.role_id, ur.mac, rr.area, rr.operation, rr.mac, r.name, r.mac "
                           "FROM user_roles ur JOIN role_rights rr ON rr.role_id = ur.role_id "
                           "JOIN roles r ON r.id = ur.role_id "
                           "WHERE ur.user_id = ? AND (rr.area = ? OR rr.area = '*') "
                           "AND (rr.operation = ? OR rr.operation = '*')"),
            {userId, area, operation}, error))
        return false;
    while (q.next()) {
        const qint64 roleId = q.value(0).toLongLong();
        if (SiteKey::sameMac(q.value(1).toByteArray(), m_seals.membership(userId, roleId, rowChanges)) &&
            SiteKey::sameMac(q.value(4).toByteArray(),
                             m_seals.right("role_rights", roleId, q.value(2).toString(),
                                           q.value(3).toString(), rowChanges)) &&
            SiteKey::sameMac(q.value(6).toByteArray(),
                             m_seals.role(roleId, q.value(5).toString(), rowChanges)))
            return true;
    }
    return false;
}

bool UserStore::isOperationAllowed(const QString& user, const QString& area, const QString& operation,
                                   QString* error) const
{
    bool allowed = false;
    m_database.readTransaction(
        [&](QString* why) {
            // Rows written back with an older record of the store would match it again: not while
            // the record agrees with the trail and the chain head.
            StoreState::Record state;
            if (!m_state.check(&state, why)) {
                *why = StoreState::forUsers(*why);
                return false;
            }
            const std::optional<UserRecord> record = find(user, why);
            if (!record || !record->intact || record->disabled || record->locked)
                return why->isEmpty();
            allowed = allowedByOwnRights(record->id, area, operation, state.rowChanges, why) ||
                      (why->isEmpty() && allowedByRoles(record->id, area, operation, state.rowChanges, why));
            return why->isEmpty();
        },
        error);
    return allowed && error->isEmpty();
}

QList<Right> UserStore::rightsOf(const QString& user, QString* error) const
{
    QList<Right> rights;
    qint64 rowChanges = 0;
    QSqlQuery q = m_database.newQuery();
    if (m_seals.current(&rowChanges, error) &&
        m_database.exec(q,
                        QStringLiteral("SELECT r.area, r.operation, r.mac, r.user_id FROM user_rights r "
                                       "JOIN users u ON u.id = r.user_id WHERE u.name_key = ? "
                                       "ORDER BY r.area, r.operation"),
                        {nameKey(user)}, error))
        while (q.next())
            rights.append(
                {q.value(0).toString(), q.value(1).toString(),
                 SiteKey::sameMac(q.value(2).toByteArray(),
                                  m_seals.right("user_rights", q.value(3).toLongLong(), q.value(0).toString(),
                                                q.value(1).toString(), rowChanges))});
    return rights;
}

QStringList UserStore::rolesOf(const QString& user, QString* error) const
{
    QStringList roles;
    QSqlQuery q = m_database.newQuery();
    if (m_database.exec(
            q,
            QStringLiteral("SELECT r.name FROM roles r JOIN user_roles ur ON ur.role_id = r.id "
                           "JOIN users u ON u.id = ur.user_id WHERE u.name_key = ? ORDER BY r.name"),
            {nameKey(user)}, error))
        while (q.next())
            roles.append(q.value(0).toString());
    return roles;
}

void UserStore::alteredRights(const char* table, const char* owner, qint64 rowChanges, QStringList* found,
                              QString* error) const
{
    const QString column = QLatin1String(table) == QLatin1String("user_rights") ? QStringLiteral("user_id")
                                                                                : QStringLiteral("role_id");
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(
            q, QStringLiteral("SELECT %1, area, operation, mac FROM %2").arg(column, QLatin1String(table)),
            {}, error))
        return;
    while (q.next())
        if (!SiteKey::sameMac(q.value(3).toByteArray(),
                              m_seals.right(table, q.value(0).toLongLong(), q.value(1).toString(),
                                            q.value(2).toString(), rowChanges)))
            *found << QStringLiteral("The right %1/%2 of %3 id %4 has been altered or slipped in.")
                          .arg(q.value(1).toString(), q.value(2).toString(), QLatin1String(owner),
                               q.value(0).toString());
}

QStringList UserStore::alteredRows(QString* error) const
{
    QStringList found;
    m_database.readTransaction(
        [&](QString* why) {
            StoreState::Record state;
            if (!m_state.read(&state, why))
                return false;
            for (const UserRecord& user : users(why))
                if (!user.intact)
                    found << QStringLiteral("The record of user \"%1\" has been altered.").arg(user.name);
            QSqlQuery q = m_database.newQuery();
            if (!m_database.exec(q, QStringLiteral("SELECT id, name, mac FROM roles"), {}, why))
                return false;
            while (q.next())
                if (!SiteKey::sameMac(
                        q.value(2).toByteArray(),
                        m_seals.role(q.value(0).toLongLong(), q.value(1).toString(), state.rowChanges)))
                    found << QStringLiteral("The record of role \"%1\" has been altered.")
                                 .arg(q.value(1).toString());
            alteredRights("user_rights", "user", state.rowChanges, &found, why);
            alteredRights("role_rights", "role", state.rowChanges, &found, why);
            if (!why->isEmpty() ||
                !m_database.exec(q, QStringLiteral("SELECT user_id, role_id, mac FROM user_roles"), {}, why))
                return false;
            while (q.next())
                if (!SiteKey::sameMac(q.value(2).toByteArray(),
                                      m_seals.membership(q.value(0).toLongLong(), q.value(1).toLongLong(),
                                                         state.rowChanges)))
                    found << QStringLiteral("The role id %1 of user id %2 has been altered or slipped in.")
                                 .arg(q.value(1).toString(), q.value(0).toString());
            QByteArray digest;
            if (!m_seals.digest(state.rowChanges, &digest, why))
                return false;
            if (!SiteKey::sameMac(digest, state.rowsDigest))
                found << QStringLiteral(
                    "Users, roles, rights or role memberships have been removed, or written "
                    "back from an older copy of the security database.");
            return true;
        },
        error);
    return found;
}

} // namespace nebra
