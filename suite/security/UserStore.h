#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace nebra {

class SecurityDatabase;

struct UserRecord
{
    qint64 id = 0;
    QString name;
    QString fullName;
    QByteArray passwordHash; // empty: no password set, no log-in possible
    bool disabled = false;
    int failedLogIns = 0;
    bool locked = false;
    bool mustChangePassword = false;
};

// A right: an operation in an area. "*" as the operation grants every
// operation of the area; "*" as the area grants the operation in every area.
struct Right
{
    QString area;
    QString operation;
};

// Users, roles and rights in the security database. User and role names
// compare without regard to case. Every change is one transaction; none is
// audited here (the callers record what they changed and who changed it).
class UserStore
{
public:
    explicit UserStore(SecurityDatabase& database);

    std::optional<UserRecord> find(const QString& name, QString* error) const;
    QList<UserRecord> users(QString* error) const;

    bool addUser(const QString& name, const QString& fullName, const QByteArray& passwordHash,
                 QString* error);
    bool setDisabled(const QString& name, bool disabled, QString* error);
    bool setPasswordHash(const QString& name, const QByteArray& hash, bool mustChange, QString* error);

    // Counts one failed log-in and locks the account when the count reaches
    // the threshold. *lockedNow is set when this failure locked it.
    bool recordFailedLogIn(const QString& name, int threshold, bool* lockedNow, QString* error);
    bool resetFailedLogIns(const QString& name, QString* error);
    bool unlock(const QString& name, QString* error);

    bool grant(const QString& user, const Right& right, QString* error);
    bool revoke(const QString& user, const Right& right, QString* error);
    bool addRole(const QString& role, QString* error);
    bool grantToRole(const QString& role, const Right& right, QString* error);
    bool revokeFromRole(const QString& role, const Right& right, QString* error);
    bool assignRole(const QString& user, const QString& role, QString* error);
    bool unassignRole(const QString& user, const QString& role, QString* error);

    // The user's own rights and those of the user's roles; a disabled or locked user has none.
    bool isOperationAllowed(const QString& user, const QString& area, const QString& operation,
                            QString* error) const;
    QList<Right> rightsOf(const QString& user, QString* error) const;
    QStringList rolesOf(const QString& user, QString* error) const;

private:
    struct Link
    {
        const char* table; // "users" or "roles"
        QString name;
        QString notFound;
    };
    // Runs sql with the ids of the named rows first, then values; fails when a name is unknown.
    bool linkChange(const QString& sql, const QList<Link>& links, const QVariantList& values, QString* error);
    bool change(const QString& sql, const QVariantList& values, const QString& notFound, QString* error);
    std::optional<qint64> idOf(const char* table, const QString& name, const QString& what,
                               QString* error) const;

    SecurityDatabase& m_database;
};

} // namespace nebra
