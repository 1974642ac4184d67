#include "ServerSession.h"

#include "SecretBytes.h"
#include "ServerConnection.h"

#include <QSqlQuery>

namespace nebra {

namespace {

QString text(const SecretBytes& secret)
{
    return QString::fromUtf8(secret.data(), secret.size());
}

LogInStatus statusFrom(const QString& status)
{
    if (status == QLatin1String("success"))
        return LogInStatus::Success;
    if (status == QLatin1String("locked"))
        return LogInStatus::Locked;
    if (status == QLatin1String("disabled"))
        return LogInStatus::Disabled;
    return LogInStatus::Refused;
}

} // namespace

ServerSession::ServerSession(ServerConnection& connection, QString workstation)
    : m_connection(connection), m_workstation(std::move(workstation))
{
}

ServerLogIn ServerSession::logIn(const QString& userName, const SecretBytes& password)
{
    ServerLogIn result;
    QSqlQuery q(m_connection.database());
    if (!m_connection.exec(q,
                           QStringLiteral("SELECT status, token, user_name, full_name, must_change_password "
                                          "FROM nebra.log_in(?, ?, ?)"),
                           {userName, text(password), m_workstation}, &result.error) ||
        !q.next()) {
        result.status = LogInStatus::Error;
        if (result.error.isEmpty())
            result.error = QStringLiteral("The security server gave no answer to the log-in.");
        return result;
    }
    result.status = statusFrom(q.value(0).toString());
    result.token = q.value(1).toString();
    result.userName = q.value(2).toString();
    result.fullName = q.value(3).toString();
    result.mustChangePassword = q.value(4).toBool();
    return result;
}

std::optional<bool> ServerSession::isAllowed(const QString& token, const QString& area,
                                             const QString& operation, QString* error)
{
    QSqlQuery q(m_connection.database());
    if (!m_connection.exec(q, QStringLiteral("SELECT nebra.is_allowed(?, ?, ?)"), {token, area, operation},
                           error) ||
        !q.next())
        return std::nullopt;
    return q.value(0).toBool();
}

qint64 ServerSession::record(const QString& token, const QString& area, const QString& entry, QString* error)
{
    QSqlQuery q(m_connection.database());
    if (!m_connection.exec(q, QStringLiteral("SELECT nebra.record_audit(?, ?, ?)"), {token, area, entry},
                           error) ||
        !q.next())
        return 0;
    return q.value(0).toLongLong();
}

ServerPasswordChange ServerSession::checkPassword(const QString& token, const SecretBytes& current,
                                                  QString* error)
{
    QSqlQuery q(m_connection.database());
    if (!m_connection.exec(q, QStringLiteral("SELECT nebra.check_password(?, ?)"), {token, text(current)},
                           error) ||
        !q.next())
        return ServerPasswordChange::Error;
    const QString outcome = q.value(0).toString();
    if (outcome == QLatin1String("ok"))
        return ServerPasswordChange::Changed;
    return outcome == QLatin1String("locked") ? ServerPasswordChange::Locked
                                              : ServerPasswordChange::Incorrect;
}

ServerPasswordChange ServerSession::changePassword(const QString& token, const SecretBytes& current,
                                                   const SecretBytes& fresh, QString* error)
{
    QSqlQuery q(m_connection.database());
    if (!m_connection.exec(q, QStringLiteral("SELECT nebra.change_password(?, ?, ?)"),
                           {token, text(current), text(fresh)}, error) ||
        !q.next())
        return ServerPasswordChange::Error;
    const QString outcome = q.value(0).toString();
    if (outcome == QLatin1String("changed"))
        return ServerPasswordChange::Changed;
    if (outcome == QLatin1String("locked"))
        return ServerPasswordChange::Locked;
    if (outcome == QLatin1String("same"))
        return ServerPasswordChange::Same;
    return ServerPasswordChange::Incorrect;
}

bool ServerSession::logOut(const QString& token, const QString& entry, QString* error)
{
    QSqlQuery q(m_connection.database());
    return m_connection.exec(q, QStringLiteral("SELECT nebra.log_out(?, ?)"), {token, entry}, error);
}

} // namespace nebra
