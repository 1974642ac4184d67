#include "SecurityStore.h"

#include "RowSeals.h"
#include "StoreUpgrade.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace nebra {

namespace {
const QString KeyCheckName = QStringLiteral("site_key_check");
const QByteArray KeyCheckMessage = QByteArrayLiteral("nebra-site-key-check-v1");
} // namespace

SecurityStore::SecurityStore(const SecuritySettings& settings, std::unique_ptr<SecurityDatabase> database,
                             SiteKey key)
    : m_settings(settings), m_database(std::move(database)), m_key(std::move(key)),
      m_head(settings.chainHeadFile, m_key, m_database->databaseId()), m_state(*m_database, m_key, m_head),
      m_audit(*m_database, m_key, m_head, m_state), m_users(*m_database, m_key, m_state),
      m_documents(*m_database, m_key, m_state, m_audit), m_signatures(*m_database, m_key, m_state, m_audit),
      m_hasher(settings.hashCost), m_policy(settings.passwordMinimumLength)
{
}

SecurityStore::~SecurityStore() = default;

bool SecurityStore::initialiseState(QString* error)
{
    StoreState::Record fresh;
    return m_database->writeTransaction(
        [&](QString* why) {
            return RowSeals(*m_database, m_key, m_state).digest(0, &fresh.rowsDigest, why) &&
                   m_state.write(fresh, why);
        },
        error);
}

bool SecurityStore::checkKey(SecurityDatabase& database, const SiteKey& key, const QString& keyPath,
                             QString* error)
{
    if (key.verify(QByteArray::fromHex(database.metaValue(KeyCheckName).toLatin1()),
                   KeyCheckMessage + database.databaseId()))
        return true;
    *error = QStringLiteral("The site key file \"%1\" does not belong to the security database \"%2\".")
                 .arg(QDir::toNativeSeparators(keyPath), QDir::toNativeSeparators(database.path()));
    return false;
}

std::unique_ptr<SecurityStore> SecurityStore::open(const SecuritySettings& settings, QString* error,
                                                   HeadCheck headCheck)
{
    if (!settings.policyError.isEmpty()) {
        *error = settings.policyError;
        return nullptr;
    }
    std::unique_ptr<SecurityDatabase> database = SecurityDatabase::open(settings.databasePath, error);
    if (!database)
        return nullptr;
    std::optional<SiteKey> key = SiteKey::load(settings.siteKeyFile, error);
    if (!key || !checkKey(*database, *key, settings.siteKeyFile, error))
        return nullptr;
    std::unique_ptr<SecurityStore> store(new SecurityStore(settings, std::move(database), std::move(*key)));
    if (store->m_database->schemaVersion() < SecurityDatabase::SchemaVersion) {
        RowSeals seals(*store->m_database, store->m_key, store->m_state);
        if (!StoreUpgrade(*store->m_database, store->m_key, store->m_head, store->m_state, seals).run(error))
            return nullptr;
    }
    if (headCheck == HeadCheck::Required && !store->m_audit.checkHead(error))
        return nullptr;
    return store;
}

std::unique_ptr<SecurityStore> SecurityStore::create(const SecuritySettings& settings, const QString& actor,
                                                     QString* error, KeyUse keyUse)
{
    if (QFileInfo::exists(settings.databasePath)) {
        *error = QStringLiteral("The security database \"%1\" already exists; it has not been changed.")
                     .arg(QDir::toNativeSeparators(settings.databasePath));
        return nullptr;
    }
    // A key file left from an earlier database may be known to people who
    // should not hold the new one's key: it is used only when asked for.
    if (keyUse == KeyUse::New && !SiteKey::create(settings.siteKeyFile, error)) {
        if (QFileInfo::exists(settings.siteKeyFile))
            *error = QStringLiteral("The site key file \"%1\" already exists; it has not been replaced. Use "
                                    "--reuse-key to make the new database with it, or remove it first.")
                         .arg(QDir::toNativeSeparators(settings.siteKeyFile));
        return nullptr;
    }
    std::optional<SiteKey> key = SiteKey::load(settings.siteKeyFile, error);
    if (!key)
        return nullptr;
    std::unique_ptr<SecurityDatabase> database = SecurityDatabase::create(settings.databasePath, error);
    if (!database)
        return nullptr;
    const QString check = QString::fromLatin1(key->mac(KeyCheckMessage + database->databaseId()).toHex());
    std::unique_ptr<SecurityStore> store;
    if (database->setMetaValue(KeyCheckName, check, error)) {
        store.reset(new SecurityStore(settings, std::move(database), std::move(*key)));
        if (store->initialiseState(error) && store->m_audit.initialiseHead(error)) {
            const AuditAppendResult first = store->m_audit.append(
                actor, QStringLiteral("Administration"), QStringLiteral("Security database created"));
            if (first.error.isEmpty())
                return store;
            *error = first.error;
        }
    }
    // Half a database would be refused at every later opening: leave none.
    store.reset();
    database.reset();
    for (const char* suffix : {"", "-wal", "-shm"})
        QFile::remove(settings.databasePath + QLatin1String(suffix));
    QFile::remove(settings.chainHeadFile);
    return nullptr;
}

} // namespace nebra
