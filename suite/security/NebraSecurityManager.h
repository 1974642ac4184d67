#pragma once

#include "Authenticator.h"
#include "DocumentSignature.h"
#include "IdleTimer.h"
#include "Messages.h"
#include "SecurityBackend.h"
#include "SecurityManagerOptions.h"
#include "UserStore.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QWidget;

namespace nebra {

class SecretBytes;
class SettingsStore;

// The suite's security manager: one session of one user at a time. It logs
// the user in with its own dialog, answers whether the user may perform an
// operation (area, operation), records audit entries, restarts the
// inactivity time-out on ResetTimeOut, and ends the session on log-out or
// when the time-out passes, raising UserLoggedOut (reason 0 time-out,
// 1 log-out). Log-ins, refusals, lockouts, log-outs, time-outs and password
// changes are recorded in the audit trail by the manager itself (area
// "Security").
//
// Its dialogs run through Dialogs::exec and its messages through Messages,
// parented to the owner window given.
class NebraSecurityManager : public QObject
{
    Q_OBJECT
public:
    enum LogOutReason
    {
        TimedOut = 0,
        LoggedOut = 1
    };
    static constexpr int MaxLogInAttempts = 3; // per LogIn call

    ~NebraSecurityManager() override;

    // Opens the security store that the "[Security]" settings name: the
    // embedded database, or the security server of the system-wide policy.
    // Null, with *error set to a sentence for the administrator, when it
    // cannot be opened or is not a security database, its site key or chain
    // head is missing or does not belong to it, or the server cannot be reached.
    static std::unique_ptr<NebraSecurityManager>
    create(const SettingsStore& settings, const SecurityManagerOptions& options, QString* error);

    // Ends the session without raising UserLoggedOut (the program is closing).
    void CloseSession();
    QString AuthenticationLibrary() const;
    // Shows the log-in dialog (again after a refusal, up to MaxLogInAttempts
    // times); true once a user is logged in. Cancel answers false.
    bool LogIn(QWidget* owner);
    bool PasswordChangeAllowed() const;
    // Committed to the disk before it returns true; false, with the failure
    // reported in a message box that starts with auditWriteFailureText(),
    // when it could not be committed (the caller must then not carry the
    // operation out).
    bool AddAuditTrailEntry(const QString& area, const QString& text);
    static QString auditWriteFailureText();
    // Ends the session and raises UserLoggedOut with reason 1.
    void SessionLogOut();
    QString UserName() const;
    // The user's full name, or "Local user" when none is recorded.
    QString UserDetail() const;
    void SessionChangePassword(QWidget* owner);
    // False without a session and for a disabled or locked account.
    bool IsOperationAllowed(const QString& area, const QString& operation) const;
    // Restarts the inactivity time-out and tells a store that ends idle
    // sessions itself that the user is at work.
    void ResetTimeOut();
    // Time left before the session times out; 0 without a session.
    qint64 TimeOutRemainingMs() const { return m_idle.remainingMs(); }
    // [Security] TimeOutWarningSeconds: 0 when the user is not warned.
    int TimeOutWarningSeconds() const;

    // The reviewer's reading of the audit trail (see SecurityBackend). Each
    // is refused (false with *error, or a failed verification) without a
    // session, or when the user lacks the right ReviewArea/ReviewOperation.
    // They show no message: the caller reports the error.
    static constexpr const char* ReviewArea = "Security";
    static constexpr const char* ReviewOperation = "ViewAuditTrail";
    bool CountAuditEntries(const AuditFilter& filter, qint64* count, QString* error) const;
    bool ReadAuditEntries(const AuditFilter& filter, const AuditOrder& order, qint64 offset, int limit,
                          QList<AuditEntry>* entries, QString* error) const;
    AuditVerification VerifyAuditTrail() const;
    // VerifyAuditTrail to be run later on any thread (one call at a time):
    // the right is checked now, the chain when the function is called, on a
    // connection of its own. It refers to nothing of the manager.
    std::function<AuditVerification()> AuditTrailVerifier() const;

    // The documents' fingerprints in the audit trail, written through a
    // connection of their own that the function returned opens in the
    // calling thread (see SecurityBackend), for the session's user; its
    // failures show no message: the caller reports them, once. Without a
    // session the function returned refuses.
    DocumentWriterFactory DocumentWriters() const;
    // Records the document's new fingerprint as reviewed, with the reason;
    // refused without the right (DocumentEntries::Area, AcceptOperation) or
    // without a reason.
    AuditAppendResult AcceptDocumentChange(const DocumentFingerprint& fingerprint, const QString& reason);

    // Electronic signatures. The meanings a signature may have: the site's
    // [Security] SignatureMeanings from the system-wide file only (default
    // SignatureEntries::DefaultMeanings), in their order.
    QStringList SignatureMeanings() const;
    // False until the session's user has signed once: the first signing of a
    // session asks for the user name and the password, later ones only the password.
    bool HasSignedInSession() const;
    // Signs the content fingerprint shows with meaning, as the session's user:
    // refused without a session, without the right (SignatureEntries::RightArea,
    // RightOperation), for a meaning outside SignatureMeanings(), for a user
    // name that is not the session's, for a user without a full name, and for
    // a wrong password, which counts like a failed log-in; when it locks the
    // account the session ends (UserLoggedOut) and result.locked is set. The
    // entry (area SignatureEntries::Area) and the signature's row are written
    // in one transaction. Shows no message: the caller reports result.error.
    SignResult SignDocument(const DocumentFingerprint& fingerprint, const QString& meaning,
                            const QString& userName, const SecretBytes& password);
    // Every signature of path, oldest first; false, with *error, when the
    // store cannot answer (no session: refused).
    bool ReadSignatures(const QString& path, QList<DocumentSignature>* signatures, QString* error) const;

Q_SIGNALS:
    void UserLoggedOut(const QString& userName, int reason);
    // The session will time out in TimeOutWarningSeconds() or less unless ResetTimeOut() is called.
    void TimeOutWarning();

private:
    NebraSecurityManager(std::unique_ptr<SecurityBackend> backend, const SecurityManagerOptions& options);

    bool beginSession(QWidget* owner, const UserRecord& user, const SecretBytes& password);
    void endSession(const QString& auditText);
    void timeOut();
    bool changePassword(QWidget* owner, const QString& userName, const SecretBytes* provenCurrent);
    QString problemWithChange(const QString& userName, const SecretBytes& current, bool currentProven,
                              const SecretBytes& fresh, const SecretBytes& confirmation, bool* locked);
    // Ends the store's session of the user and records why.
    void closeSession(const QString& userName, const QString& text);
    void tell(QWidget* owner, const QString& text, MessageIcon icon) const;
    // False, with *error, unless the session's user may review the audit trail.
    bool mayReview(QString* error) const;
    // Why the session's user may not sign with meaning as userName; empty when they may.
    QString refusalToSign(const QString& meaning, const QString& userName) const;

    std::unique_ptr<SecurityBackend> m_backend;
    IdleTimer m_idle;
    std::optional<UserRecord> m_user;
    QString m_lastUserName;
    bool m_signedInSession = false;
};

} // namespace nebra
