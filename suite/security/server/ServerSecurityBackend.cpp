#include "ServerSecurityBackend.h"

#include "SecretBytes.h"
#include "ServerConnection.h"
#include "ServerSession.h"

namespace nebra {

namespace {

QString notRecorded(const QString& why)
{
    return QStringLiteral("The audit trail entry could not be recorded (%1).").arg(why);
}

} // namespace

ServerSecurityBackend::ServerSecurityBackend(const SecuritySettings& settings,
                                             std::unique_ptr<ServerConnection> connection,
                                             IdleTimer::Clock clock)
    : m_settings(settings), m_policy(settings.passwordMinimumLength), m_connection(std::move(connection)),
      m_session(std::make_unique<ServerSession>(*m_connection, AuditTrail::workstationName())),
      m_clock(clock ? std::move(clock) : IdleTimer::bootClock())
{
}

void ServerSecurityBackend::contacted()
{
    m_lastContact = m_clock();
}

ServerSecurityBackend::~ServerSecurityBackend() = default;

std::unique_ptr<ServerSecurityBackend> ServerSecurityBackend::open(const SecuritySettings& settings,
                                                                   QString* error, IdleTimer::Clock clock)
{
    if (!settings.policyError.isEmpty()) {
        *error = settings.policyError;
        return nullptr;
    }
    std::unique_ptr<ServerConnection> connection = ServerConnection::open(settings.server, error);
    if (!connection)
        return nullptr;
    return std::unique_ptr<ServerSecurityBackend>(
        new ServerSecurityBackend(settings, std::move(connection), std::move(clock)));
}

bool ServerSecurityBackend::connected(QString* error)
{
    return !m_connection->lostConnection() || m_connection->reconnect(error);
}

LogInResult ServerSecurityBackend::logIn(const QString& userName, const SecretBytes& password)
{
    LogInResult result;
    if (!connected(&result.error)) {
        result.status = LogInStatus::Error;
        return result;
    }
    const ServerLogIn in = m_session->logIn(userName, password);
    result.status = in.status;
    result.error = in.error;
    if (in.status == LogInStatus::Success) {
        m_token = in.token;
        contacted();
        // The server ends idle sessions and checks new passwords by these.
        if (in.idleMinutes > 0)
            m_settings.timeOutMinutes = in.idleMinutes;
        if (in.passwordMinimumLength > 0)
            m_policy = PasswordPolicy(in.passwordMinimumLength);
        result.user.name = in.userName;
        result.user.fullName = in.fullName;
        result.user.mustChangePassword = in.mustChangePassword;
    }
    return result;
}

bool ServerSecurityBackend::isOperationAllowed(const QString&, const QString& area, const QString& operation,
                                               QString* error)
{
    if (m_token.isEmpty() || !connected(error))
        return false;
    std::optional<bool> allowed = m_session->isAllowed(m_token, area, operation, error);
    // A check changes no right on the server, so it may be asked again once connected anew.
    if (!allowed && m_connection->lostConnection() && m_connection->reconnect(error)) {
        error->clear();
        allowed = m_session->isAllowed(m_token, area, operation, error);
    }
    if (allowed)
        contacted();
    return allowed.value_or(false);
}

AuditAppendResult ServerSecurityBackend::append(const QString&, const QString& area, const QString& text)
{
    AuditAppendResult result;
    QString error;
    if (m_token.isEmpty())
        error = QStringLiteral("no user is logged in");
    else if (connected(&error))
        result.sequence = m_session->record(m_token, area, text, &error);
    if (result.sequence == 0)
        result.error = notRecorded(error);
    else
        contacted();
    return result;
}

bool ServerSecurityBackend::checkCurrentPassword(const QString&, const SecretBytes& password, bool* locked,
                                                 QString* error)
{
    if (!connected(error))
        return false;
    const ServerPasswordChange outcome = m_session->checkPassword(m_token, password, error);
    *locked = outcome == ServerPasswordChange::Locked;
    if (*locked)
        m_token.clear(); // the server ended the session with the lock
    return outcome == ServerPasswordChange::Changed;
}

bool ServerSecurityBackend::storeNewPassword(const QString&, const SecretBytes& current,
                                             const SecretBytes& fresh, QString* error)
{
    if (!connected(error))
        return false;
    switch (m_session->changePassword(m_token, current, fresh, error)) {
    case ServerPasswordChange::Changed:
        return true;
    case ServerPasswordChange::Same:
        *error = QStringLiteral("The new password must differ from the current one.");
        return false;
    case ServerPasswordChange::Incorrect:
    case ServerPasswordChange::Locked:
        *error = QStringLiteral("The current password is incorrect.");
        return false;
    case ServerPasswordChange::Error:
        break;
    }
    return false;
}

AuditAppendResult ServerSecurityBackend::endSession(const QString&, const QString& text)
{
    AuditAppendResult result;
    const QString token = std::exchange(m_token, QString());
    if (token.isEmpty())
        return result; // the server ended it already (and recorded why)
    QString error;
    if (connected(&error) && m_session->logOut(token, text, &error))
        result.sequence = 1;
    else
        result.error = notRecorded(error);
    return result;
}

bool ServerSecurityBackend::keepAlive(QString* error)
{
    if (m_token.isEmpty() || m_clock() - m_lastContact < KeepAliveSeconds * 1000)
        return true;
    QString unanswered;
    if (!connected(&unanswered))
        return true;
    const std::optional<bool> open = m_session->touch(m_token, &unanswered);
    if (!open)
        return true; // the next check or entry says why, and refuses
    if (*open) {
        contacted();
        return true;
    }
    m_token.clear(); // ended on the server, which recorded why
    *error = QStringLiteral("The security server has ended the session: it was not used for %1 minutes.")
                 .arg(m_settings.timeOutMinutes);
    return false;
}

bool ServerSecurityBackend::reading(const std::function<bool(QString*)>& call, QString* error)
{
    if (m_token.isEmpty()) {
        *error = QStringLiteral("No user is logged in.");
        return false;
    }
    if (!connected(error))
        return false;
    bool done = call(error);
    if (!done && m_connection->lostConnection() && m_connection->reconnect(error)) {
        error->clear();
        done = call(error);
    }
    if (done)
        contacted();
    return done;
}

bool ServerSecurityBackend::countAuditEntries(const AuditFilter& filter, qint64* count, QString* error)
{
    return reading([&](QString* e) { return m_session->countAudit(m_token, filter, count, e); }, error);
}

bool ServerSecurityBackend::readAuditEntries(const AuditFilter& filter, const AuditOrder& order,
                                             qint64 offset, int limit, QList<AuditEntry>* entries,
                                             QString* error)
{
    return reading(
        [&](QString* e) { return m_session->readAudit(m_token, filter, order, offset, limit, entries, e); },
        error);
}

AuditAppendResult ServerSecurityBackend::recordDocument(const QString&, const DocumentChange& change)
{
    AuditAppendResult result;
    QString error;
    if (m_token.isEmpty())
        error = QStringLiteral("no user is logged in");
    else if (connected(&error))
        result.sequence = m_session->recordDocument(m_token, change, &error);
    if (result.sequence == 0)
        result.error = notRecorded(error);
    else
        contacted();
    return result;
}

SignResult ServerSecurityBackend::signDocument(const QString&, const SecretBytes& password,
                                               const DocumentSignature& signature)
{
    SignResult result;
    if (m_token.isEmpty())
        result.error = QStringLiteral("No user is logged in.");
    else if (connected(&result.error))
        result = m_session->sign(m_token, password, signature);
    if (result.locked)
        m_token.clear(); // the server ended the session with the lock
    if (result.sequence > 0)
        contacted();
    return result;
}

bool ServerSecurityBackend::readSignatures(const QString& path, QList<DocumentSignature>* signatures,
                                           QString* error)
{
    return reading([&](QString* e) { return m_session->signatures(m_token, path, signatures, e); }, error);
}

DocumentWriterFactory ServerSecurityBackend::documentWriter(const QString&)
{
    return [server = m_settings.server, token = m_token](QString* error) -> std::optional<DocumentWriter> {
        if (token.isEmpty()) {
            *error = QStringLiteral("No user is logged in.");
            return std::nullopt;
        }
        const std::shared_ptr<ServerConnection> connection = ServerConnection::open(server, error);
        if (!connection)
            return std::nullopt;
        const auto session = std::make_shared<ServerSession>(*connection, AuditTrail::workstationName());
        return DocumentWriter{
            [connection, session, token](const QList<DocumentChange>& changes, QList<qint64>* sequences,
                                         QString* e) {
                for (const DocumentChange& change : changes) {
                    const qint64 sequence = session->recordDocument(token, change, e);
                    if (sequence == 0) {
                        *e = notRecorded(*e);
                        return false;
                    }
                    sequences->append(sequence);
                }
                return true;
            },
            [connection, session, token](QHash<QString, DocumentRecord>* records, QString* e) {
                return session->documentRecords(token, records, e);
            },
            [connection, session, token](QHash<QString, QList<DocumentSignature>>* signatures, QString* e) {
                QList<DocumentSignature> all;
                signatures->clear();
                if (!session->signatures(token, {}, &all, e))
                    return false;
                for (const DocumentSignature& signature : std::as_const(all))
                    (*signatures)[signature.path].append(signature);
                return true;
            }};
    };
}

AuditVerification ServerSecurityBackend::verifyAuditTrail()
{
    AuditVerification result;
    QString error;
    if (!reading([&](QString* e) { return m_session->verifyAudit(m_token, &result, e); }, &error))
        return {false, 0, 0, error, {}};
    return result;
}

std::function<AuditVerification()> ServerSecurityBackend::auditTrailVerifier()
{
    ServerSettings server = m_settings.server;
    server.statementTimeoutSeconds = 0; // a long trail takes its time
    return [server, token = m_token] {
        AuditVerification result;
        QString error;
        if (token.isEmpty())
            error = QStringLiteral("No user is logged in.");
        else if (const std::unique_ptr<ServerConnection> connection = ServerConnection::open(server, &error))
            ServerSession(*connection, AuditTrail::workstationName()).verifyAudit(token, &result, &error);
        if (!error.isEmpty())
            return AuditVerification{false, 0, 0, error, {}};
        return result;
    };
}

} // namespace nebra
