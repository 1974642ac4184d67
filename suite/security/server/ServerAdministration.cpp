#include "ServerAdministration.h"

#include "SecretBytes.h"
#include "ServerConnection.h"

#include <QSqlQuery>
#include <QStringList>

namespace nebra {

ServerAdministration::ServerAdministration(ServerConnection& connection, QString actor, QString workstation)
    : m_connection(connection), m_actor(std::move(actor)), m_workstation(std::move(workstation))
{
}

bool ServerAdministration::call(const QString& function, const QVariantList& arguments, QString* error)
{
    QStringList marks(arguments.size() + 2, QStringLiteral("?"));
    QSqlQuery q(m_connection.database());
    return m_connection.exec(
        q, QStringLiteral("SELECT nebra.%1(%2)").arg(function, marks.join(QLatin1String(", "))),
        QVariantList{m_actor, m_workstation} + arguments, error);
}

bool ServerAdministration::addUser(const QString& name, const QString& fullName, const SecretBytes& password,
                                   QString* error)
{
    return call(QStringLiteral("admin_add_user"),
                {name, fullName, QString::fromUtf8(password.data(), password.size())}, error);
}

bool ServerAdministration::setDisabled(const QString& name, bool disabled, QString* error)
{
    return call(QStringLiteral("admin_set_disabled"), {name, disabled}, error);
}

bool ServerAdministration::setPassword(const QString& name, const SecretBytes& password, bool mustChange,
                                       QString* error)
{
    return call(QStringLiteral("admin_set_password"),
                {name, QString::fromUtf8(password.data(), password.size()), mustChange}, error);
}

bool ServerAdministration::unlock(const QString& name, QString* error)
{
    return call(QStringLiteral("admin_unlock"), {name}, error);
}

bool ServerAdministration::grant(const QString& user, const Right& right, QString* error)
{
    return call(QStringLiteral("admin_grant"), {user, right.area, right.operation}, error);
}

bool ServerAdministration::revoke(const QString& user, const Right& right, QString* error)
{
    return call(QStringLiteral("admin_revoke"), {user, right.area, right.operation}, error);
}

bool ServerAdministration::addRole(const QString& role, QString* error)
{
    return call(QStringLiteral("admin_add_role"), {role}, error);
}

bool ServerAdministration::grantToRole(const QString& role, const Right& right, QString* error)
{
    return call(QStringLiteral("admin_grant_to_role"), {role, right.area, right.operation}, error);
}

bool ServerAdministration::assignRole(const QString& user, const QString& role, QString* error)
{
    return call(QStringLiteral("admin_assign_role"), {user, role}, error);
}

bool ServerAdministration::setPolicy(int lockoutThreshold, int hashCost, QString* error)
{
    return call(QStringLiteral("admin_set_policy"), {lockoutThreshold, hashCost}, error);
}

AuditVerification ServerAdministration::verify()
{
    AuditVerification result;
    QSqlQuery q(m_connection.database());
    QString error;
    if (!m_connection.exec(
            q, QStringLiteral("SELECT ok, entry_count, first_bad_seq, message FROM nebra.verify_audit()"), {},
            &error) ||
        !q.next()) {
        result.ok = false;
        result.message = error.isEmpty() ? QStringLiteral("The security server gave no answer.") : error;
        return result;
    }
    result.ok = q.value(0).toBool();
    result.entryCount = q.value(1).toLongLong();
    result.firstBadSequence = q.value(2).toLongLong();
    result.message = q.value(3).toString();
    return result;
}

} // namespace nebra
