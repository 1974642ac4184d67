#pragma once

#include "AuditQuery.h"
#include "AuditTrail.h"
#include "Authenticator.h"
#include "DocumentRecord.h"
#include "DocumentSignature.h"

#include <QHash>

#include <QString>

#include <optional>

namespace nebra {

class SecretBytes;
class ServerConnection;

struct ServerLogIn
{
    LogInStatus status = LogInStatus::Refused;
    QString token; // set for Success: names the session in every later call
    QString userName;
    QString fullName;
    bool mustChangePassword = false;
    // The site's rules as the server enforces them: a session unused this
    // long ends, and a new password must be this long.
    int idleMinutes = 0;
    int passwordMinimumLength = 0;
    QString error; // set for Error
};

enum class ServerPasswordChange
{
    Changed,
    Incorrect, // the current password is wrong (counted like a failed log-in)
    Locked,    // ... and that locked the account, which ended the session
    Same,      // the new password is empty or the current one
    Error,
};

// What a workstation asks the security server, through the functions its
// low-privilege role may run: the server checks the password, counts
// failures, locks accounts, checks rights and writes the audit trail itself.
// Nothing here reads a table; password hashes never leave the server.
class ServerSession
{
public:
    ServerSession(ServerConnection& connection, QString workstation);

    ServerLogIn logIn(const QString& userName, const SecretBytes& password);
    // Empty (with *error) when the server cannot answer; callers refuse then.
    std::optional<bool> isAllowed(const QString& token, const QString& area, const QString& operation,
                                  QString* error);
    // The entry's sequence number once committed on the server; 0, with *error, when it is not.
    qint64 record(const QString& token, const QString& area, const QString& text, QString* error);
    // A document entry and the path's newest record, written by the server
    // in one transaction; the entry's sequence number, 0 with *error when not
    // committed (an accepted change also when the user lacks the right).
    qint64 recordDocument(const QString& token, const DocumentChange& change, QString* error);
    // Every path's newest record (token: the session's; empty: the administrator's own connection).
    bool documentRecords(const QString& token, QHash<QString, DocumentRecord>* records, QString* error);
    // Signs for the session's user: the server checks the right, the full
    // name and the password, counts a wrong one and records the entry and the
    // row in one transaction (see SecurityBackend::signDocument). result.error
    // is set when the server refused or could not answer.
    SignResult sign(const QString& token, const SecretBytes& password, const DocumentSignature& signature);
    // The signatures of path, or of every path when it is null (token: the
    // session's; empty: the administrator's own connection), oldest first.
    bool signatures(const QString& token, const QString& path, QList<DocumentSignature>* signatures,
                    QString* error);
    // Changed (the password is right), Incorrect, Locked or Error.
    ServerPasswordChange checkPassword(const QString& token, const SecretBytes& current, QString* error);
    ServerPasswordChange changePassword(const QString& token, const SecretBytes& current,
                                        const SecretBytes& fresh, QString* error);
    // Ends the session on the server and records text; false, with *error, when the server cannot.
    bool logOut(const QString& token, const QString& text, QString* error);
    // Marks the session used. Empty (with *error) when the server cannot
    // answer; false when the session has ended (timed out on the server).
    std::optional<bool> touch(const QString& token, QString* error);

    // The reviewer's reading of the audit trail, refused by the server unless
    // the session's user has the right "Security"/"ViewAuditTrail".
    bool countAudit(const QString& token, const AuditFilter& filter, qint64* count, QString* error);
    bool readAudit(const QString& token, const AuditFilter& filter, const AuditOrder& order, qint64 offset,
                   int limit, QList<AuditEntry>* entries, QString* error);
    // The chain check, made on the server (newestMac is left empty); false,
    // with *error, when the server gives no answer or refuses.
    bool verifyAudit(const QString& token, AuditVerification* result, QString* error);

private:
    ServerConnection& m_connection;
    QString m_workstation;
};

} // namespace nebra
