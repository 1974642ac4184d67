#pragma once

#include <QString>

namespace nebra {

class SecretBytes;

// The rules a new password must meet: at least the site's minimum length,
// at most MaximumLength characters (so that hashing cannot be made to take
// unbounded time), and not the user's own name.
class PasswordPolicy
{
public:
    static constexpr int MaximumLength = 256;

    explicit PasswordPolicy(int minimumLength);

    int minimumLength() const { return m_minimumLength; }

    // Empty when the password is acceptable; otherwise a sentence for the user.
    QString check(const QString& userName, const SecretBytes& password) const;

private:
    int m_minimumLength;
};

} // namespace nebra
