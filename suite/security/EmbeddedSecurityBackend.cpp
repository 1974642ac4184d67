#include "EmbeddedSecurityBackend.h"

#include "AuditTrailReader.h"
#include "SecretBytes.h"
#include "SecurityStore.h"

namespace nebra {

EmbeddedSecurityBackend::EmbeddedSecurityBackend(std::unique_ptr<SecurityStore> store)
    : m_store(std::move(store)), m_authenticator(*m_store)
{
}

EmbeddedSecurityBackend::~EmbeddedSecurityBackend() = default;

const SecuritySettings& EmbeddedSecurityBackend::settings() const
{
    return m_store->settings();
}

const PasswordPolicy& EmbeddedSecurityBackend::policy() const
{
    return m_store->policy();
}

LogInResult EmbeddedSecurityBackend::logIn(const QString& userName, const SecretBytes& password)
{
    return m_authenticator.authenticate(userName, password);
}

bool EmbeddedSecurityBackend::isOperationAllowed(const QString& userName, const QString& area,
                                                 const QString& operation, QString* error)
{
    return m_store->users().isOperationAllowed(userName, area, operation, error);
}

AuditAppendResult EmbeddedSecurityBackend::append(const QString& userName, const QString& area,
                                                  const QString& text)
{
    return m_store->audit().append(userName, area, text);
}

bool EmbeddedSecurityBackend::checkCurrentPassword(const QString& userName, const SecretBytes& password,
                                                   bool* locked, QString* error)
{
    return m_authenticator.checkCurrentPassword(userName, password, locked, error);
}

bool EmbeddedSecurityBackend::storeNewPassword(const QString& userName, const SecretBytes&,
                                               const SecretBytes& fresh, QString* error)
{
    const QByteArray hash = m_store->hasher().hash(fresh);
    if (hash.isEmpty()) {
        *error = QStringLiteral("The password could not be hashed (not enough memory).");
        return false;
    }
    // The new hash and its entry share one transaction: neither lands without the other.
    QString why;
    const AuditAppendResult result = m_store->audit().append(
        userName, Authenticator::Area, QStringLiteral("Password changed"), [&](QString* e) {
            const bool stored = m_store->users().setPasswordHash(userName, hash, false, e);
            why = *e;
            return stored;
        });
    *error = result.sequence == 0 && !why.isEmpty() ? why : result.error;
    return result.sequence > 0;
}

AuditAppendResult EmbeddedSecurityBackend::endSession(const QString& userName, const QString& text)
{
    return m_store->audit().append(userName, Authenticator::Area, text);
}

bool EmbeddedSecurityBackend::countAuditEntries(const AuditFilter& filter, qint64* count, QString* error)
{
    return AuditTrailReader(m_store->database()).count(filter, count, error);
}

bool EmbeddedSecurityBackend::readAuditEntries(const AuditFilter& filter, const AuditOrder& order,
                                               qint64 offset, int limit, QList<AuditEntry>* entries,
                                               QString* error)
{
    return AuditTrailReader(m_store->database()).read(filter, order, offset, limit, entries, error);
}

AuditAppendResult EmbeddedSecurityBackend::recordDocument(const QString& userName,
                                                          const DocumentChange& change)
{
    AuditAppendResult result;
    result.sequence = m_store->documents().record(userName, change, &result.error);
    return result;
}

DocumentWriterFactory EmbeddedSecurityBackend::documentWriter(const QString& userName)
{
    return [settings = m_store->settings(), userName](QString* error) -> std::optional<DocumentWriter> {
        const std::shared_ptr<SecurityStore> store = SecurityStore::open(settings, error);
        if (!store)
            return std::nullopt;
        return DocumentWriter{
            [store, userName](const QList<DocumentChange>& changes, QList<qint64>* sequences, QString* e) {
                *sequences = store->documents().record(userName, changes, e);
                return !sequences->isEmpty();
            },
            [store](QHash<QString, DocumentRecord>* records, QString* e) {
                return store->documents().read(records, e);
            },
            [store](QHash<QString, QList<DocumentSignature>>* signatures, QString* e) {
                return store->signatures().read(signatures, e);
            }};
    };
}

SignResult EmbeddedSecurityBackend::signDocument(const QString& userName, const SecretBytes& password,
                                                 const DocumentSignature& signature)
{
    SignResult result;
    const std::optional<UserRecord> user = m_store->users().find(userName, &result.error);
    if (!user) {
        if (result.error.isEmpty())
            result.error = QStringLiteral("No user is logged in.");
        return result;
    }
    // Told before the password is asked for: without a printed name there is nothing to sign with.
    if (user->fullName.trimmed().isEmpty()) {
        result.error = SignatureEntries::noFullNameText();
        return result;
    }
    if (!m_authenticator.checkSigningPassword(user->name, password, &result.locked, &result.error)) {
        if (result.error.isEmpty())
            result.error = SignatureEntries::wrongPasswordText();
        return result;
    }
    DocumentSignature signing = signature;
    signing.userName = user->name;
    signing.fullName = user->fullName.trimmed();
    return m_store->signatures().record(signing);
}

bool EmbeddedSecurityBackend::readSignatures(const QString& path, QList<DocumentSignature>* signatures,
                                             QString* error)
{
    return m_store->signatures().read(path, signatures, error);
}

AuditVerification EmbeddedSecurityBackend::verifyAuditTrail()
{
    return m_store->audit().verify();
}

std::function<AuditVerification()> EmbeddedSecurityBackend::auditTrailVerifier()
{
    return [settings = m_store->settings()] {
        QString error;
        // The chain head is checked by verify itself, with the reason in its words.
        const std::unique_ptr<SecurityStore> store =
            SecurityStore::open(settings, &error, SecurityStore::HeadCheck::Skipped);
        return store ? store->audit().verify() : AuditVerification{false, 0, 0, error, {}};
    };
}

} // namespace nebra
