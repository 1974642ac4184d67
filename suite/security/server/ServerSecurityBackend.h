#pragma once

#include "IdleTimer.h"
#include "SecurityBackend.h"

#include <functional>
#include <memory>

namespace nebra {

class ServerConnection;
class ServerSession;

// The security store on a database server that the lab's workstations
// share. The server decides log-ins, rights and lockouts, ends sessions left
// unused for the site's idle time-out and writes the audit trail; this side
// holds only the session token of the user logged in, and takes the idle
// time-out and the password rules from the server at log-in, so that its
// own timer and dialogs agree with it. When the connection is lost, every check refuses and every entry is
// refused with the reason; each later call first tries once to connect
// again (bounded by the connection time-out), so the session carries on
// when the server is back. A call that may have been committed is never
// sent twice.
class ServerSecurityBackend : public SecurityBackend
{
public:
    ~ServerSecurityBackend() override;

    // Null, with *error set, when the settings are unusable or the server
    // cannot be reached. The clock (empty: the boot-time clock) spaces the
    // keep-alives.
    static std::unique_ptr<ServerSecurityBackend> open(const SecuritySettings& settings, QString* error,
                                                       IdleTimer::Clock clock = {});

    const SecuritySettings& settings() const override { return m_settings; }
    const PasswordPolicy& policy() const override { return m_policy; }
    LogInResult logIn(const QString& userName, const SecretBytes& password) override;
    bool isOperationAllowed(const QString& userName, const QString& area, const QString& operation,
                            QString* error) override;
    AuditAppendResult append(const QString& userName, const QString& area, const QString& text) override;
    bool checkCurrentPassword(const QString& userName, const SecretBytes& password, bool* locked,
                              QString* error) override;
    bool storeNewPassword(const QString& userName, const SecretBytes& current, const SecretBytes& fresh,
                          QString* error) override;
    AuditAppendResult endSession(const QString& userName, const QString& text) override;
    // Marks the session used on the server, at most once per KeepAliveSeconds.
    bool keepAlive(QString* error) override;
    bool countAuditEntries(const AuditFilter& filter, qint64* count, QString* error) override;
    bool readAuditEntries(const AuditFilter& filter, const AuditOrder& order, qint64 offset, int limit,
                          QList<AuditEntry>* entries, QString* error) override;
    AuditAppendResult recordDocument(const QString& userName, const DocumentChange& change) override;
    DocumentWriterFactory documentWriter(const QString& userName) override;
    SignResult signDocument(const QString& userName, const SecretBytes& password,
                            const DocumentSignature& signature) override;
    bool readSignatures(const QString& path, QList<DocumentSignature>* signatures, QString* error) override;
    AuditVerification verifyAuditTrail() override;
    std::function<AuditVerification()> auditTrailVerifier() override;

    // How often the user's activity is told to the server: the server may
    // end a session this much earlier than the workstation's own timer.
    static constexpr int KeepAliveSeconds = 30;

private:
    ServerSecurityBackend(const SecuritySettings& settings, std::unique_ptr<ServerConnection> connection,
                          IdleTimer::Clock clock);
    void contacted();
    bool connected(QString* error);
    // Runs a call that changes nothing on the server for the session's
    // token, once more after connecting anew when the connection was lost.
    bool reading(const std::function<bool(QString*)>& call, QString* error);

    SecuritySettings m_settings;
    PasswordPolicy m_policy;
    std::unique_ptr<ServerConnection> m_connection;
    std::unique_ptr<ServerSession> m_session;
    QString m_token;
    IdleTimer::Clock m_clock;
    qint64 m_lastContact = 0; // when the server last saw the token, on m_clock
};

} // namespace nebra
