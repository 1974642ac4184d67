#pragma once

#include "AuditTrail.h"
#include "UserStore.h"

#include <QString>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <optional>

namespace nebra {

class SecretBytes;
class ServerConnection;

// The administrator's changes to a security store on the database server.
// Each runs one administration function on the server that makes the change
// and records it in the audit trail (area "Administration") in the same
// transaction, under the role the connection logged in as: the server's
// session user, never a name this side gives. The connection must be of a
// member of nebra_admin (or a superuser); the client role is refused.
class ServerAdministration
{
public:
    ServerAdministration(ServerConnection& connection, QString workstation);

    bool addUser(const QString& name, const QString& fullName, const SecretBytes& password, QString* error);
    bool setDisabled(const QString& name, bool disabled, QString* error);
    bool setPassword(const QString& name, const SecretBytes& password, bool mustChange, QString* error);
    bool unlock(const QString& name, QString* error);
    bool grant(const QString& user, const Right& right, QString* error);
    bool revoke(const QString& user, const Right& right, QString* error);
    bool addRole(const QString& role, QString* error);
    bool grantToRole(const QString& role, const Right& right, QString* error);
    bool revokeFromRole(const QString& role, const Right& right, QString* error);
    bool assignRole(const QString& user, const QString& role, QString* error);
    bool unassignRole(const QString& user, const QString& role, QString* error);
    bool setPolicy(int lockoutThreshold, int hashCost, QString* error);
    // How long an unused session lasts, and how long a new password must be.
    bool setSessionPolicy(int idleMinutes, int passwordMinimumLength, QString* error);

    // Moves the chain head back to the newest entry the trail still holds
    // (after entries were removed behind the store's back) and records the
    // administrator's entry after it. An altered entry stays altered.
    bool resealHead(QString* error);

    // A user as the administrator sees it: no password hash leaves the server.
    struct User
    {
        UserRecord record; // passwordHash stays empty
        bool hasPassword = false;
        QStringList roles;
        QStringList rights; // "area/operation"
    };
    // In the order of their names; empty, with *error set, when they cannot be read.
    QList<User> users(QString* error);

    // Visits the entries in order, from one snapshot; stops when visit returns false.
    bool forEachEntry(const std::function<bool(const AuditEntry&)>& visit, QString* error);

    // The chain check, run on the server where the key is; with an anchor,
    // also that the trail still holds the anchored entry. newestMac is set when ok.
    AuditVerification verify(const std::optional<AuditAnchor>& anchor = {});

    // One sentence per signature row that does not say what its entry says,
    // and per signature entry whose row is gone (as the embedded store's verify words them).
    QStringList alteredSignatures(QString* error);

private:
    bool checkAnchor(AuditVerification* result, const AuditAnchor& anchor);
    // The MAC of entry sequence; empty when there is none or it cannot be read.
    QByteArray macOf(qint64 sequence, QString* error);
    bool call(const QString& function, const QVariantList& arguments, QString* error);

    ServerConnection& m_connection;
    QString m_workstation;
};

} // namespace nebra
