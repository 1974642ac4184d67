#include "AdminReport.h"

#include "UserStore.h"

#include <QDir>
#include <QIODevice>
#include <QSaveFile>

namespace nebra {

AdminReport::AdminReport(QIODevice& out, QIODevice& err) : m_out(out), m_err(err) {}

void AdminReport::say(const QString& text)
{
    m_out.write(text.toUtf8() + (text.endsWith(QLatin1Char('\n')) ? "" : "\n"));
}

int AdminReport::fail(const QString& message)
{
    m_err.write(QStringLiteral("nebra-secadmin: %1\n").arg(message).toUtf8());
    return 1;
}

void AdminReport::user(const UserRecord& user, bool hasPassword, const QStringList& roles,
                       const QStringList& rights)
{
    QStringList state;
    state << (user.disabled ? QStringLiteral("disabled") : QStringLiteral("enabled"));
    if (user.locked)
        state << QStringLiteral("locked");
    if (user.failedLogIns > 0)
        state << QStringLiteral("%1 failed log-ins").arg(user.failedLogIns);
    if (user.mustChangePassword)
        state << QStringLiteral("must change password");
    if (!hasPassword)
        state << QStringLiteral("no password");
    if (!user.intact)
        state << QStringLiteral("RECORD ALTERED");
    say(QStringLiteral("%1\t%2\t%3\troles: %4\trights: %5")
            .arg(user.name, user.fullName, state.join(QStringLiteral(", ")), roles.join(QStringLiteral(", ")),
                 rights.join(QStringLiteral(", "))));
}

int AdminReport::audit(const AuditEntrySource& entries, const QString& csvPath)
{
    QString error;
    const bool ok = csvPath.isEmpty() ? AuditReport::print(entries, m_out, &error)
                                      : AuditReport::exportCsv(entries, csvPath, m_out, &error);
    if (!ok)
        return fail(error);
    if (!csvPath.isEmpty() && csvPath != QLatin1String("-"))
        say(QStringLiteral("Exported to \"%1\".").arg(QDir::toNativeSeparators(csvPath)));
    return 0;
}

bool AdminReport::write(const QByteArray& bytes, const QString& path, QString* error)
{
    if (path == QLatin1String("-")) {
        if (m_out.write(bytes) == bytes.size())
            return true;
        *error = m_out.errorString();
        return false;
    }
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    *error = QStringLiteral("\"%1\" cannot be written (%2).")
                 .arg(QDir::toNativeSeparators(path), file.errorString());
    return false;
}

bool AdminReport::parseAnchor(const QString& text, std::optional<AuditAnchor>* anchor)
{
    if (text.isEmpty() || (*anchor = AuditAnchor::parse(text)))
        return true;
    fail(QStringLiteral("\"%1\" is not an anchor; give COUNT:MAC as printed by nebra-secadmin anchor.")
             .arg(text));
    return false;
}

int AdminReport::verification(const AuditVerification& result, const std::optional<AuditAnchor>& anchor,
                              const QStringList& alteredRows)
{
    for (const QString& row : alteredRows)
        say(row);
    if (result.ok && alteredRows.isEmpty()) {
        say(result.message);
        if (anchor)
            say(QStringLiteral("The audit trail still holds the anchor's entry %1.").arg(anchor->count));
        return 0;
    }
    if (result.ok) {
        say(result.message);
        say(QStringLiteral("Users, rights or document records have been altered outside the suite."));
        return 1;
    }
    if (result.firstBadSequence > 0)
        say(QStringLiteral("First bad entry: %1").arg(result.firstBadSequence));
    say(result.message);
    say(QStringLiteral("The audit trail is NOT intact."));
    return 1;
}

int AdminReport::anchor(const AuditVerification& result)
{
    if (!result.ok) {
        say(result.message);
        return fail(QStringLiteral("the audit trail is not intact, so it gives no anchor."));
    }
    if (result.entryCount == 0)
        return fail(QStringLiteral("the audit trail is empty."));
    say(AuditAnchor{result.entryCount, result.newestMac}.toString());
    return 0;
}

int AdminReport::reseal(const AuditVerification& before, const std::function<bool(QString*)>& reseal)
{
    say(QStringLiteral("Before: %1").arg(before.message));
    QString error;
    if (!reseal(&error))
        return fail(error);
    say(QStringLiteral("The audit chain head now seals the newest entry."));
    return 0;
}

} // namespace nebra
