#include "UserStore.h"

#include "SecurityDatabase.h"

#include <QSqlQuery>
#include <QVariant>

namespace nebra {

namespace {

const QString UserColumns = QStringLiteral(
    "id, name, full_name, password_hash, disabled, failed_logins, locked, must_change_password");

UserRecord userFrom(const QSqlQuery& q)
{
    return {q.value(0).toLongLong(), q.value(1).toString(), q.value(2).toString(), q.value(3).toByteArray(),
            q.value(4).toBool(),     q.value(5).toInt(),    q.value(6).toBool(),   q.value(7).toBool()};
}

QString noUser(const QString& name)
{
    return QStringLiteral("There is no user \"%1\".").arg(name);
}

QString noRole(const QString& name)
{
    return QStringLiteral("There is no role \"%1\".").arg(name);
}

} // namespace

UserStore::UserStore(SecurityDatabase& database) : m_database(database) {}

std::optional<UserRecord> UserStore::find(const QString& name, QString* error) const
{
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(q, QStringLiteral("SELECT %1 FROM users WHERE name = ?").arg(UserColumns), {name},
                         error) ||
        !q.next())
        return std::nullopt;
    return userFrom(q);
}

QList<UserRecord> UserStore::users(QString* error) const
{
    QList<UserRecord> all;
    QSqlQuery q = m_database.newQuery();
    if (m_database.exec(q, QStringLiteral("SELECT %1 FROM users ORDER BY name").arg(UserColumns), {}, error))
        while (q.next())
            all.append(userFrom(q));
    return all;
}

bool UserStore::change(const QString& sql, const QVariantList& values, const QString& notFound,
                       QString* error)
{
    return m_database.writeTransaction(
        [&](QString* why) {
            QSqlQuery q = m_database.newQuery();
            if (!m_database.exec(q, sql, values, why))
                return false;
            if (q.numRowsAffected() > 0)
                return true;
            *why = notFound;
            return false;
        },
        error);
}

std::optional<qint64> UserStore::idOf(const char* table, const QString& name, const QString& what,
                                      QString* error) const
{
    QSqlQuery q = m_database.newQuery();
    if (!m_database.exec(q, QStringLiteral("SELECT id FROM %1 WHERE name = ?").arg(QLatin1String(table)),
                         {name}, error))
        return std::nullopt;
    if (!q.next()) {
        *error = what;
        return std::nullopt;
    }
    return q.value(0).toLongLong();
}

bool UserStore::addUser(const QString& name, const QString& fullName, const QByteArray& passwordHash,
                        QString* error)
{
    return m_database.writeTransaction(
        [&](QString* why) {
            QSqlQuery q = m_database.newQuery();
            if (!m_database.exec(q, QStringLiteral("SELECT 1 FROM users WHERE name = ?"), {name}, why))
                return false;
            if (q.next()) {
                *why = QStringLiteral("There is already a user \"%1\".").arg(name);
                return false;
            }
            return m_database.exec(
                q, QStringLiteral("INSERT INTO users(name, full_name, password_hash) VALUES(?, ?, ?)"),
                {name, fullName.isNull() ? QStringLiteral("") : fullName, QString::fromLatin1(passwordHash)},
                why);
        },
        error);
}

bool UserStore::setDisabled(const QString& name, bool disabled, QString* error)
{
    return change(QStringLiteral("UPDATE users SET disabled = ? WHERE name = ?"), {disabled ? 1 : 0, name},
                  noUser(name), error);
}

bool UserStore::setPasswordHash(const QString& name, const QByteArray& hash, bool mustChange, QString* error)
{
    return change(
        QStringLiteral("UPDATE users SET password_hash = ?, must_change_password = ? WHERE name = ?"),
        {QString::fromLatin1(hash), mustChange ? 1 : 0, name}, noUser(name), error);
}

bool UserStore::recordFailedLogIn(const QString& name, int threshold, bool* lockedNow, QString* error)
{
    *lockedNow = false;
    return m_database.writeTransaction(
        [&](QString* why) {
            QSqlQuery q = m_database.newQuery();
            if (!m_database.exec(q, QStringLiteral("SELECT locked FROM users WHERE name = ?"), {name}, why))
                return false;
            const bool wasLocked = q.next() && q.value(0).toBool();
            q.finish();
            if (!m_database.exec(
                    q,
                    QStringLiteral("UPDATE users SET failed_logins = failed_logins + 1, "
                                   "locked = CASE WHEN failed_logins + 1 >= ? THEN 1 ELSE locked END "
                                   "WHERE name = ? RETURNING locked"),
                    {threshold, name}, why))
                return false;
            *lockedNow = q.next() && q.value(0).toBool() && !wasLocked;
            return true;
        },
        error);
}

bool UserStore::resetFailedLogIns(const QString& name, QString* error)
{
    return change(QStringLiteral("UPDATE users SET failed_logins = 0 WHERE name = ?"), {name}, noUser(name),
                  error);
}

bool UserStore::unlock(const QString& name, QString* error)
{
    return change(QStringLiteral("UPDATE users SET failed_logins = 0, locked = 0 WHERE name = ?"), {name},
                  noUser(name), error);
}

