#pragma once

#include "ServerSettings.h"

#include <QList>
#include <QString>

namespace nebra {

class ServerConnection;

// The security store's schema on the database server, as numbered
// migrations that ship inside the program ("001_store.sql", ...). Each is
// applied once, in order, in a transaction of its own as the owner role,
// and its number recorded in nebra.schema_version; running again applies
// only what is missing, and two administrators running it at once do not
// apply anything twice (an advisory lock serialises them).
class ServerSchema
{
public:
    struct Migration
    {
        int version = 0;
        QString name;
        QString sql;
    };

    static QList<Migration> migrations();
    static int latestVersion();

    // Connected as a superuser of the server: makes the owner, client and
    // administrator roles and the database when they are missing, then
    // brings the schema up to date. The client role's password is the
    // administrator's to set on the server; it never passes through here.
    static bool createSite(const ServerSettings& superuser, QString* error);

    // Applies the missing migrations to the site database (superuser connection).
    static bool migrate(ServerConnection& connection, QString* error);
    // The newest migration applied, 0 for none, -1 (with *error) when it cannot be read.
    static int version(ServerConnection& connection, QString* error);

private:
    static bool createDatabase(ServerConnection& server, const QString& database, QString* error);
    static bool prepareDatabase(ServerConnection& site, QString* error);
    static bool apply(ServerConnection& site, const Migration& migration, QString* error);
};

} // namespace nebra
