#include "ServerSchema.h"

#include "ServerConnection.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSqlQuery>

#include <algorithm>

namespace nebra {

namespace {

const QString SchemaFolder = QStringLiteral(":/nebra/security/schema");
// Any fixed number: the key of the lock that serialises administrators bringing the schema up to date.
constexpr qint64 MigrationLock = 0x6e65627261;

const QString RolesScript = QStringLiteral(R"(
DO $$
BEGIN
    IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'nebra_owner') THEN
        CREATE ROLE nebra_owner NOLOGIN;
    END IF;
    IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'nebra_client') THEN
        CREATE ROLE nebra_client LOGIN NOINHERIT;
    END IF;
END
$$;)");

// The client sees no schema but its own functions', and may create nothing.
const QString PrepareScript = QStringLiteral(R"(
CREATE SCHEMA IF NOT EXISTS nebra_crypto AUTHORIZATION nebra_owner;
REVOKE ALL ON SCHEMA nebra_crypto FROM PUBLIC;
CREATE EXTENSION IF NOT EXISTS pgcrypto WITH SCHEMA nebra_crypto;
CREATE SCHEMA IF NOT EXISTS nebra AUTHORIZATION nebra_owner;
REVOKE ALL ON SCHEMA nebra FROM PUBLIC;
REVOKE ALL ON SCHEMA public FROM PUBLIC;
ALTER DEFAULT PRIVILEGES FOR ROLE nebra_owner REVOKE EXECUTE ON FUNCTIONS FROM PUBLIC;
CREATE TABLE IF NOT EXISTS nebra.schema_version (
    version integer PRIMARY KEY,
    name text NOT NULL,
    applied_utc timestamptz NOT NULL DEFAULT now()
);
ALTER TABLE nebra.schema_version OWNER TO nebra_owner;
REVOKE ALL ON nebra.schema_version FROM PUBLIC;)");

bool single(ServerConnection& connection, const QString& statement, const QVariantList& values,
            QVariant* value, QString* error)
{
    QSqlQuery q(connection.database());
    if (!connection.exec(q, statement, values, error))
        return false;
    *value = q.next() ? q.value(0) : QVariant();
    return true;
}

// Runs the statement that the server composes from values (names and
// literals quoted by the server itself).
bool composed(ServerConnection& connection, const QString& format, const QVariantList& values, QString* error)
{
    QVariant statement;
    return single(connection, format, values, &statement, error) &&
           connection.execScript(statement.toString(), error);
}

} // namespace

QList<ServerSchema::Migration> ServerSchema::migrations()
{
    static const QRegularExpression numbered(QStringLiteral("^(\\d+)_.*\\.sql$"));
    QList<Migration> list;
    for (const QString& name : QDir(SchemaFolder).entryList(QDir::Files, QDir::Name)) {
        const QRegularExpressionMatch m = numbered.match(name);
        QFile file(SchemaFolder + QLatin1Char('/') + name);
        if (!m.hasMatch() || !file.open(QIODevice::ReadOnly))
            continue;
        list.append({m.captured(1).toInt(), name, QString::fromUtf8(file.readAll())});
    }
    std::sort(list.begin(), list.end(),
              [](const Migration& a, const Migration& b) { return a.version < b.version; });
    return list;
}

int ServerSchema::latestVersion()
{
    const QList<Migration> list = migrations();
    return list.isEmpty() ? 0 : list.last().version;
}

bool ServerSchema::createSite(const ServerSettings& superuser, const QString& clientPassword, QString* error)
{
    ServerSettings serverWide = superuser;
    serverWide.database = QStringLiteral("postgres");
    // Roles, database, schemas and extension are made with "if not exists",
    // which two administrators running this at once would both pass: the
    // second waits on this lock (held until the connection closes) and then
    // finds everything made.
    const std::unique_ptr<ServerConnection> server = ServerConnection::open(serverWide, error);
    if (!server ||
        !server->execScript(QStringLiteral("SELECT pg_advisory_lock(%1)").arg(MigrationLock), error) ||
        !createRoles(*server, clientPassword, error) || !createDatabase(*server, superuser.database, error))
        return false;
    const std::unique_ptr<ServerConnection> site = ServerConnection::open(superuser, error);
    return site && prepareDatabase(*site, error) && migrate(*site, error);
}

bool ServerSchema::createRoles(ServerConnection& server, const QString& clientPassword, QString* error)
{
    if (!server.execScript(RolesScript, error))
        return false;
    return clientPassword.isEmpty() ||
           composed(server, QStringLiteral("SELECT format('ALTER ROLE nebra_client PASSWORD %L', ?::text)"),
                    {clientPassword}, error);
}

bool ServerSchema::createDatabase(ServerConnection& server, const QString& database, QString* error)
{
    QVariant exists;
    if (!single(server, QStringLiteral("SELECT 1 FROM pg_database WHERE datname = ?"), {database}, &exists,
                error))
        return false;
    if (exists.isNull() &&
        !composed(server,
                  QStringLiteral("SELECT format('CREATE DATABASE %I OWNER nebra_owner TEMPLATE template0 "
                                 "ENCODING ''UTF8'' LOCALE ''C.UTF-8''', ?::text)"),
                  {database}, error))
        return false;
    return composed(server,
                    QStringLiteral("SELECT format('REVOKE ALL ON DATABASE %1$I FROM PUBLIC; "
                                   "GRANT CONNECT ON DATABASE %1$I TO nebra_client', ?::text)"),
                    {database}, error);
}

bool ServerSchema::prepareDatabase(ServerConnection& site, QString* error)
{
    return site.execScript(PrepareScript, error);
}

bool ServerSchema::migrate(ServerConnection& site, QString* error)
{
    for (const Migration& migration : migrations())
        if (!apply(site, migration, error))
            return false;
    return true;
}

bool ServerSchema::apply(ServerConnection& site, const Migration& migration, QString* error)
{
    QSqlDatabase db = site.database();
    if (!db.transaction()) {
        *error = QStringLiteral("The security server cannot begin a transaction.");
        return false;
    }
    QVariant applied;
    const bool ok =
        site.execScript(
            QStringLiteral("SET LOCAL ROLE nebra_owner; SELECT pg_advisory_xact_lock(%1)").arg(MigrationLock),
            error) &&
        single(site, QStringLiteral("SELECT 1 FROM nebra.schema_version WHERE version = ?"),
               {migration.version}, &applied, error) &&
        (!applied.isNull() ||
         (site.execScript(migration.sql, error) &&
          single(site, QStringLiteral("INSERT INTO nebra.schema_version(version, name) VALUES (?, ?)"),
                 {migration.version, migration.name}, &applied, error)));
    if (ok && db.commit())
        return true;
    if (ok)
        *error = QStringLiteral("The schema change %1 could not be committed.").arg(migration.name);
    else
        *error = QStringLiteral("The schema change %1 failed: %2").arg(migration.name, *error);
    db.rollback();
    return false;
}

int ServerSchema::version(ServerConnection& connection, QString* error)
{
    QVariant version;
    if (!single(connection, QStringLiteral("SELECT coalesce(max(version), 0) FROM nebra.schema_version"), {},
                &version, error))
        return -1;
    return version.toInt();
}

} // namespace nebra
