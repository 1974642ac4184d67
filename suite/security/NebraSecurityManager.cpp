#include "NebraSecurityManager.h"

#include "ChangePasswordDialog.h"
#include "Dialogs.h"
#include "EmbeddedSecurityBackend.h"
#include "LogInDialog.h"
#include "SecretBytes.h"
#include "SecurityStore.h"
#include "ServerSecurityBackend.h"
#include "SettingsStore.h"

#include <QWidget>

namespace nebra {

namespace {
const QString Title = QStringLiteral("Security Manager");
} // namespace

NebraSecurityManager::NebraSecurityManager(std::unique_ptr<SecurityBackend> backend,
                                           const SecurityManagerOptions& options)
    : m_backend(std::move(backend)), m_idle(options.clock, options.pollIntervalMs)
{
    connect(&m_idle, &IdleTimer::expired, this, &NebraSecurityManager::timeOut);
    connect(&m_idle, &IdleTimer::warning, this, &NebraSecurityManager::TimeOutWarning);
}

NebraSecurityManager::~NebraSecurityManager() = default;

std::unique_ptr<NebraSecurityManager> NebraSecurityManager::create(const SettingsStore& settings,
                                                                   const SecurityManagerOptions& options,
                                                                   QString* error)
{
    const SecuritySettings securitySettings = SecuritySettings::fromStore(settings);
    std::unique_ptr<SecurityBackend> backend;
    if (securitySettings.backend == SecuritySettings::Backend::Server) {
        backend = ServerSecurityBackend::open(securitySettings, error, options.clock);
    } else if (std::unique_ptr<SecurityStore> store = SecurityStore::open(securitySettings, error)) {
        backend = std::make_unique<EmbeddedSecurityBackend>(std::move(store));
    }
    if (!backend)
        return nullptr;
    return std::unique_ptr<NebraSecurityManager>(new NebraSecurityManager(std::move(backend), options));
}

void NebraSecurityManager::tell(QWidget* owner, const QString& text, MessageIcon icon) const
{
    Messages::show({text, Title, icon, MessageButton::Ok, MessageButton::Ok, owner});
}

void NebraSecurityManager::closeSession(const QString& userName, const QString& text)
{
    const AuditAppendResult result = m_backend->endSession(userName, text);
    if (!result.error.isEmpty())
        tell(nullptr, result.error, MessageIcon::Critical);
}

QString NebraSecurityManager::auditWriteFailureText()
{
    return QStringLiteral("The audit trail could not be written, so the operation has not been carried out.");
}

QString NebraSecurityManager::AuthenticationLibrary() const
{
    return m_backend->settings().authenticationLibrary;
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
        const LogInResult result = m_backend->logIn(name, password);
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
        closeSession(user.name, QStringLiteral("Log in abandoned: the password had to be changed first"));
        return false;
    }
    m_user = user;
    m_idle.setWarningMs(qint64(TimeOutWarningSeconds()) * 1000);
    m_idle.start(qint64(m_backend->settings().timeOutMinutes) * 60 * 1000);
    return true;
}

void NebraSecurityManager::endSession(const QString& auditText)
{
    m_idle.stop();
    const QString name = m_user->name;
    m_user.reset();
    m_signedInSession = false;
    closeSession(name, auditText);
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
                   .arg(m_backend->settings().timeOutMinutes));
    Q_EMIT UserLoggedOut(name, TimedOut);
}

bool NebraSecurityManager::AddAuditTrailEntry(const QString& area, const QString& text)
{
    const AuditAppendResult result = m_backend->append(m_user ? m_user->name : QString(), area, text);
    if (result.sequence > 0) {
        // Committed; only the chain head lags, which the next entry or verify repairs.
        if (!result.error.isEmpty())
            tell(nullptr, result.error, MessageIcon::Critical);
        return true;
    }
    tell(nullptr, auditWriteFailureText() + QStringLiteral("\n\n") + result.error, MessageIcon::Critical);
    return false;
}

DocumentWriterFactory NebraSecurityManager::DocumentWriters() const
{
    if (!m_user)
        return [](QString* error) -> std::optional<DocumentWriter> {
            *error = QStringLiteral("No user is logged in.");
            return std::nullopt;
        };
    return m_backend->documentWriter(m_user->name);
}

AuditAppendResult NebraSecurityManager::AcceptDocumentChange(const DocumentFingerprint& fingerprint,
                                                             const QString& reason)
{
    QString error;
    if (!m_user ||
        !m_backend->isOperationAllowed(m_user->name, QString::fromLatin1(DocumentEntries::Area),
                                       QString::fromLatin1(DocumentEntries::AcceptOperation), &error))
        return {0, error.isEmpty()
                       ? QStringLiteral("You do not have the right to accept changes of documents.")
                       : error};
    if (reason.trimmed().isEmpty())
        return {0, QStringLiteral("Give the reason for accepting the change.")};
    return m_backend->recordDocument(m_user->name,
                                     {DocumentEvent::Accepted, fingerprint, {}, {}, reason.trimmed()});
}

QStringList NebraSecurityManager::SignatureMeanings() const
{
    return m_backend->settings().signatureMeanings;
}

bool NebraSecurityManager::HasSignedInSession() const
{
    return m_user && m_signedInSession;
}

