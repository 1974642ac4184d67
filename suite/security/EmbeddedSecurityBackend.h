#pragma once

#include "Authenticator.h"
#include "SecurityBackend.h"

#include <memory>

namespace nebra {

class SecurityStore;

// The security database of this computer (SQLite, with its site key and chain head files).
class EmbeddedSecurityBackend : public SecurityBackend
{
public:
    explicit EmbeddedSecurityBackend(std::unique_ptr<SecurityStore> store);
    ~EmbeddedSecurityBackend() override;

    const SecuritySettings& settings() const override;
    const PasswordPolicy& policy() const override;
    LogInResult logIn(const QString& userName, const SecretBytes& password) override;
    bool isOperationAllowed(const QString& userName, const QString& area, const QString& operation,
                            QString* error) override;
    AuditAppendResult append(const QString& userName, const QString& area, const QString& text) override;
    bool checkCurrentPassword(const QString& userName, const SecretBytes& password, bool* locked,
                              QString* error) override;
    bool storeNewPassword(const QString& userName, const SecretBytes& current, const SecretBytes& fresh,
                          QString* error) override;
    AuditAppendResult endSession(const QString& userName, const QString& text) override;
    // The idle time-out is the manager's own here.
    bool keepAlive(QString*) override { return true; }
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

private:
    std::unique_ptr<SecurityStore> m_store;
    Authenticator m_authenticator;
};

} // namespace nebra
