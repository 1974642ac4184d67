#pragma once

#include "AuditQuery.h"
#include "AuditTrail.h"
#include "Authenticator.h"
#include "DocumentRecord.h"
#include "DocumentSignature.h"
#include "PasswordPolicy.h"
#include "SecuritySettings.h"

#include <QHash>
#include <QString>

#include <functional>

namespace nebra {

class SecretBytes;

// Where a security manager keeps its users, rights and audit trail: the
// embedded database of this computer, or a database server that the lab's
// workstations share. The manager behaves the same on either; each
// operation that answers a check fails closed (false, or an error) when the
// store cannot answer.
class SecurityBackend
{
public:
    virtual ~SecurityBackend() = default;

    virtual const SecuritySettings& settings() const = 0;
    virtual const PasswordPolicy& policy() const = 0;

    // Checks the password, records the outcome and, on success, opens the user's session.
    virtual LogInResult logIn(const QString& userName, const SecretBytes& password) = 0;
    // False, with *error set, when the answer cannot be had.
    virtual bool isOperationAllowed(const QString& userName, const QString& area, const QString& operation,
                                    QString* error) = 0;
    // Committed before it returns a sequence number.
    virtual AuditAppendResult append(const QString& userName, const QString& area, const QString& text) = 0;
    // A wrong password counts like a failed log-in; *locked is set when it locked the account.
    virtual bool checkCurrentPassword(const QString& userName, const SecretBytes& password, bool* locked,
                                      QString* error) = 0;
    // Stores the new password (checked by the caller against the policy) and records the change.
    virtual bool storeNewPassword(const QString& userName, const SecretBytes& current,
                                  const SecretBytes& fresh, QString* error) = 0;
    // Ends the session that logIn opened and records text (area "Security").
    virtual AuditAppendResult endSession(const QString& userName, const QString& text) = 0;
    // The user is at work: a store that ends idle sessions itself marks the
    // session used. False, with *error, only when the store has ended the
    // session already (it timed out there); a store that cannot be asked
    // now leaves that to the next check or entry.
    virtual bool keepAlive(QString* error) = 0;

    // Records a document entry (area "Documents") for the session's user and
    // makes its fingerprint the path's newest record, in one transaction.
    // Whether the user may accept a change is the caller's check; the server
    // checks it again for its session.
    virtual AuditAppendResult recordDocument(const QString& userName, const DocumentChange& change) = 0;
    // The same, and the newest records, on a connection of its own that the
    // function returned opens in the calling thread, for the session of userName.
    virtual DocumentWriterFactory documentWriter(const QString& userName) = 0;

    // Signs as userName, the session's user: refused (result.error) for a
    // user without a full name in the store, and for a wrong password, which
    // counts like a failed log-in (result.locked when it locked the account).
    // The signature's full name is the store's; the entry (area
    // SignatureEntries::Area) and the row are committed together or not at all.
    // Whether the user may sign, and with what meaning, is the caller's check.
    virtual SignResult signDocument(const QString& userName, const SecretBytes& password,
                                    const DocumentSignature& signature) = 0;
    // Every signature of path, oldest first, each with intact checked.
    virtual bool readSignatures(const QString& path, QList<DocumentSignature>* signatures,
                                QString* error) = 0;

    // The reviewer's reading of the audit trail. Whether the user may read
    // it is the caller's check; the server checks it again for its session.
    // Each is false (or a failed verification), with *error, when the store cannot answer.
    virtual bool countAuditEntries(const AuditFilter& filter, qint64* count, QString* error) = 0;
    // Up to limit entries of the view from offset (0 = its first row).
    virtual bool readAuditEntries(const AuditFilter& filter, const AuditOrder& order, qint64 offset,
                                  int limit, QList<AuditEntry>* entries, QString* error) = 0;
    // The chain check of the whole trail, as the administration tool's verify makes it.
    virtual AuditVerification verifyAuditTrail() = 0;
    // The same check, made when the function returned is called, on a
    // connection of its own that it opens and closes in the calling thread:
    // so a long check can run on another thread than the session's.
    virtual std::function<AuditVerification()> auditTrailVerifier() = 0;
};

} // namespace nebra
