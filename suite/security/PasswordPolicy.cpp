#include "PasswordPolicy.h"

#include "SecretBytes.h"

namespace nebra {

PasswordPolicy::PasswordPolicy(int minimumLength) : m_minimumLength(qMax(1, minimumLength)) {}

QString PasswordPolicy::check(const QString& userName, const SecretBytes& password) const
{
    const qsizetype length = password.characterCount();
    if (length == 0)
        return QStringLiteral("The password must not be empty.");
    if (length < m_minimumLength)
        return QStringLiteral("The password must be at least %1 characters long.").arg(m_minimumLength);
    if (length > MaximumLength)
        return QStringLiteral("The password must be at most %1 characters long.").arg(MaximumLength);
    if (password.equalsIgnoringCase(userName.trimmed()))
        return QStringLiteral("The password must not be the user name.");
    return {};
}

} // namespace nebra
