#pragma once

#include "RowSeals.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <optional>

class QSqlQuery;

namespace nebra {

class SecurityDatabase;
class SiteKey;
class StoreState;

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
    bool intact = true; // false: the row was changed behind the suite's back
};

// A right: an operation in an area. "*" as the operation grants every
// operation of the area; "*" as the area grants the operation in every area.
struct Right
{
    QString area;
    QString operation;
    bool intact = true; // as read: false when the row was changed behind the suite's back
};

// Users, roles and rights in the security database. User and role names
// compare without regard to case (user names in every script, through
// Unicode case folding). Every change is one transaction, or part of the
// caller's; none is audited here (the callers record what they changed and
// who changed it, in the same transaction).
//
// Each user row, role, right and role membership carries a MAC made with the
// site key over its security-relevant fields and the store's count of row
// changes (RowSeals). A row whose MAC does not match was changed behind the
// suite's back, or written back from an older state: such a user is marked
// not intact (and is refused at log-in), such a role cannot be given and
// grants nothing, such a right or membership grants nothing, and
// alteredRows() names them all, and rows removed as well. Only
// administrative changes seal an altered user row afresh; the bookkeeping
// of log-ins refuses to touch one. Rights are granted only while the store's
// record of itself agrees with its audit trail and chain head.
class UserStore
{
public:
    UserStore(SecurityDatabase& database, const SiteKey& key, StoreState& state);

    // The form in which user names are compared: NFC, case folded.
    static QString nameKey(const QString& name);

    // The columns of a user row, the MAC last, and the record they hold (without its seal checked).
    static inline const QString Columns = QStringLiteral(
        "id, name, full_name, password_hash, disabled, failed_logins, locked, must_change_password, mac");
    static UserRecord recordOf(const QSqlQuery& row);

    std::optional<UserRecord> find(const QString& name, QString* error) const;
    QList<UserRecord> users(QString* error) const;

    bool addUser(const QString& name, const QString& fullName, const QByteArray& passwordHash,
                 QString* error);
    bool setDisabled(const QString& name, bool disabled, QString* error);
    bool setPasswordHash(const QString& name, const QByteArray& hash, bool mustChange, QString* error);

    // Counts one failed log-in and locks the account when the count reaches
    // the threshold. *lockedNow is set when this failure locked it.
    // Refuses an altered row.
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

    // One sentence per user, role, right or membership whose MAC does not
    // match, and one when rows have been removed or written back.
    QStringList alteredRows(QString* error) const;

private:
    UserRecord userFrom(const QSqlQuery& q, qint64 rowChanges) const;
    void alteredRights(const char* table, const char* owner, qint64 rowChanges, QStringList* found,
                       QString* error) const;
    // Runs "UPDATE users SET <assignments>" on the named user and seals the row afresh.
    bool updateUser(const QString& name, const QString& assignments, const QVariantList& values,
                    bool requireIntact, QString* error);
    bool sealUser(qint64 id, QString* error);
    bool allowedByOwnRights(qint64 userId, const QString& area, const QString& operation, qint64 rowChanges,
                            QString* error) const;
    bool allowedByRoles(qint64 userId, const QString& area, const QString& operation, qint64 rowChanges,
                        QString* error) const;
    struct Link
    {
        const char* table; // "users" or "roles"
        QString name;
        QString notFound;
    };
    using Binder = std::function<QVariantList(const QList<qint64>& ids, qint64 rowChanges)>;
    // Runs sql with the values that bind gives for the ids of the named rows,
    // then seals every row afresh; fails when a name is unknown or a role altered.
    bool linkChange(const QString& sql, const QList<Link>& links, const Binder& bind, QString* error);
    std::optional<qint64> idOf(const char* table, const QString& name, const QString& what, qint64 rowChanges,
                               QString* error) const;

    SecurityDatabase& m_database;
    StoreState& m_state;
    RowSeals m_seals;
};

} // namespace nebra
