#include "SecurityAdministration.h"

#include "SecretBytes.h"
#include "SecurityStore.h"

namespace nebra {

namespace {
QString describe(const Right& right)
{
    return right.area + QLatin1Char('/') + right.operation;
}
} // namespace

SecurityAdministration::SecurityAdministration(SecurityStore& store, QString actor)
    : m_store(store), m_actor(std::move(actor))
{
}

bool SecurityAdministration::recorded(const std::function<bool(QString*)>& change, const QString& text,
                                      QString* error)
{
    // The change and its entry share one transaction: neither lands without the other.
    QString why;
    const AuditAppendResult result = m_store.audit().append(m_actor, Area, text, [&](QString* e) {
        const bool done = change(e);
        why = *e;
        return done;
    });
    if (result.error.isEmpty())
        return true;
    *error = result.sequence == 0 && !why.isEmpty() ? why : result.error;
    return false;
}

bool SecurityAdministration::validName(const QString& name, QString* error)
{
    const QString trimmed = name.trimmed();
    if (!trimmed.isEmpty() && trimmed == name && name.size() <= 64 && !name.contains(QLatin1Char('*')))
        return true;
    *error = QStringLiteral("\"%1\" is not a valid name: use 1 to 64 characters, without leading or trailing "
                            "blanks and without \"*\".")
                 .arg(name);
    return false;
}

bool SecurityAdministration::validRight(const Right& right, QString* error)
{
    if (!right.area.trimmed().isEmpty() && !right.operation.trimmed().isEmpty())
        return true;
    *error = QStringLiteral("A right needs an area and an operation.");
    return false;
}

bool SecurityAdministration::addUser(const QString& name, const QString& fullName,
                                     const SecretBytes& password, QString* error)
{
    if (!validName(name, error))
        return false;
    *error = m_store.policy().check(name, password);
    if (!error->isEmpty())
        return false;
    const QByteArray hash = m_store.hasher().hash(password);
    if (hash.isEmpty()) {
        *error = QStringLiteral("The password could not be hashed (not enough memory).");
        return false;
    }
    return recorded([&](QString* e) { return m_store.users().addUser(name, fullName, hash, e); },
                    QStringLiteral("User added: %1 (%2)").arg(name, fullName), error);
}

bool SecurityAdministration::setDisabled(const QString& name, bool disabled, QString* error)
{
    return recorded(
        [&](QString* e) { return m_store.users().setDisabled(name, disabled, e); },
        (disabled ? QStringLiteral("User disabled: %1") : QStringLiteral("User enabled: %1")).arg(name),
        error);
}

bool SecurityAdministration::setPassword(const QString& name, const SecretBytes& password, bool mustChange,
                                         QString* error)
{
    *error = m_store.policy().check(name, password);
    if (!error->isEmpty())
        return false;
    const QByteArray hash = m_store.hasher().hash(password);
    if (hash.isEmpty()) {
        *error = QStringLiteral("The password could not be hashed (not enough memory).");
        return false;
    }
    return recorded([&](QString* e) { return m_store.users().setPasswordHash(name, hash, mustChange, e); },
                    (mustChange ? QStringLiteral("Password reset for %1; to be changed at the next log in")
                                : QStringLiteral("Password set for %1"))
                        .arg(name),
                    error);
}

bool SecurityAdministration::unlock(const QString& name, QString* error)
{
    return recorded([&](QString* e) { return m_store.users().unlock(name, e); },
                    QStringLiteral("Account unlocked: %1").arg(name), error);
}

bool SecurityAdministration::grant(const QString& user, const Right& right, QString* error)
{
    return validRight(right, error) &&
           recorded([&](QString* e) { return m_store.users().grant(user, right, e); },
                    QStringLiteral("Right granted to %1: %2").arg(user, describe(right)), error);
}

bool SecurityAdministration::revoke(const QString& user, const Right& right, QString* error)
{
    return validRight(right, error) &&
           recorded([&](QString* e) { return m_store.users().revoke(user, right, e); },
                    QStringLiteral("Right revoked from %1: %2").arg(user, describe(right)), error);
}

bool SecurityAdministration::addRole(const QString& role, QString* error)
{
    return validName(role, error) && recorded([&](QString* e) { return m_store.users().addRole(role, e); },
                                              QStringLiteral("Role added: %1").arg(role), error);
}

bool SecurityAdministration::grantToRole(const QString& role, const Right& right, QString* error)
{
    return validRight(right, error) &&
           recorded([&](QString* e) { return m_store.users().grantToRole(role, right, e); },
                    QStringLiteral("Right granted to role %1: %2").arg(role, describe(right)), error);
}

bool SecurityAdministration::revokeFromRole(const QString& role, const Right& right, QString* error)
{
    return validRight(right, error) &&
           recorded([&](QString* e) { return m_store.users().revokeFromRole(role, right, e); },
                    QStringLiteral("Right revoked from role %1: %2").arg(role, describe(right)), error);
}

bool SecurityAdministration::assignRole(const QString& user, const QString& role, QString* error)
{
    return recorded([&](QString* e) { return m_store.users().assignRole(user, role, e); },
                    QStringLiteral("Role %1 given to %2").arg(role, user), error);
}

bool SecurityAdministration::unassignRole(const QString& user, const QString& role, QString* error)
{
    return recorded([&](QString* e) { return m_store.users().unassignRole(user, role, e); },
                    QStringLiteral("Role %1 taken from %2").arg(role, user), error);
}

bool SecurityAdministration::resealChainHead(QString* error)
{
    return m_store.audit().resealHead(
        m_actor, Area, QStringLiteral("Audit chain head sealed afresh by the administrator"), error);
}

} // namespace nebra
