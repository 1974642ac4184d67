#include "ServerMigration.h"

#include "SecurityStore.h"
#include "ServerConnection.h"

#include <QDir>
#include <QSqlQuery>
#include <QStringList>

namespace nebra {

ServerMigration::ServerMigration(SecurityStore& source, ServerConnection& target, QString workstation)
    : m_source(source), m_target(target), m_workstation(std::move(workstation))
{
}

bool ServerMigration::call(const QString& function, const QVariantList& arguments, QString* error)
{
    const QStringList marks(arguments.size(), QStringLiteral("?"));
    ServerResult q;
    return m_target.exec(q,
                         QStringLiteral("SELECT nebra.%1(%2)").arg(function, marks.join(QLatin1String(", "))),
                         arguments, error);
}

bool ServerMigration::run(QString* summary, QString* error)
{
    if (!sourceIsSound(error) || !targetIsEmpty(error))
        return false;
    if (!m_target.execScript(QStringLiteral("BEGIN"), error))
        return false;
    qint64 entries = 0;
    int users = 0;
    const QString source = QDir::toNativeSeparators(m_source.settings().databasePath);
    const bool ok =
        copyEntries(&entries, error) && copyRoles(error) && copyUsers(&users, error) &&
        call(QStringLiteral("admin_note"),
             {m_workstation,
              QStringLiteral("Migrated from the embedded store \"%1\": %2 audit entries (verified), %3 "
                             "users, whose passwords must be set anew")
                  .arg(source)
                  .arg(entries)
                  .arg(users)},
             error);
    if (!ok || !m_target.execScript(QStringLiteral("COMMIT"), error)) {
        QString ignored;
        m_target.execScript(QStringLiteral("ROLLBACK"), &ignored);
        return false;
    }
    *summary =
        QStringLiteral("Copied %1 audit entries and %2 users from \"%3\". Set each user's password with "
                       "reset-password.")
            .arg(entries)
            .arg(users)
            .arg(source);
    return true;
}

bool ServerMigration::sourceIsSound(QString* error)
{
    const AuditVerification verification = m_source.audit().verify();
    if (!verification.ok) {
        *error =
            QStringLiteral("The embedded store's audit trail does not verify: %1").arg(verification.message);
        return false;
    }
    const QStringList altered = m_source.users().alteredRows(error);
    if (!error->isEmpty())
        return false;
    if (!altered.isEmpty()) {
        *error =
            QStringLiteral("The embedded store has altered records: %1").arg(altered.join(QLatin1Char(' ')));
        return false;
    }
    return true;
}

bool ServerMigration::targetIsEmpty(QString* error)
{
    ServerResult q;
    if (!m_target.exec(
            q,
            QStringLiteral("SELECT (SELECT count(*) FROM nebra.audit_trail) + "
                           "(SELECT count(*) FROM nebra.users) + (SELECT count(*) FROM nebra.roles)"),
            {}, error) ||
        !q.next())
        return false;
    if (q.value(0).toLongLong() != 0) {
        *error =
            QStringLiteral("The store on the security server is not empty: migrate only into a new one.");
        return false;
    }
    return true;
}

bool ServerMigration::copyEntries(qint64* count, QString* error)
{
    bool ok = true;
    const bool read = m_source.audit().forEachEntry(
        [&](const AuditEntry& entry) {
            ok = call(QStringLiteral("admin_import_entry"),
                      {entry.utc, entry.userName, entry.workstation, entry.area, entry.text}, error);
            *count += ok ? 1 : 0;
            return ok;
        },
        error);
    return read && ok;
}

bool ServerMigration::copyRoles(QString* error)
{
    SecurityDatabase& db = m_source.database();
    QSqlQuery q = db.newQuery();
    if (!db.exec(q, QStringLiteral("SELECT name FROM roles ORDER BY id"), {}, error))
        return false;
    while (q.next())
        if (!call(QStringLiteral("admin_add_role"), {m_workstation, q.value(0).toString()}, error))
            return false;
    if (!db.exec(q,
                 QStringLiteral("SELECT r.name, rr.area, rr.operation FROM role_rights rr "
                                "JOIN roles r ON r.id = rr.role_id ORDER BY r.id, rr.area, rr.operation"),
                 {}, error))
        return false;
    while (q.next())
        if (!call(QStringLiteral("admin_grant_to_role"),
                  {m_workstation, q.value(0).toString(), q.value(1).toString(), q.value(2).toString()},
                  error))
            return false;
    return true;
}

bool ServerMigration::copyUsers(int* count, QString* error)
{
    const QList<UserRecord> users = m_source.users().users(error);
    if (!error->isEmpty())
        return false;
    for (const UserRecord& user : users) {
        if (!call(QStringLiteral("admin_import_user"),
                  {m_workstation, user.name, user.fullName, user.disabled, user.locked, user.failedLogIns},
                  error))
            return false;
        for (const Right& right : m_source.users().rightsOf(user.name, error))
            if (!call(QStringLiteral("admin_grant"), {m_workstation, user.name, right.area, right.operation},
                      error))
                return false;
        for (const QString& role : m_source.users().rolesOf(user.name, error))
            if (!call(QStringLiteral("admin_assign_role"), {m_workstation, user.name, role}, error))
                return false;
        ++*count;
    }
    return error->isEmpty();
}

} // namespace nebra
