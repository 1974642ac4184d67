#pragma once

#include "UserStore.h"

#include <QString>

#include <functional>

namespace nebra {

class SecretBytes;
class SecurityStore;

// The administrator's changes to users, roles and rights. Each change is
// checked (passwords against the policy), then made and recorded in the
// audit trail (area "Administration") under the administrator's name, in
// one transaction.
// Every operation returns false with *error set to a sentence when it is
// refused or fails; nothing is then changed or recorded.
class SecurityAdministration
{
public:
    static inline const QString Area = QStringLiteral("Administration");

    SecurityAdministration(SecurityStore& store, QString actor);

    bool addUser(const QString& name, const QString& fullName, const SecretBytes& password, QString* error);
    bool setDisabled(const QString& name, bool disabled, QString* error);
    // With mustChange, the user has to choose a new password at the next log-in.
    bool setPassword(const QString& name, const SecretBytes& password, bool mustChange, QString* error);
    bool unlock(const QString& name, QString* error);

    bool grant(const QString& user, const Right& right, QString* error);
    bool revoke(const QString& user, const Right& right, QString* error);
    bool addRole(const QString& role, QString* error);
    bool grantToRole(const QString& role, const Right& right, QString* error);
    bool revokeFromRole(const QString& role, const Right& right, QString* error);
    bool assignRole(const QString& user, const QString& role, QString* error);
    bool unassignRole(const QString& user, const QString& role, QString* error);

    // Seals the audit chain head afresh at the newest entry, after the
    // administrator has looked into why it was missing or altered.
    bool resealChainHead(QString* error);

private:
    bool recorded(const std::function<bool(QString*)>& change, const QString& text, QString* error);
    static bool validName(const QString& name, QString* error);
    static bool validRight(const Right& right, QString* error);

    SecurityStore& m_store;
    QString m_actor;
};

} // namespace nebra
