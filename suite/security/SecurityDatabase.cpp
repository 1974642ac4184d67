#include "SecurityDatabase.h"

#include "SecureFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QUuid>
#include <QtEndian>

namespace nebra {

namespace {

// What a reviewer sorts and filters the audit trail by (AuditTrailReader).
// Each index ends in the sequence number (the row id), which breaks ties.
const QStringList& reviewIndexes()
{
    static const QStringList statements = {
        QStringLiteral("CREATE INDEX IF NOT EXISTS audit_trail_utc ON audit_trail(utc)"),
        QStringLiteral(
            "CREATE INDEX IF NOT EXISTS audit_trail_user ON audit_trail(user_name COLLATE NOCASE)"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS audit_trail_area ON audit_trail(area)"),
        // The newest fingerprint of each document (DocumentTable): new beside
        // the schema, so older programs still open a database that has it.
        QStringLiteral(
            "CREATE TABLE IF NOT EXISTS document_records(path TEXT PRIMARY KEY, sha256 BLOB NOT NULL, "
            "size INTEGER NOT NULL, modified INTEGER NOT NULL, event TEXT NOT NULL, "
            "seq INTEGER NOT NULL, changes INTEGER NOT NULL, mac BLOB NOT NULL)"),
        // Electronic signatures (SignatureTable), each named by its audit
        // entry; kept like the entries: never changed, never removed.
        QStringLiteral("CREATE TABLE IF NOT EXISTS document_signatures(seq INTEGER PRIMARY KEY, "
                       "path TEXT NOT NULL, sha256 BLOB NOT NULL, meaning TEXT NOT NULL, "
                       "user_name TEXT NOT NULL, full_name TEXT NOT NULL, signed INTEGER NOT NULL, "
                       "mac BLOB NOT NULL)"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS document_signatures_path ON document_signatures(path)"),
        QStringLiteral("CREATE TRIGGER IF NOT EXISTS document_signatures_no_update BEFORE UPDATE ON "
                       "document_signatures BEGIN SELECT RAISE(ABORT, 'signatures cannot be changed'); END"),
        QStringLiteral("CREATE TRIGGER IF NOT EXISTS document_signatures_no_delete BEFORE DELETE ON "
                       "document_signatures BEGIN SELECT RAISE(ABORT, 'signatures cannot be removed'); END"),
    };
    return statements;
}

QStringList schema()
{
    const QStringList statements = {
        QStringLiteral("CREATE TABLE meta(key TEXT PRIMARY KEY, value TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE users("
                       "id INTEGER PRIMARY KEY, "
                       "name TEXT NOT NULL, "
                       "name_key TEXT NOT NULL UNIQUE, "
                       "full_name TEXT NOT NULL DEFAULT '', "
                       "password_hash TEXT NOT NULL DEFAULT '', "
                       "disabled INTEGER NOT NULL DEFAULT 0, "
                       "failed_logins INTEGER NOT NULL DEFAULT 0, "
                       "locked INTEGER NOT NULL DEFAULT 0, "
                       "must_change_password INTEGER NOT NULL DEFAULT 0, "
                       "mac BLOB NOT NULL DEFAULT x'')"),
        QStringLiteral("CREATE TABLE roles(id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE COLLATE NOCASE, "
                       "mac BLOB NOT NULL DEFAULT x'')"),
        QStringLiteral("CREATE TABLE user_rights("
                       "user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE, "
                       "area TEXT NOT NULL, operation TEXT NOT NULL, mac BLOB NOT NULL DEFAULT x'', "
                       "PRIMARY KEY(user_id, area, operation))"),
        QStringLiteral("CREATE TABLE role_rights("
                       "role_id INTEGER NOT NULL REFERENCES roles(id) ON DELETE CASCADE, "
                       "area TEXT NOT NULL, operation TEXT NOT NULL, mac BLOB NOT NULL DEFAULT x'', "
                       "PRIMARY KEY(role_id, area, operation))"),
        QStringLiteral("CREATE TABLE user_roles("
                       "user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE, "
                       "role_id INTEGER NOT NULL REFERENCES roles(id) ON DELETE CASCADE, "
                       "mac BLOB NOT NULL DEFAULT x'', PRIMARY KEY(user_id, role_id))"),
        QStringLiteral(
            "CREATE TABLE audit_trail("
            "seq INTEGER PRIMARY KEY, utc TEXT NOT NULL, user_name TEXT NOT NULL, "
            "workstation TEXT NOT NULL, area TEXT NOT NULL, text TEXT NOT NULL, mac BLOB NOT NULL)"),
        QStringLiteral(
            "CREATE TABLE store_state(id INTEGER PRIMARY KEY CHECK (id = 1), changes INTEGER NOT NULL, "
            "row_changes INTEGER NOT NULL, rows_digest BLOB, entries INTEGER NOT NULL, "
            "newest_mac BLOB, seal BLOB)"),
        QStringLiteral("CREATE TRIGGER audit_trail_no_update BEFORE UPDATE ON audit_trail "
                       "BEGIN SELECT RAISE(ABORT, 'audit trail entries cannot be changed'); END"),
        QStringLiteral("CREATE TRIGGER audit_trail_no_delete BEFORE DELETE ON audit_trail "
                       "BEGIN SELECT RAISE(ABORT, 'audit trail entries cannot be deleted'); END"),
    };
    return statements + reviewIndexes();
}

QString sqlError(const QSqlQuery& query)
{
    const QSqlError e = query.lastError();
    return e.databaseText().isEmpty() ? e.text() : e.databaseText();
}

enum class FileKind
{
    Empty,
    NotSqlite,
    Truncated,
    Sqlite
};

// Looks at the SQLite header. A file whose header promises more pages than
// the file holds has lost its end; SQLite itself would only notice when a
// missing page is read.
FileKind inspect(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() == 0)
        return FileKind::Empty;
    const QByteArray header = file.read(100);
    if (!header.startsWith(QByteArrayView("SQLite format 3\0", 16)))
        return FileKind::NotSqlite;
    if (header.size() < 100)
        return FileKind::Truncated;
    quint32 pageSize = qFromBigEndian<quint16>(header.constData() + 16);
    if (pageSize == 1)
        pageSize = 65536;
    const quint32 pageCount = qFromBigEndian<quint32>(header.constData() + 28);
    return quint64(file.size()) < quint64(pageSize) * pageCount ? FileKind::Truncated : FileKind::Sqlite;
}

} // namespace

SecurityDatabase::SecurityDatabase(QString path)
    : m_path(std::move(path)),
      m_connectionName(QStringLiteral("nebra-security-") + QUuid::createUuid().toString(QUuid::WithoutBraces))
{
}

SecurityDatabase::~SecurityDatabase()
{
    {
        QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
        if (db.isOpen())
            db.close();
    }
    QSqlDatabase::removeDatabase(m_connectionName);
}

QString SecurityDatabase::describe(const QString& what) const
{
    return QStringLiteral("The security database \"%1\" %2").arg(QDir::toNativeSeparators(m_path), what);
}

QSqlQuery SecurityDatabase::newQuery() const
{
    return QSqlQuery(QSqlDatabase::database(m_connectionName, false));
}

bool SecurityDatabase::exec(QSqlQuery& query, const QString& sql, const QVariantList& values,
                            QString* error) const
{
    if (!query.prepare(sql)) {
        *error = sqlError(query);
        return false;
    }
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!query.exec()) {
        *error = sqlError(query);
        return false;
    }
    return true;
}

bool SecurityDatabase::connect(QString* error)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    db.setDatabaseName(m_path);
    // Writers on other connections hold the lock only for one short transaction.
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000"));
    if (!db.open()) {
        *error = describe(QStringLiteral("cannot be opened (%1).").arg(db.lastError().text()));
        return false;
    }
    return true;
}