bool UserStore::linkChange(const QString& sql, const QList<Link>& links, const QVariantList& values,
                           QString* error)
{
    return m_database.writeTransaction(
        [&](QString* why) {
            QVariantList bound;
            for (const Link& link : links) {
                const std::optional<qint64> id = idOf(link.table, link.name, link.notFound, why);
                if (!id)
                    return false;
                bound.append(*id);
            }
            bound.append(values);
            QSqlQuery q = m_database.newQuery();
            return m_database.exec(q, sql, bound, why);
        },
        error);
}

bool UserStore::grant(const QString& user, const Right& right, QString* error)
{
    return linkChange(
        QStringLiteral("INSERT OR IGNORE INTO user_rights(user_id, area, operation) VALUES(?, ?, ?)"),
        {{"users", user, noUser(user)}}, {right.area, right.operation}, error);
}

bool UserStore::revoke(const QString& user, const Right& right, QString* error)
{
    return linkChange(
        QStringLiteral("DELETE FROM user_rights WHERE user_id = ? AND area = ? AND operation = ?"),
        {{"users", user, noUser(user)}}, {right.area, right.operation}, error);
}

bool UserStore::addRole(const QString& role, QString* error)
{
    return m_database.writeTransaction(
        [&](QString* why) {
            QSqlQuery q = m_database.newQuery();
            if (!m_database.exec(q, QStringLiteral("SELECT 1 FROM roles WHERE name = ?"), {role}, why))
                return false;
            if (q.next()) {
                *why = QStringLiteral("There is already a role \"%1\".").arg(role);
                return false;
            }
            return m_database.exec(q, QStringLiteral("INSERT INTO roles(name) VALUES(?)"), {role}, why);
        },
        error);
}

bool UserStore::grantToRole(const QString& role, const Right& right, QString* error)
{
    return linkChange(
        QStringLiteral("INSERT OR IGNORE INTO role_rights(role_id, area, operation) VALUES(?, ?, ?)"),
        {{"roles", role, noRole(role)}}, {right.area, right.operation}, error);
}

bool UserStore::revokeFromRole(const QString& role, const Right& right, QString* error)
{
    return linkChange(
        QStringLiteral("DELETE FROM role_rights WHERE role_id = ? AND area = ? AND operation = ?"),
        {{"roles", role, noRole(role)}}, {right.area, right.operation}, error);
}

bool UserStore::assignRole(const QString& user, const QString& role, QString* error)
{
    return linkChange(QStringLiteral("INSERT OR IGNORE INTO user_roles(user_id, role_id) VALUES(?, ?)"),
                      {{"users", user, noUser(user)}, {"roles", role, noRole(role)}}, {}, error);
}

bool UserStore::unassignRole(const QString& user, const QString& role, QString* error)
{
    return linkChange(QStringLiteral("DELETE FROM user_roles WHERE user_id = ? AND role_id = ?"),
                      {{"users", user, noUser(user)}, {"roles", role, noRole(role)}}, {}, error);
}

bool UserStore::isOperationAllowed(const QString& user, const QString& area, const QString& operation,
                                   QString* error) const
{
    static const QString sql = QStringLiteral(
        "SELECT 1 FROM users u WHERE u.name = ? AND u.disabled = 0 AND u.locked = 0 AND ("
        " EXISTS (SELECT 1 FROM user_rights r WHERE r.user_id = u.id"
        "  AND (r.area = ? OR r.area = '*') AND (r.operation = ? OR r.operation = '*'))"
        " OR EXISTS (SELECT 1 FROM user_roles ur JOIN role_rights rr ON rr.role_id = ur.role_id"
        "  WHERE ur.user_id = u.id AND (rr.area = ? OR rr.area = '*') AND (rr.operation = ? OR rr.operation "
        "= '*')))");
    QSqlQuery q = m_database.newQuery();
    return m_database.exec(q, sql, {user, area, operation, area, operation}, error) && q.next();
}

QList<Right> UserStore::rightsOf(const QString& user, QString* error) const
{
    QList<Right> rights;
    QSqlQuery q = m_database.newQuery();
    if (m_database.exec(
            q,
            QStringLiteral("SELECT r.area, r.operation FROM user_rights r JOIN users u ON u.id = r.user_id "
                           "WHERE u.name = ? ORDER BY r.area, r.operation"),
            {user}, error))
        while (q.next())
            rights.append({q.value(0).toString(), q.value(1).toString()});
    return rights;
}

QStringList UserStore::rolesOf(const QString& user, QString* error) const
{
    QStringList roles;
    QSqlQuery q = m_database.newQuery();
    if (m_database.exec(q,
                        QStringLiteral("SELECT r.name FROM roles r JOIN user_roles ur ON ur.role_id = r.id "
                                       "JOIN users u ON u.id = ur.user_id WHERE u.name = ? ORDER BY r.name"),
                        {user}, error))
        while (q.next())
            roles.append(q.value(0).toString());
    return roles;
}

} // namespace nebra
