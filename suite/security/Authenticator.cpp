#include "Authenticator.h"

#include "SecretBytes.h"
#include "SecurityStore.h"

namespace nebra {

// One log-in attempt as it is decided inside the transaction.
struct Authenticator::Attempt
{
    QString typedName;
    QString unknownLabel; // worked out before the transaction, for a name that is no user's
    bool passwordRight = false;
    QByteArray checkedHash; // the hash the password was checked against
    LogInResult result;
};

Authenticator::Authenticator(SecurityStore& store) : m_store(store) {}

QString Authenticator::unknownUserLabel(const QString& typedName) const
{
    const QByteArray salt = m_store.key().mac(QByteArrayLiteral("nebra-unknown-user-salt-v2")).left(16);
    const QByteArray hash = m_store.hasher().derive(UserStore::nameKey(typedName).toUtf8(), salt);
    return QStringLiteral("unknown user #") +
           (hash.isEmpty() ? QStringLiteral("?") : QString::fromLatin1(hash.left(6).toHex()));
}

bool Authenticator::countFailure(const UserRecord& user, QList<AuditRecord>* records, bool* lockedNow,
                                 QString* error)
{
    const int threshold = m_store.settings().lockoutThreshold;
    if (!m_store.users().recordFailedLogIn(user.name, threshold, lockedNow, error))
        return false;
    records->append({user.name, Area, QStringLiteral("Failed log in: wrong password")});
    if (*lockedNow)
        records->append(
            {user.name, Area, QStringLiteral("Account locked after %1 failed log ins").arg(threshold)});
    return true;
}

// Runs inside the write transaction: the account is read afresh, so a lock
// set by a parallel attempt since the password was hashed is seen here.
bool Authenticator::decide(Attempt& attempt, QList<AuditRecord>* records, QString* error)
{
    const std::optional<UserRecord> user = m_store.users().find(attempt.typedName, error);
    if (!error->isEmpty())
        return false;
    auto refuse = [&](const QString& name, const QString& text, LogInStatus status) {
        records->append({name, Area, text});
        attempt.result = {status, {}, {}};
        return true;
    };
    if (!user)
        return refuse(attempt.unknownLabel.isEmpty() ? unknownUserLabel(attempt.typedName)
                                                     : attempt.unknownLabel,
                      QStringLiteral("Failed log in: unknown user"), LogInStatus::Refused);
    if (user->passwordHash.isEmpty())
        return refuse(user->name, QStringLiteral("Failed log in: no password set"), LogInStatus::Refused);
    if (!user->intact)
        return refuse(user->name, QStringLiteral("Log in refused: the account's record has been altered"),
                      LogInStatus::Refused);
    if (user->locked)
        return refuse(user->name, QStringLiteral("Log in refused: account locked"), LogInStatus::Locked);
    if (user->disabled)
        return refuse(user->name, QStringLiteral("Log in refused: account disabled"), LogInStatus::Disabled);
    if (!attempt.passwordRight || user->passwordHash != attempt.checkedHash) {
        bool lockedNow = false;
        attempt.result = {LogInStatus::Refused, {}, {}};
        return countFailure(*user, records, &lockedNow, error);
    }
    if (user->failedLogIns > 0 && !m_store.users().resetFailedLogIns(user->name, error))
        return false;
    // A session that the audit trail does not know of must not begin: the
    // entry commits with the decision or the log-in fails.
    records->append({user->name, Area, QStringLiteral("Log in")});
    attempt.result = {LogInStatus::Success, *user, {}};
    attempt.result.user.failedLogIns = 0;
    return true;
}

LogInResult Authenticator::authenticate(const QString& userName, const SecretBytes& password)
{
    const PasswordHasher& hasher = m_store.hasher();
    hasher.prepareDummy();
    QString error;
    const std::optional<UserRecord> user = m_store.users().find(userName, &error);
    if (!error.isEmpty())
        return {LogInStatus::Error, {}, error};
    Attempt attempt{userName, {}, false, {}, {}};
    // The hash is checked outside the transaction (it takes a while); every
    // account that will be refused anyway costs the same work instead: the
    // label of a name that is no user's, or a dummy check.
    if (user && !user->passwordHash.isEmpty() && user->intact && !user->locked && !user->disabled) {
        attempt.checkedHash = user->passwordHash;
        attempt.passwordRight = hasher.verify(user->passwordHash, password);
    } else if (!user) {
        attempt.unknownLabel = unknownUserLabel(userName);
    } else {
        hasher.verifyDummy(password);
    }
    const AuditAppendResult recorded = m_store.audit().record(
        [&](QList<AuditRecord>* records, QString* why) { return decide(attempt, records, why); });
    if (recorded.sequence == 0)
        return {LogInStatus::Error, {}, recorded.error};
    if (attempt.result.status == LogInStatus::Success && hasher.needsRehash(attempt.checkedHash)) {
        // A change of its own, recorded in the store's count of changes like any other.
        const QByteArray upgraded = hasher.hash(password);
        const QString name = attempt.result.user.name;
        const bool mustChange = attempt.result.user.mustChangePassword;
        if (!upgraded.isEmpty() && m_store.audit()
                                       .record([&](QList<AuditRecord>*, QString* why) {
                                           return m_store.users().setPasswordHash(name, upgraded, mustChange,
                                                                                  why);
                                       })
                                       .error.isEmpty())
            attempt.result.user.passwordHash = upgraded;
    }
    return attempt.result;
}

bool Authenticator::checkCurrentPassword(const QString& userName, const SecretBytes& password, bool* locked,
                                         QString* error)
{
    *locked = false;
    const std::optional<UserRecord> user = m_store.users().find(userName, error);
    if (!user)
        return false;
    if (user->intact && !user->passwordHash.isEmpty() &&
        m_store.hasher().verify(user->passwordHash, password))
        return true;
    refusePassword(*user, QStringLiteral("Password change refused: current password incorrect"), locked,
                   error);
    return false;
}

bool Authenticator::checkSigningPassword(const QString& userName, const SecretBytes& password, bool* locked,
                                         QString* error)
{
    *locked = false;
    const std::optional<UserRecord> user = m_store.users().find(userName, error);
    if (!user)
        return false;
    // A lock set at another workstation since the log-in holds here too.
    if (user->locked || user->disabled || !user->intact) {
        *error = QStringLiteral("Your account cannot sign now (it is locked, disabled or altered). Ask your "
                                "security administrator.");
        return false;
    }
    if (!user->passwordHash.isEmpty() && m_store.hasher().verify(user->passwordHash, password))
        return true;
    refusePassword(*user, QStringLiteral("Signing refused: password incorrect"), locked, error);
    return false;
}

void Authenticator::refusePassword(const UserRecord& user, const QString& refusal, bool* locked,
                                   QString* error)
{
    bool lockedNow = false;
    const AuditAppendResult recorded = m_store.audit().record([&](QList<AuditRecord>* records, QString* why) {
        records->append({user.name, Area, refusal});
        QList<AuditRecord> counted;
        if (!countFailure(user, &counted, &lockedNow, why))
            return false;
        records->append(counted.mid(1)); // the lock, when this failure set it
        return true;
    });
    if (recorded.sequence == 0 && error->isEmpty())
        *error = recorded.error;
    *locked = lockedNow;
}

} // namespace nebra
