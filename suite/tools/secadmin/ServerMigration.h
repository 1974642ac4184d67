#pragma once

#include <QString>
#include <QVariantList>

namespace nebra {

class SecurityStore;
class ServerConnection;

// Copies a site's embedded store into a new store on the security server,
// in one transaction there: the audit entries in their order with their
// own times (chained anew with the server's key), then the roles and their
// rights, the users with their state, rights and roles, each recorded, and
// a closing entry naming the source. Refused unless the source verifies
// (chain and the MACs of users and rights) and the server's store is empty.
// Passwords do not move: the embedded store's hashes cannot be checked in
// the server, so every user needs a new one (reset-password).
class ServerMigration
{
public:
    ServerMigration(SecurityStore& source, ServerConnection& target, QString workstation);

    // *summary: what was copied, for the administrator.
    bool run(QString* summary, QString* error);

private:
    bool sourceIsSound(QString* error);
    bool targetIsEmpty(QString* error);
    bool copyEntries(qint64* count, QString* error);
    bool copyRoles(QString* error);
    bool copyUsers(int* count, QString* error);
    bool call(const QString& function, const QVariantList& arguments, QString* error);

    SecurityStore& m_source;
    ServerConnection& m_target;
    QString m_workstation;
};

} // namespace nebra