bool SecurityDatabase::applyPragmas(QString* error)
{
    QSqlQuery q = newQuery();
    QString why;
    if (!exec(q, QStringLiteral("PRAGMA journal_mode=WAL"), {}, &why) || !q.next() ||
        q.value(0).toString().compare(QLatin1String("wal"), Qt::CaseInsensitive) != 0) {
        *error = describe(QStringLiteral("cannot be written (%1).")
                              .arg(why.isEmpty() ? QStringLiteral("the journal cannot be set up") : why));
        return false;
    }
    q.finish();
    if (!exec(q, QStringLiteral("PRAGMA synchronous=FULL"), {}, &why) ||
        !exec(q, QStringLiteral("PRAGMA foreign_keys=ON"), {}, &why)) {
        *error = describe(QStringLiteral("cannot be used (%1).").arg(why));
        return false;
    }
    return true;
}

std::unique_ptr<SecurityDatabase> SecurityDatabase::open(const QString& path, QString* error)
{
    std::unique_ptr<SecurityDatabase> db(new SecurityDatabase(path));
    const QFileInfo info(path);
    if (!info.exists())
        *error = db->describe(QStringLiteral("does not exist."));
    else if (!info.isFile())
        *error = db->describe(QStringLiteral("is not a file."));
    else if (!info.isReadable())
        *error = db->describe(QStringLiteral("cannot be read."));
    else if (!info.isWritable())
        *error = db->describe(QStringLiteral("is read-only, so the audit trail cannot be written."));
    else if (const QString exposed = SecureFiles::exposure(path, QStringLiteral("security database"));
             !exposed.isEmpty())
        *error = exposed;
    else if (const FileKind kind = inspect(path); kind == FileKind::NotSqlite)
        *error = db->describe(QStringLiteral("is not a security database (it is not an SQLite file)."));
    else if (kind == FileKind::Truncated && !db->completeFromJournal(error))
        return nullptr;
    else if ((db->isOpen() || db->connect(error)) && db->checkIdentity(error) && db->applyPragmas(error) &&
             db->checkReadableAndWritable(error) && db->addReviewIndexes(error))
        return db;
    return nullptr;
}

