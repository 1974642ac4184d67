#pragma once

#include "AuditChainHead.h"
#include "AuditTrail.h"
#include "DocumentTable.h"
#include "PasswordHasher.h"
#include "PasswordPolicy.h"
#include "SecurityDatabase.h"
#include "SecuritySettings.h"
#include "SignatureTable.h"
#include "SiteKey.h"
#include "StoreState.h"
#include "UserStore.h"

#include <memory>

namespace nebra {

// Everything a security manager or the administration tool works on, opened
// together from the "[Security]" settings: the database, the site key (which
// must be the one the database was made with), the database's sealed record
// of itself, the audit trail with its chain head, the users, the documents
// recorded and their signatures, the password hasher and the password policy.
class SecurityStore
{
public:
    ~SecurityStore();

    enum class HeadCheck
    {
        Required,
        Skipped
    };

    // Null, with *error set to a sentence for the user, when the system-wide
    // policy cannot be read, any part is missing, unusable or open to every
    // user, or (unless skipped, for the administrator's inquiries) the chain
    // head is missing or altered or the database no longer holds the entry
    // it seals.
    static std::unique_ptr<SecurityStore> open(const SecuritySettings& settings, QString* error,
                                               HeadCheck headCheck = HeadCheck::Required);

    enum class KeyUse
    {
        New,   // make the site key; refuse when its file exists
        Reuse, // use the site key file that is there
    };

    // Makes a new database and its chain head, and the site key file as keyUse
    // says. Records the creation as the first audit entry, by actor.
    static std::unique_ptr<SecurityStore> create(const SecuritySettings& settings, const QString& actor,
                                                 QString* error, KeyUse keyUse = KeyUse::New);

    const SecuritySettings& settings() const { return m_settings; }
    SecurityDatabase& database() { return *m_database; }
    const SiteKey& key() const { return m_key; }
    AuditTrail& audit() { return m_audit; }
    UserStore& users() { return m_users; }
    DocumentTable& documents() { return m_documents; }
    SignatureTable& signatures() { return m_signatures; }
    const PasswordHasher& hasher() const { return m_hasher; }
    const PasswordPolicy& policy() const { return m_policy; }

private:
    SecurityStore(const SecuritySettings& settings, std::unique_ptr<SecurityDatabase> database, SiteKey key);

    static bool checkKey(SecurityDatabase& database, const SiteKey& key, const QString& keyPath,
                         QString* error);
    // The record of a new, empty database: no changes yet.
    bool initialiseState(QString* error);

    SecuritySettings m_settings;
    std::unique_ptr<SecurityDatabase> m_database;
    SiteKey m_key;
    AuditChainHead m_head;
    StoreState m_state;
    AuditTrail m_audit;
    UserStore m_users;
    DocumentTable m_documents;
    SignatureTable m_signatures;
    PasswordHasher m_hasher;
    PasswordPolicy m_policy;
};

} // namespace nebra
