#pragma once

#include "AuditTrail.h"
#include "UserStore.h"

#include <QString>
#include <QVariantList>

namespace nebra {

class SecretBytes;
class ServerConnection;

// The administrator's changes to a security store on the database server.
// Each runs one owner-only function on the server that makes the change and
// records it in the audit trail (area "Administration", under actor) in the
// same transaction. The connection must be of the owner role or one of its
// members; the client role is refused by the server.
class ServerAdministration
{
public:
    ServerAdministration(ServerConnection& connection, QString actor, QString workstation);

    bool addUser(const QString& name, const QString& fullName, const SecretBytes& password, QString* error);
    bool setDisabled(const QString& name, bool disabled, QString* error);
    bool setPassword(const QString& name, const SecretBytes& password, bool mustChange, QString* error);
    bool unlock(const QString& name, QString* error);
    bool grant(const QString& user, const Right& right, QString* error);
    bool revoke(const QString& user, const Right& right, QString* error);
    bool addRole(const QString& role, QString* error);
    bool grantToRole(const QString& role, const Right& right, QString* error);
    bool assignRole(const QString& user, const QString& role, QString* error);
    bool setPolicy(int lockoutThreshold, int hashCost, QString* error);

    // The chain check, run on the server where the key is.
    AuditVerification verify();

private:
    bool call(const QString& function, const QVariantList& arguments, QString* error);

    ServerConnection& m_connection;
    QString m_actor;
    QString m_workstation;
};

} // namespace nebra