SignResult NebraSecurityManager::SignDocument(const DocumentFingerprint& fingerprint, const QString& meaning,
                                              const QString& userName, const SecretBytes& password)
{
    SignResult result;
    result.error = refusalToSign(meaning, userName);
    if (!result.error.isEmpty())
        return result;
    // A copy: a wrong password that locks the account ends the session, which frees m_user.
    const QString name = m_user->name;
    DocumentSignature signature;
    signature.path = fingerprint.path;
    signature.sha256 = fingerprint.sha256;
    signature.meaning = meaning;
    result = m_backend->signDocument(name, password, signature);
    if (result.sequence > 0) {
        m_signedInSession = true;
    } else if (result.locked) {
        // Guessing the password at a signature locks the account like guessing
        // at the log-in does, and ends the session (as Change Password does).
        endSession(QStringLiteral("Session ended: the account was locked"));
        Q_EMIT UserLoggedOut(name, LoggedOut);
    }
    return result;
}

QString NebraSecurityManager::refusalToSign(const QString& meaning, const QString& userName) const
{
    if (!m_user)
        return QStringLiteral("No user is logged in.");
    QString error;
    if (!m_backend->isOperationAllowed(m_user->name, QLatin1String(SignatureEntries::RightArea),
                                       QLatin1String(SignatureEntries::RightOperation), &error))
        return error.isEmpty() ? QStringLiteral("You do not have the right to sign documents.")
                               : QStringLiteral("The security database cannot be read.\n\n%1").arg(error);
    if (!SignatureMeanings().contains(meaning))
        return QStringLiteral("\"%1\" is not a meaning of a signature at this site: choose one of %2.")
            .arg(meaning, SignatureMeanings().join(QStringLiteral(", ")));
    // Only the session's user signs in it: the name typed proves who is at the keyboard.
    if (UserStore::nameKey(userName.trimmed()) != UserStore::nameKey(m_user->name))
        return QStringLiteral("Sign with the user name of the session (%1).").arg(m_user->name);
    return {};
}

bool NebraSecurityManager::ReadSignatures(const QString& path, QList<DocumentSignature>* signatures,
                                          QString* error) const
{
    signatures->clear();
    if (!m_user) {
        *error = QStringLiteral("No user is logged in.");
        return false;
    }
    return m_backend->readSignatures(path, signatures, error);
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
    const bool allowed = m_backend->isOperationAllowed(m_user->name, area, operation, &error);
    if (!error.isEmpty())
        tell(nullptr, QStringLiteral("The security database cannot be read.\n\n%1").arg(error),
             MessageIcon::Critical);
    return allowed && error.isEmpty();
}

void NebraSecurityManager::ResetTimeOut()
{
    if (!m_user)
        return;
    m_idle.reset();
    // A store that ends idle sessions itself learns that the user is at
    // work; one that has ended the session already ends it here too, as a
    // time-out, once the command that reset the timer has run.
    QString ended;
    if (!m_backend->keepAlive(&ended))
        QMetaObject::invokeMethod(this, &NebraSecurityManager::timeOut, Qt::QueuedConnection);
}

int NebraSecurityManager::TimeOutWarningSeconds() const
{
    return m_backend->settings().timeOutWarningSeconds;
}

bool NebraSecurityManager::mayReview(QString* error) const
{
    if (!m_user) {
        *error = QStringLiteral("No user is logged in.");
        return false;
    }
    QString why;
    if (m_backend->isOperationAllowed(m_user->name, QLatin1String(ReviewArea), QLatin1String(ReviewOperation),
                                      &why) &&
        why.isEmpty())
        return true;
    *error = why.isEmpty() ? QStringLiteral("You do not have the right to view the audit trail.")
                           : QStringLiteral("The security database cannot be read.\n\n%1").arg(why);
    return false;
}

bool NebraSecurityManager::CountAuditEntries(const AuditFilter& filter, qint64* count, QString* error) const
{
    return mayReview(error) && m_backend->countAuditEntries(filter, count, error);
}

bool NebraSecurityManager::ReadAuditEntries(const AuditFilter& filter, const AuditOrder& order, qint64 offset,
                                            int limit, QList<AuditEntry>* entries, QString* error) const
{
    entries->clear();
    return mayReview(error) && m_backend->readAuditEntries(filter, order, offset, limit, entries, error);
}

AuditVerification NebraSecurityManager::VerifyAuditTrail() const
{
    QString error;
    if (!mayReview(&error))
        return {false, 0, 0, error, {}};
    return m_backend->verifyAuditTrail();
}

std::function<AuditVerification()> NebraSecurityManager::AuditTrailVerifier() const
{
    QString error;
    if (!mayReview(&error))
        return [error] { return AuditVerification{false, 0, 0, error, {}}; };
    return m_backend->auditTrailVerifier();
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
    ChangePasswordDialog dialog(owner, userName, m_backend->policy().minimumLength(),
                                provenCurrent != nullptr);
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
        if (problem.isEmpty() && m_backend->storeNewPassword(userName, current, fresh, &problem)) {
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
    if (!currentProven && !m_backend->checkCurrentPassword(userName, current, locked, &error))
        return error.isEmpty() ? QStringLiteral("The current password is incorrect.") : error;
    const QString policy = m_backend->policy().check(userName, fresh);
    if (!policy.isEmpty())
        return policy;
    if (fresh == current)
        return QStringLiteral("The new password must differ from the current one.");
    return {};
}

} // namespace nebra
