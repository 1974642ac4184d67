#include "NebraSecurityManager.h"

#include "ChangePasswordDialog.h"
#include "Dialogs.h"
#include "LogInDialog.h"
#include "SecretBytes.h"
#include "SecurityStore.h"
#include "SettingsStore.h"

#include <QWidget>

namespace nebra {

namespace {
const QString Title = QStringLiteral("Security Manager");
} // namespace

NebraSecurityManager::NebraSecurityManager(std::unique_ptr<SecurityStore> store,
                                           const SecurityManagerOptions& options)
    : m_store(std::move(store)), m_authenticator(*m_store), m_idle(options.clock, options.pollIntervalMs)
{
    connect(&m_idle, &IdleTimer::expired, this, &NebraSecurityManager::timeOut);
}

NebraSecurityManager::~NebraSecurityManager() = default;

std::unique_ptr<NebraSecurityManager> NebraSecurityManager::create(const SettingsStore& settings,
                                                                   const SecurityManagerOptions& options,
                                                                   QString* error)
{
    std::unique_ptr<SecurityStore> store = SecurityStore::open(SecuritySettings::fromStore(settings), error);
    if (!store)
        return nullptr;
    return std::unique_ptr<NebraSecurityManager>(new NebraSecurityManager(std::move(store), options));
}

void NebraSecurityManager::tell(QWidget* owner, const QString& text, MessageIcon icon) const
{
    Messages::show({text, Title, icon, MessageButton::Ok, MessageButton::Ok, owner});
}

void NebraSecurityManager::record(const QString& userName, const QString& text)
{
    const AuditAppendResult result = m_store->audit().append(userName, Authenticator::Area, text);
    if (!result.error.isEmpty())
        tell(nullptr, result.error, MessageIcon::Critical);
}

QString NebraSecurityManager::AuthenticationLibrary() const
{
    return m_store->settings().authenticationLibrary;
}

bool NebraSecurityManager::PasswordChangeAllowed() const
{
    // Under the group library the operating system keeps the passwords.
    return AuthenticationLibrary() != QLatin1String(SecuritySettings::GroupLibrary);
}

bool NebraSecurityManager::LogIn(QWidget* owner)
{
    if (m_user)
        return true;
    LogInDialog dialog(owner);
    dialog.setUserName(m_lastUserName);
    for (int attempt = 0; attempt < MaxLogInAttempts; ++attempt) {
        if (Dialogs::exec(dialog) != QDialog::Accepted)
            return false;
        const QString name = dialog.userName().trimmed();
        const SecretBytes password = dialog.takePassword();
        if (name.isEmpty() || password.isEmpty()) {
            tell(owner, QStringLiteral("Enter your user name and your password."), MessageIcon::Warning);
            continue;
        }
        m_lastUserName = name;
        const LogInResult result = m_authenticator.authenticate(name, password);
        switch (result.status) {
        case LogInStatus::Success:
            return beginSession(owner, result.user, password);
        case LogInStatus::Refused:
            tell(owner, QStringLiteral("The user name or password is incorrect."), MessageIcon::Warning);
            break;
        case LogInStatus::Locked:
            tell(owner,
                 QStringLiteral("Your account is locked after too many failed log ins. "
                                "Ask your security administrator to unlock it."),
                 MessageIcon::Warning);
            return false;
        case LogInStatus::Disabled:
            tell(owner, QStringLiteral("Your account is disabled. Ask your security administrator."),
                 MessageIcon::Warning);
            return false;
        case LogInStatus::Error:
            tell(owner, QStringLiteral("The security database cannot be used.\n\n%1").arg(result.error),
                 MessageIcon::Critical);
            return false;
        }
    }
    return false;
}

bool NebraSecurityManager::beginSession(QWidget* owner, const UserRecord& user, const SecretBytes& password)
{
    if (user.mustChangePassword && !changePassword(owner, user.name, &password)) {
        record(user.name, QStringLiteral("Log in abandoned: the password had to be changed first"));
        return false;
    }
    m_user = user;
    m_idle.start(qint64(m_store->settings().timeOutMinutes) * 60 * 1000);
    return true;
}

void NebraSecurityManager::endSession(const QString& auditText)
{
    m_idle.stop();
    const QString name = m_user->name;
    m_user.reset();
    record(name, auditText);
}

void NebraSecurityManager::CloseSession()
{
    if (m_user)
        endSession(QStringLiteral("Session closed"));
}

void NebraSecurityManager::SessionLogOut()
{
    if (!m_user)
        return;
    const QString name = m_user->name;
    endSession(QStringLiteral("Log out"));
    Q_EMIT UserLoggedOut(name, LoggedOut);
}

void NebraSecurityManager::timeOut()
{
    if (!m_user)
        return;
    const QString name = m_user->name;
    endSession(QStringLiteral("Session timed out after %1 minutes without activity")
                   .arg(m_store->settings().timeOutMinutes));
    Q_EMIT UserLoggedOut(name, TimedOut);
}

bool NebraSecurityManager::AddAuditTrailEntry(const QString& area, const QString& text)
{
    const AuditAppendResult result = m_store->audit().append(m_user ? m_user->name : QString(), area, text);
    if (!result.error.isEmpty())
        tell(nullptr, result.error, MessageIcon::Critical);
    return result.sequence > 0;
}

QString NebraSecurityManager::UserName() const
{
    return m_user ? m_user->name : QString();
}

QString NebraSecurityManager::UserDetail() const
{
    if (!m_user)
        return {};
    return m_user->fullName.trimmed().isEmpty() ? QStringLiteral("Local user") : m_user->fullName.trimmed();
}

bool NebraSecurityManager::IsOperationAllowed(const QString& area, const QString& operation) const
{
    if (!m_user)
        return false;
    QString error;
    const bool allowed = m_store->users().isOperationAllowed(m_user->name, area, operation, &error);
    if (!error.isEmpty())
        tell(nullptr, QStringLiteral("The security database cannot be read.\n\n%1").arg(error),
             MessageIcon::Critical);
    return allowed && error.isEmpty();
}

void NebraSecurityManager::ResetTimeOut()
{
    m_idle.reset();
}

void NebraSecurityManager::SessionChangePassword(QWidget* owner)
{
    if (!m_user)
        return;
    // A copy: a change that locks the account ends the session, which frees m_user.
    const QString userName = m_user->name;
    changePassword(owner, userName, nullptr);
}

bool NebraSecurityManager::changePassword(QWidget* owner, const QString& userName,
                                          const SecretBytes* provenCurrent)
{
    ChangePasswordDialog dialog(owner, userName, m_store->policy().minimumLength(), provenCurrent != nullptr);
    for (int attempt = 0; attempt < MaxLogInAttempts; ++attempt) {
        if (Dialogs::exec(dialog) != QDialog::Accepted)
            return false;
        SecretBytes typedCurrent = dialog.takeCurrentPassword();
        const SecretBytes& current = provenCurrent ? *provenCurrent : typedCurrent;
        const SecretBytes fresh = dialog.takeNewPassword();
        const SecretBytes confirmation = dialog.takeConfirmation();
        bool locked = false;
        QString problem =
            problemWithChange(userName, current, provenCurrent != nullptr, fresh, confirmation, &locked);
        if (problem.isEmpty() && storeNewPassword(userName, fresh, &problem)) {
            tell(owner, QStringLiteral("Your password has been changed."), MessageIcon::Information);
            return true;
        }
        tell(owner, problem, MessageIcon::Warning);
        if (locked) {
            // Guessing the current password in an unattended session locks the
            // account like guessing at the log-in does, and ends the session.
            if (m_user && provenCurrent == nullptr) {
                endSession(QStringLiteral("Session ended: the account was locked"));
                Q_EMIT UserLoggedOut(userName, LoggedOut);
            }
            return false;
        }
    }
    return false;
}

QString NebraSecurityManager::problemWithChange(const QString& userName, const SecretBytes& current,
                                                bool currentProven, const SecretBytes& fresh,
                                                const SecretBytes& confirmation, bool* locked)
{
    if (!(fresh == confirmation))
        return QStringLiteral("The new password and its confirmation do not match.");
    QString error;
    if (!currentProven && !m_authenticator.checkCurrentPassword(userName, current, locked, &error))
        return error.isEmpty() ? QStringLiteral("The current password is incorrect.") : error;
    const QString policy = m_store->policy().check(userName, fresh);
    if (!policy.isEmpty())
        return policy;
    if (fresh == current)
        return QStringLiteral("The new password must differ from the current one.");
    return {};
}

bool NebraSecurityManager::storeNewPassword(const QString& userName, const SecretBytes& fresh, QString* error)
{
    const QByteArray hash = m_store->hasher().hash(fresh);
    if (hash.isEmpty()) {
        *error = QStringLiteral("The password could not be hashed (not enough memory).");
        return false;
    }
    if (!m_store->users().setPasswordHash(userName, hash, false, error))
        return false;
    const AuditAppendResult result =
        m_store->audit().append(userName, Authenticator::Area, QStringLiteral("Password changed"));
    *error = result.error;
    return result.sequence > 0;
}

} // namespace nebra
