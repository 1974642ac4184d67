#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class QSqlQuery;

namespace nebra {

class SecurityDatabase;
class SiteKey;
class StoreState;
struct UserRecord;

// The MACs that users, roles, rights and role memberships carry: made with
// the site key over a row's security-relevant fields, its ids and the
// store's count of row changes (StoreState). Every change of these rows
// seals all of them afresh with the next count, so a row written back from
// an older state no longer matches, and the store's record keeps a digest
// of all of them, so a row removed (or one written back) changes it.
class RowSeals
{
public:
    RowSeals(SecurityDatabase& database, const SiteKey& key, StoreState& state);

    // The count of row changes the rows are sealed with now; false, with
    // *error, when the store's record cannot be read.
    bool current(qint64* rowChanges, QString* error) const;

    QByteArray user(const UserRecord& user, qint64 rowChanges) const;
    // table: "user_rights" or "role_rights"; owner: the user's or the role's id.
    QByteArray right(const char* table, qint64 owner, const QString& area, const QString& operation,
                     qint64 rowChanges) const;
    QByteArray membership(qint64 userId, qint64 roleId, qint64 rowChanges) const;
    QByteArray role(qint64 roleId, const QString& name, qint64 rowChanges) const;

    // After a change of the rows, inside its transaction: moves the store's
    // record on to the next row change and seals every row whose MAC
    // matched afresh with it; a row whose MAC did not match stays unsealed.
    bool sealAfresh(QString* error);
    // The digest of the rows as they are now, sealed with rowChanges.
    bool digest(qint64 rowChanges, QByteArray* digest, QString* error) const;

private:
    struct Table;
    static const QList<Table>& tables();
    QByteArray macOf(const Table& table, const QSqlQuery& row, qint64 rowChanges) const;

    SecurityDatabase& m_database;
    const SiteKey& m_key;
    StoreState& m_state;
};

} // namespace nebra
