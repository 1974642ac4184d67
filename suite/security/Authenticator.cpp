#include "Authenticator.h"

#include "SecretBytes.h"
#include "SecurityStore.h"

namespace nebra {

namespace {
// Keeps what is recorded for a mistyped name short; it may hold a password typed into the wrong field.
QString shortened(const QString& name)
{
    return name.size() > 64 ? name.left(64) + QStringLiteral("...") : name;
}
} // namespace

Authenticator::Authenticator(SecurityStore& store) : m_store(store) {}

QString Authenticator::record(const QString& userName, const QString& text)
{
    return m_store.audit().append(userName, Area, text).error;
}

LogInResult Authenticator::refuse(const QString& userName, const QString& auditText)
{
    record(userName, auditText);
    return {LogInStatus::Refused, {}, {}};
}

LogInResult Authenticator::countFailure(const UserRecord& user)
{
    bool lockedNow = false;
    QString error;
    if (!m_store.users().recordFailedLogIn(user.name, m_store.settings().lockoutThreshold, &lockedNow,
                                           &error))
        return {LogInStatus::Error, {}, error};
    record(user.name, QStringLiteral("Failed log in: wrong password"));
    if (lockedNow)
        record(user.name, QStringLiteral("Account locked after %1 failed log ins")
                              .arg(m_store.settings().lockoutThreshold));
    return {LogInStatus::Refused, {}, {}};
}

LogInResult Authenticator::authenticate(const QString& userName, const SecretBytes& password)
{
    const PasswordHasher& hasher = m_store.hasher();
    hasher.prepareDummy();
    QString error;
    const std::optional<UserRecord> user = m_store.users().find(userName, &error);
    if (!error.isEmpty())
        return {LogInStatus::Error, {}, error};
    if (!user || user->passwordHash.isEmpty()) {
        hasher.verifyDummy(password);
        return refuse(shortened(userName), user ? QStringLiteral("Failed log in: no password set")
                                                : QStringLiteral("Failed log in: unknown user"));
    }
    const bool passwordRight = hasher.verify(user->passwordHash, password);
    if (user->locked) {
        record(user->name, QStringLiteral("Log in refused: account locked"));
        return {passwordRight ? LogInStatus::Locked : LogInStatus::Refused, {}, {}};
    }
    if (user->disabled) {
        record(user->name, QStringLiteral("Log in refused: account disabled"));
        return {passwordRight ? LogInStatus::Disabled : LogInStatus::Refused, {}, {}};
    }
    if (!passwordRight)
        return countFailure(*user);
    if (user->failedLogIns > 0 && !m_store.users().resetFailedLogIns(user->name, &error))
        return {LogInStatus::Error, {}, error};
    UserRecord result = *user;
    if (hasher.needsRehash(user->passwordHash)) {
        const QByteArray upgraded = hasher.hash(password);
        if (!upgraded.isEmpty() &&
            m_store.users().setPasswordHash(user->name, upgraded, user->mustChangePassword, &error))
            result.passwordHash = upgraded;
    }
    // A session that the audit trail does not know of must not begin. (A
    // refusal that cannot be recorded is still a refusal.)
    error = record(user->name, QStringLiteral("Log in"));
    if (!error.isEmpty())
        return {LogInStatus::Error, {}, error};
    result.failedLogIns = 0;
    return {LogInStatus::Success, result, {}};
}

bool Authenticator::checkPassword(const QString& userName, const SecretBytes& password, QString* error) const
{
    const std::optional<UserRecord> user = m_store.users().find(userName, error);
    return user && !user->passwordHash.isEmpty() && m_store.hasher().verify(user->passwordHash, password);
}

} // namespace nebra
