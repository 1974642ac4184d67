#pragma once

#include "UserStore.h"

#include <QString>

namespace nebra {

class SecretBytes;
class SecurityStore;

enum class LogInStatus
{
    Success,  // password right, account usable
    Refused,  // unknown user or wrong password: the two are not told apart
    Locked,   // password right, but the account is locked after failed log-ins
    Disabled, // password right, but the account is disabled
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
// refused exactly like a wrong password, after the same hashing work.
// Wrong passwords count against the account; at the lockout threshold the
// account locks, and stays locked, across restarts, until an administrator
// unlocks it. A locked or disabled account is named as such only to
// someone who knows its password. A successful log-in upgrades a hash made
// at a lower cost than the current one.
class Authenticator
{
public:
    static inline const QString Area = QStringLiteral("Security");

    explicit Authenticator(SecurityStore& store);

    LogInResult authenticate(const QString& userName, const SecretBytes& password);

    // Checks the password of a known user without counting or recording anything.
    bool checkPassword(const QString& userName, const SecretBytes& password, QString* error) const;

private:
    LogInResult refuse(const QString& userName, const QString& auditText);
    LogInResult countFailure(const UserRecord& user);
    QString record(const QString& userName, const QString& text); // the error, if any

    SecurityStore& m_store;
};

} // namespace nebra
