#include "ServerSchema.h"

#include "ServerConnection.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>

namespace nebra {

namespace {

const QString SchemaFolder = QStringLiteral(":/nebra/security/schema");
// Any fixed number: the key of the lock that serialises administrators bringing the schema up to date.
constexpr qint64 MigrationLock = 0x6e65627261;

// The owner role holds everything and logs in as nobody; administrators log
// in as themselves and are members of nebra_admin, which may run the
// administration functions only (an administrator made a member of the
// owner role by an earlier version is moved there). The client role's own
// sessions are neither shown to others (pg_stat_activity) nor written to
// the log with their statements, and one left idle inside a transaction is
// ended, so it cannot hold the audit trail's head for ever. These settings
// are the server's to change: the client role cannot set them back.
const QString RolesScript = QStringLiteral(R"(
DO $$
DECLARE
    v_member text;
BEGIN
    IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'nebra_owner') THEN
        CREATE ROLE nebra_owner NOLOGIN;
    END IF;
    IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'nebra_client') THEN
        CREATE ROLE nebra_client LOGIN NOINHERIT;
    END IF;
    IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = 'nebra_admin') THEN
        CREATE ROLE nebra_admin NOLOGIN;
    END IF;
    FOR v_member IN SELECT r.rolname FROM pg_auth_members m JOIN pg_roles r ON r.oid = m.member
                    WHERE m.roleid = 'nebra_owner'::regrole AND NOT r.rolsuper LOOP
        EXECUTE format('GRANT nebra_admin TO %I', v_member);
        EXECUTE format('REVOKE nebra_owner FROM %I', v_member);
    END LOOP;
END
$$;
ALTER ROLE nebra_client SET track_activities = off;
ALTER ROLE nebra_client SET log_min_error_statement = panic;
ALTER ROLE nebra_client SET log_parameter_max_length = 0;
ALTER ROLE nebra_client SET idle_in_transaction_session_timeout = '10s';)");

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
    ServerResult q;
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

bool ServerSchema::createSite(const ServerSettings& superuser, QString* error)
{
    // Another administrator's create may hold the lock below for as long as its changes take.
    ServerSettings site = superuser;
    site.lockTimeoutSeconds = 0;
    site.statementTimeoutSeconds = 0;
    ServerSettings serverWide = site;
    serverWide.database = QStringLiteral("postgres");
    // Roles, database, schemas and extension are made with "if not exists",
    // which two administrators running this at once would both pass: the
    // second waits on this lock (held until the connection closes) and then
    // finds everything made.
    const std::unique_ptr<ServerConnection> server = ServerConnection::open(serverWide, error);
    if (!server ||
        !server->execScript(QStringLiteral("SELECT pg_advisory_lock(%1)").arg(MigrationLock), error) ||
        !server->execScript(RolesScript, error) || !createDatabase(*server, superuser.database, error))
        return false;
    const std::unique_ptr<ServerConnection> store = ServerConnection::open(site, error);
    return store && prepareDatabase(*store, error) && migrate(*store, error);
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
                                   "GRANT CONNECT ON DATABASE %1$I TO nebra_client, nebra_admin', ?::text)"),
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
    if (!site.execScript(QStringLiteral("BEGIN"), error))
        return false;
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
    if (ok && site.execScript(QStringLiteral("COMMIT"), error))
        return true;
    *error = QStringLiteral("The schema change %1 failed: %2").arg(migration.name, *error);
    QString ignored;
    site.execScript(QStringLiteral("ROLLBACK"), &ignored);
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
