#pragma once

#include "AuditTrail.h"
#include "UserStore.h"

#include <QString>

namespace nebra {

class SecretBytes;
class SecurityStore;

enum class LogInStatus
{
    Success,  // password right, account usable
    Refused,  // unknown user, wrong password or altered record: not told apart
    Locked,   // the account is locked after failed log-ins (whatever password was typed)
    Disabled, // the account is disabled (whatever password was typed)
    Error,    // the database could not be used; see LogInResult::error
};

struct LogInResult
{
    LogInStatus status = LogInStatus::Refused;
    UserRecord user; // set for Success
    QString error;   // set for Error
};

// Checks a user name and password against the user store and records the
// outcome in the audit trail (area "Security"). An unknown user name is
// refused exactly like a wrong password, after the same hashing work, and
// recorded as a slow hash of what was typed (it may be a password typed into
// the wrong field, and every member of the site group holds the key): the
// label is that hashing work, so guessing it back costs what guessing a
// password does. Wrong passwords count against the account; at the
// lockout threshold the account locks, and stays locked, across restarts,
// until an administrator unlocks it. A locked or disabled account is refused
// without its password being checked, so the answer tells nothing about the
// password. The account's state is read, the failure counted and the entry
// recorded in one write transaction, so parallel attempts cannot slip past
// the lock. A successful log-in upgrades a hash made at a lower cost than
// the current one.
class Authenticator
{
public:
    static inline const QString Area = QStringLiteral("Security");

    explicit Authenticator(SecurityStore& store);

    LogInResult authenticate(const QString& userName, const SecretBytes& password);

    // Checks the current password of a logged-in user (to change it). A
    // wrong one counts like a failed log-in and may lock the account: then
    // *locked is set.
    bool checkCurrentPassword(const QString& userName, const SecretBytes& password, bool* locked,
                              QString* error);
    // The same check before a signature: a locked, disabled or altered
    // account is refused as well; a wrong password is recorded as refusal
    // and counts.
    bool checkSigningPassword(const QString& userName, const SecretBytes& password, bool* locked,
                              QString* error);

    // How an unknown user name is recorded: "unknown user #" and a short
    // Argon2id hash at the password hashes' cost, salted from the site key,
    // the same for the same name (in any case).
    QString unknownUserLabel(const QString& typedName) const;

private:
    struct Attempt;
    bool decide(Attempt& attempt, QList<AuditRecord>* records, QString* error);
    bool countFailure(const UserRecord& user, QList<AuditRecord>* records, bool* lockedNow, QString* error);
    // Records refusal and counts the failure, in one transaction.
    void refusePassword(const UserRecord& user, const QString& refusal, bool* locked, QString* error);

    SecurityStore& m_store;
};

} // namespace nebra