bool SecurityDatabase::isOpen() const
{
    return QSqlDatabase::database(m_connectionName, false).isOpen();
}

// A checkpoint cut short (a full disk) leaves a file whose header already
// counts pages that only its write-ahead journal holds; SQLite itself reads
// them from there. Writing them back makes the file whole, and is all there
// is to do. A file whose journal does not hold the pages it lacks has lost
// them.
bool SecurityDatabase::completeFromJournal(QString* error)
{
    const bool journal = QFileInfo(m_path + QStringLiteral("-wal")).size() > 0;
    if (!journal || !connect(error)) {
        if (error->isEmpty())
            *error = describe(QStringLiteral("is truncated."));
        return false;
    }
    QSqlQuery q = newQuery();
    QString why;
    const bool written = exec(q, QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"), {}, &why) && q.next() &&
                         q.value(0).toInt() == 0;
    q.finish();
    if (inspect(m_path) == FileKind::Sqlite)
        return true;
    *error = describe(
        written ? QStringLiteral("is truncated.")
                : QStringLiteral("is incomplete: its journal holds the rest, but it cannot be written "
                                 "back (%1). Free space on its disk, close the other programs that "
                                 "use it, and try again.")
                      .arg(why.isEmpty() ? QStringLiteral("the database is busy") : why));
    return false;
}

bool SecurityDatabase::checkIdentity(QString* error)
{
    QSqlQuery q = newQuery();
    QString why;
    if (!exec(q, QStringLiteral("PRAGMA application_id"), {}, &why) || !q.next()) {
        *error = describe(QStringLiteral("is not a security database (%1).").arg(why));
        return false;
    }
    if (q.value(0).toInt() != ApplicationId) {
        *error = describe(QStringLiteral("is not a security database."));
        return false;
    }
    q.finish();
    bool versionOk = false;
    const int version = metaValue(QStringLiteral("schema_version")).toInt(&versionOk);
    m_databaseId = QByteArray::fromHex(metaValue(QStringLiteral("database_id")).toLatin1());
    m_schemaVersion = version;
    if (!versionOk || version < UpgradableVersion || version > SchemaVersion || m_databaseId.size() != 16) {
        *error = describe(
            versionOk && version > SchemaVersion ? QStringLiteral("was made by a newer version of the suite.")
            : versionOk && version > 0
                ? QStringLiteral("was made by an older version of the suite, which did not protect "
                                 "users and rights; create it anew with nebra-secadmin.")
                : QStringLiteral("is damaged (its version record is missing)."));
        return false;
    }
    return true;
}

bool SecurityDatabase::upgradeSchema(const QStringList& statements, QString* error)
{
    QSqlQuery q = newQuery();
    for (const QString& statement : statements)
        if (!exec(q, statement, {}, error))
            return false;
    if (!setMetaValue(QStringLiteral("schema_version"), QString::number(SchemaVersion), error))
        return false;
    m_schemaVersion = SchemaVersion;
    return true;
}

bool SecurityDatabase::addReviewIndexes(QString* error)
{
    // A database made before the reviewer's indexes (or the document
    // records) gets them on its first opening (once: a few seconds on a trail
    // of a million entries); the schema is otherwise unchanged, so older
    // programs still open it.
    QSqlQuery q = newQuery();
    QString why;
    if (!exec(
            q,
            QStringLiteral("SELECT count(*) FROM sqlite_master WHERE name IN "
                           "('audit_trail_utc', 'audit_trail_user', 'audit_trail_area', 'document_records', "
                           "'document_signatures', 'document_signatures_path', "
                           "'document_signatures_no_update', 'document_signatures_no_delete')"),
            {}, &why) ||
        !q.next()) {
        *error = describe(QStringLiteral("is damaged (%1).").arg(why));
        return false;
    }
    if (q.value(0).toInt() >= reviewIndexes().size())
        return true;
    q.finish();
    const bool added = writeTransaction(
        [&](QString* e) {
            for (const QString& statement : reviewIndexes())
                if (!exec(q, statement, {}, e))
                    return false;
            return true;
        },
        &why);
    if (!added)
        *error = describe(QStringLiteral("cannot be written (%1).").arg(why));
    return added;
}

bool SecurityDatabase::checkReadableAndWritable(QString* error)
{
    // Reading the user table and the newest audit entry touches the pages a
    // damaged file most likely lacks; taking the write lock proves that the
    // audit trail can be written before anyone relies on it.
    QSqlQuery q = newQuery();
    QString why;
    if (!exec(q, QStringLiteral("SELECT count(*) FROM users"), {}, &why) ||
        !exec(q, QStringLiteral("SELECT seq, mac FROM audit_trail ORDER BY seq DESC LIMIT 1"), {}, &why)) {
        *error = describe(QStringLiteral("is damaged (%1).").arg(why));
        return false;
    }
    q.finish();
    if (!exec(q, QStringLiteral("BEGIN IMMEDIATE"), {}, &why)) {
        *error = describe(QStringLiteral("cannot be written (%1).").arg(why));
        return false;
    }
    exec(q, QStringLiteral("ROLLBACK"), {}, &why);
    return true;
}

std::unique_ptr<SecurityDatabase> SecurityDatabase::create(const QString& path, QString* error)
{
    std::unique_ptr<SecurityDatabase> db(new SecurityDatabase(path));
    if (QFileInfo::exists(path)) {
        *error = db->describe(QStringLiteral("already exists; it has not been changed."));
        return nullptr;
    }
    QDir().mkpath(QFileInfo(path).absolutePath());
    // SQLite takes an empty file as a new database, and gives its -wal and
    // -shm files the mode of the database file.
    if (!SecureFiles::createEmpty(path, SecureFiles::dataMode(path), error))
        return nullptr;
    if (db->connect(error) && db->createSchema(error) && db->applyPragmas(error) && db->checkIdentity(error))
        return db;
    db.reset();
    for (const char* suffix : {"", "-wal", "-shm", "-journal"})
        QFile::remove(path + QLatin1String(suffix));
    return nullptr;
}

bool SecurityDatabase::createSchema(QString* error)
{
    QByteArray id(16, '\0');
    const QUuid uuid = QUuid::createUuid();
    id = uuid.toRfc4122();
    return writeTransaction(
        [&](QString* why) {
            QSqlQuery q = newQuery();
            if (!exec(q, QStringLiteral("PRAGMA application_id=%1").arg(ApplicationId), {}, why))
                return false;
            for (const QString& statement : schema())
                if (!exec(q, statement, {}, why))
                    return false;
            return setMetaValue(QStringLiteral("schema_version"), QString::number(SchemaVersion), why) &&
                   setMetaValue(QStringLiteral("database_id"), QString::fromLatin1(id.toHex()), why);
        },
        error);
}

QString SecurityDatabase::metaValue(const QString& key) const
{
    QSqlQuery q = newQuery();
    QString why;
    if (!exec(q, QStringLiteral("SELECT value FROM meta WHERE key = ?"), {key}, &why) || !q.next())
        return {};
    return q.value(0).toString();
}

bool SecurityDatabase::setMetaValue(const QString& key, const QString& value, QString* error)
{
    QSqlQuery q = newQuery();
    return exec(q, QStringLiteral("INSERT OR REPLACE INTO meta(key, value) VALUES(?, ?)"), {key, value},
                error);
}

bool SecurityDatabase::writeTransaction(const std::function<bool(QString*)>& work, QString* error)
{
    if (m_transactionDepth > 0)
        return work(error);
    QSqlQuery q = newQuery();
    if (!exec(q, QStringLiteral("BEGIN IMMEDIATE"), {}, error))
        return false;
    ++m_transactionDepth;
    QString why;
    const bool done = work(&why);
    q.finish();
    --m_transactionDepth;
    if (done && exec(q, QStringLiteral("COMMIT"), {}, &why))
        return true;
    QString ignored;
    exec(q, QStringLiteral("ROLLBACK"), {}, &ignored);
    *error = why;
    return false;
}

bool SecurityDatabase::readTransaction(const std::function<bool(QString*)>& work, QString* error) const
{
    if (m_transactionDepth > 0)
        return work(error);
    QSqlQuery q = newQuery();
    if (!exec(q, QStringLiteral("BEGIN"), {}, error))
        return false;
    ++m_transactionDepth;
    const bool ok = work(error);
    --m_transactionDepth;
    QString ignored;
    exec(q, QStringLiteral("COMMIT"), {}, &ignored);
    return ok;
}

} // namespace nebra
