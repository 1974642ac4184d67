#include "ServerAdministration.h"

#include "SecretBytes.h"
#include "ServerConnection.h"
#include "ServerResult.h"
#include "ServerSession.h"

#include <QStringList>

namespace nebra {

ServerAdministration::ServerAdministration(ServerConnection& connection, QString workstation)
    : m_connection(connection), m_workstation(std::move(workstation))
{
}

bool ServerAdministration::call(const QString& function, const QVariantList& arguments, QString* error)
{
    QStringList marks(arguments.size() + 1, QStringLiteral("?"));
    ServerResult q;
    return m_connection.exec(
        q, QStringLiteral("SELECT nebra.%1(%2)").arg(function, marks.join(QLatin1String(", "))),
        QVariantList{m_workstation} + arguments, error);
}

bool ServerAdministration::addUser(const QString& name, const QString& fullName, const SecretBytes& password,
                                   QString* error)
{
    return call(QStringLiteral("admin_add_user"),
                {name, fullName, QString::fromUtf8(password.data(), password.size())}, error);
}

bool ServerAdministration::setDisabled(const QString& name, bool disabled, QString* error)
{
    return call(QStringLiteral("admin_set_disabled"), {name, disabled}, error);
}

bool ServerAdministration::setPassword(const QString& name, const SecretBytes& password, bool mustChange,
                                       QString* error)
{
    return call(QStringLiteral("admin_set_password"),
                {name, QString::fromUtf8(password.data(), password.size()), mustChange}, error);
}

bool ServerAdministration::unlock(const QString& name, QString* error)
{
    return call(QStringLiteral("admin_unlock"), {name}, error);
}

bool ServerAdministration::grant(const QString& user, const Right& right, QString* error)
{
    return call(QStringLiteral("admin_grant"), {user, right.area, right.operation}, error);
}

bool ServerAdministration::revoke(const QString& user, const Right& right, QString* error)
{
    return call(QStringLiteral("admin_revoke"), {user, right.area, right.operation}, error);
}

bool ServerAdministration::addRole(const QString& role, QString* error)
{
    return call(QStringLiteral("admin_add_role"), {role}, error);
}

bool ServerAdministration::grantToRole(const QString& role, const Right& right, QString* error)
{
    return call(QStringLiteral("admin_grant_to_role"), {role, right.area, right.operation}, error);
}

bool ServerAdministration::revokeFromRole(const QString& role, const Right& right, QString* error)
{
    return call(QStringLiteral("admin_revoke_from_role"), {role, right.area, right.operation}, error);
}

bool ServerAdministration::unassignRole(const QString& user, const QString& role, QString* error)
{
    return call(QStringLiteral("admin_unassign_role"), {user, role}, error);
}

bool ServerAdministration::resealHead(QString* error)
{
    return call(QStringLiteral("admin_reseal_head"), {}, error);
}

bool ServerAdministration::assignRole(const QString& user, const QString& role, QString* error)
{
    return call(QStringLiteral("admin_assign_role"), {user, role}, error);
}

bool ServerAdministration::setPolicy(int lockoutThreshold, int hashCost, QString* error)
{
    return call(QStringLiteral("admin_set_policy"), {lockoutThreshold, hashCost}, error);
}

bool ServerAdministration::setSessionPolicy(int idleMinutes, int passwordMinimumLength, QString* error)
{
    return call(QStringLiteral("admin_set_session_policy"), {idleMinutes, passwordMinimumLength}, error);
}

QList<ServerAdministration::User> ServerAdministration::users(QString* error)
{
    // Roles and rights come joined with a character no name may hold.
    ServerResult q;
    if (!m_connection.exec(
            q,
            QStringLiteral("SELECT name, full_name, disabled, locked, failed_logins, "
                           "must_change_password, has_password, array_to_string(roles, E'\\x1f'), "
                           "array_to_string(rights, E'\\x1f') FROM nebra.admin_list_users()"),
            {}, error))
        return {};
    QList<User> users;
    const QChar separator(0x1f);
    while (q.next()) {
        User user;
        user.record.name = q.value(0).toString();
        user.record.fullName = q.value(1).toString();
        user.record.disabled = q.value(2).toBool();
        user.record.locked = q.value(3).toBool();
        user.record.failedLogIns = q.value(4).toInt();
        user.record.mustChangePassword = q.value(5).toBool();
        user.hasPassword = q.value(6).toBool();
        user.roles = q.value(7).toString().split(separator, Qt::SkipEmptyParts);
        user.rights = q.value(8).toString().split(separator, Qt::SkipEmptyParts);
        users.append(user);
    }
    return users;
}

// Pages through the trail by sequence number inside one repeatable-read
// transaction, so a long trail is never held in memory whole and every page
// comes from the same snapshot while workstations go on writing.
bool ServerAdministration::forEachEntry(const std::function<bool(const AuditEntry&)>& visit, QString* error)
{
    constexpr int PageSize = 1000;
    if (!m_connection.execScript(QStringLiteral("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY"), error))
        return false;
    qint64 after = 0;
    bool more = true;
    bool ok = true;
    while (ok && more) {
        ServerResult q;
        ok = m_connection.exec(q,
                               QStringLiteral("SELECT seq, utc, user_name, workstation, area, text, mac "
                                              "FROM nebra.admin_audit_entries(?, ?)"),
                               {after, PageSize}, error);
        int rows = 0;
        while (ok && more && q.next()) {
            const AuditEntry entry{q.value(0).toLongLong(), q.value(1).toString(), q.value(2).toString(),
                                   q.value(3).toString(),   q.value(4).toString(), q.value(5).toString(),
                                   q.value(6).toByteArray()};
            after = entry.sequence;
            ++rows;
            more = visit(entry);
        }
        more = more && rows == PageSize;
    }
    QString ignored;
    m_connection.execScript(QStringLiteral("COMMIT"), &ignored);
    return ok;
}

QByteArray ServerAdministration::macOf(qint64 sequence, QString* error)
{
    ServerResult q;
    if (!m_connection.exec(q, QStringLiteral("SELECT mac FROM nebra.admin_audit_entries(?, 1) WHERE seq = ?"),
                           {sequence - 1, sequence}, error) ||
        !q.next())
        return {};
    return q.value(0).toByteArray();
}

bool ServerAdministration::checkAnchor(AuditVerification* result, const AuditAnchor& anchor)
{
    if (result->entryCount < anchor.count) {
        *result = {false,
                   result->entryCount,
                   result->entryCount + 1,
                   QStringLiteral("The audit trail ends at entry %1 and no longer reaches the anchor's entry "
                                  "%2: it has been cut off or rolled back.")
                       .arg(result->entryCount)
                       .arg(anchor.count),
                   {}};
        return false;
    }
    QString error;
    const QByteArray mac = macOf(anchor.count, &error);
    if (mac != anchor.mac) {
        *result = {false,
                   result->entryCount,
                   error.isEmpty() ? anchor.count : 0,
                   error.isEmpty()
                       ? QStringLiteral("Entry %1 is not the entry of the anchor: the audit trail "
                                        "has been replaced or rolled back.")
                             .arg(anchor.count)
                       : error,
                   {}};
        return false;
    }
    return true;
}

QStringList ServerAdministration::alteredSignatures(QString* error)
{
    QList<DocumentSignature> signatures;
    if (!ServerSession(m_connection, m_workstation).signatures({}, {}, &signatures, error))
        return {};
    QStringList found;
    for (const DocumentSignature& signature : std::as_const(signatures))
        if (!signature.intact)
            found.append(SignatureEntries::alteredText(signature));
    ServerResult q;
    if (!m_connection.exec(q, QStringLiteral("SELECT * FROM nebra.admin_unrecorded_signatures()"), {}, error))
        return {};
    while (q.next())
        found.append(SignatureEntries::removedText(q.value(0).toLongLong()));
    return found;
}

AuditVerification ServerAdministration::verify(const std::optional<AuditAnchor>& anchor)
{
    AuditVerification result;
    ServerResult q;
    QString error;
    if (!m_connection.exec(
            q, QStringLiteral("SELECT ok, entry_count, first_bad_seq, message FROM nebra.verify_audit()"), {},
            &error) ||
        !q.next()) {
        result.ok = false;
        result.message = error.isEmpty() ? QStringLiteral("The security server gave no answer.") : error;
        return result;
    }
    result.ok = q.value(0).toBool();
    result.entryCount = q.value(1).toLongLong();
    result.firstBadSequence = q.value(2).toLongLong();
    result.message = q.value(3).toString();
    if (!result.ok || (anchor && !checkAnchor(&result, *anchor)))
        return result;
    if (result.entryCount > 0)
        result.newestMac = macOf(result.entryCount, &error);
    return result;
}

} // namespace nebra
