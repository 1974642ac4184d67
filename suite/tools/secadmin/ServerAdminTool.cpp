#include "ServerAdminTool.h"

#include "AdminReport.h"
#include "AuditTrail.h"
#include "PasswordPrompt.h"
#include "SecretBytes.h"
#include "SecuritySettings.h"
#include "SecurityStore.h"
#include "ServerAdministration.h"
#include "ServerConnection.h"
#include "ServerMigration.h"
#include "ServerSchema.h"
#include "ServerSession.h"
#include "SettingsStore.h"
#include "SitePolicyFile.h"

#include <QDir>

namespace nebra {

ServerAdminTool::ServerAdminTool(AdminReport& report, Options options)
    : m_report(report), m_options(std::move(options))
{
}

ServerAdminTool::~ServerAdminTool() = default;

ServerAdministration ServerAdminTool::administration()
{
    return ServerAdministration(*m_connection, AuditTrail::workstationName());
}

QList<ServerAdminTool::Command> ServerAdminTool::commands()
{
    return userCommands() + rightCommands() + inquiryCommands();
}

QList<ServerAdminTool::Command> ServerAdminTool::userCommands()
{
    using A = ServerAdministration;
    using P = const SecretBytes&;
    return {
        {"create", [this](const QStringList&) { return create(); }},
        {"migrate", [this](const QStringList&) { return migrate(); }},
        {"add-user",
         [this](const QStringList& a) {
             return withPassword(
                 a[0], [&](A& s, P p, QString* e) { return s.addUser(a[0], m_options.fullName, p, e); });
         }},
        {"set-password",
         [this](const QStringList& a) {
             return withPassword(a[0],
                                 [&](A& s, P p, QString* e) { return s.setPassword(a[0], p, false, e); });
         }},
        {"reset-password",
         [this](const QStringList& a) {
             return withPassword(a[0],
                                 [&](A& s, P p, QString* e) { return s.setPassword(a[0], p, true, e); });
         }},
        {"disable-user",
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.setDisabled(a[0], true, e); });
         }},
        {"enable-user",
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.setDisabled(a[0], false, e); });
         }},
        {"unlock",
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.unlock(a[0], e); });
         }},
    };
}

QList<ServerAdminTool::Command> ServerAdminTool::rightCommands()
{
    using A = ServerAdministration;
    auto right = [](const QStringList& a) { return Right{a[1], a[2]}; };
    return {
        {"grant",
         [=, this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.grant(a[0], right(a), e); });
         }},
        {"revoke",
         [=, this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.revoke(a[0], right(a), e); });
         }},
        {"add-role",
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.addRole(a[0], e); });
         }},
        {"grant-role",
         [=, this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.grantToRole(a[0], right(a), e); });
         }},
        {"revoke-role",
         [=, this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.revokeFromRole(a[0], right(a), e); });
         }},
        {"assign-role",
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.assignRole(a[0], a[1], e); });
         }},
        {"unassign-role",
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.unassignRole(a[0], a[1], e); });
         }},
    };
}

QList<ServerAdminTool::Command> ServerAdminTool::inquiryCommands()
{
    return {
        {"list-users", [this](const QStringList&) { return listUsers(); }},
        {"audit",
         [this](const QStringList&) {
             ServerAdministration reader = administration();
             return m_report.audit(
                 [&](const AuditEntryVisitor& visit, QString* e) { return reader.forEachEntry(visit, e); },
                 m_options.csvPath);
         }},
        {"verify", [this](const QStringList&) { return verify(); }},
        {"verify-documents",
         [this](const QStringList&) {
             QHash<QString, DocumentRecord> records;
             QString error;
             return ServerSession(*m_connection, AuditTrail::workstationName())
                            .documentRecords({}, &records, &error)
                        ? m_options.verifyDocuments(records)
                        : m_report.fail(error);
         }},
        {"signatures",
         [this](const QStringList&) {
             ServerSession session(*m_connection, AuditTrail::workstationName());
             return m_options.checkSignatures(
                 [&session](const QString& path, QList<DocumentSignature>* signatures, QString* e) {
                     return session.signatures({}, path, signatures, e);
                 });
         }},
        {"anchor", [this](const QStringList&) { return m_report.anchor(administration().verify()); }},
        {"reseal-head",
         [this](const QStringList&) {
             return m_report.reseal(administration().verify(),
                                    [this](QString* e) { return administration().resealHead(e); });
         }},
    };
}

int ServerAdminTool::run(const QString& command, const QStringList& arguments)
{
    for (const Command& c : commands()) {
        if (c.name != command)
            continue;
        QString error;
        if (command != QLatin1String("create") &&
            !(m_connection = ServerConnection::open(m_options.server, &error)))
            return m_report.fail(error);
        return c.action(arguments);
    }
    return -1;
}

int ServerAdminTool::change(const Change& action)
{
    ServerAdministration admin = administration();
    QString error;
    return action(admin, &error) ? 0 : m_report.fail(error);
}

int ServerAdminTool::withPassword(
    const QString& name,
    const std::function<bool(ServerAdministration&, const SecretBytes&, QString*)>& action)
{
    QString error;
    const std::optional<SecretBytes> password = PasswordPrompt::readNewPassword(name, &error);
    if (!password)
        return m_report.fail(error);
    return change([&](ServerAdministration& admin, QString* e) { return action(admin, *password, e); });
}

int ServerAdminTool::listUsers()
{
    QString error;
    const QList<ServerAdministration::User> users = administration().users(&error);
    if (!error.isEmpty())
        return m_report.fail(error);
    for (const ServerAdministration::User& user : users)
        m_report.user(user.record, user.hasPassword, user.roles, user.rights);
    return 0;
}

// The server's users and rights are guarded by privileges rather than row MACs; its signatures are
// checked against their entries.
int ServerAdminTool::verify()
{
    std::optional<AuditAnchor> anchor;
    if (!m_report.parseAnchor(m_options.anchor, &anchor))
        return 2;
    const AuditVerification result = administration().verify(anchor);
    QString error;
    const QStringList altered = administration().alteredSignatures(&error);
    return error.isEmpty() ? m_report.verification(result, anchor, altered) : m_report.fail(error);
}

int ServerAdminTool::migrate()
{
    QString error;
    const std::unique_ptr<SecurityStore> source =
        m_options.openEmbedded ? m_options.openEmbedded(&error) : std::unique_ptr<SecurityStore>();
    if (!source)
        return m_report.fail(
            error.isEmpty() ? QStringLiteral("migrate needs --database PATH: the embedded store to copy.")
                            : error);
    QString summary;
    if (!ServerMigration(*source, *m_connection, AuditTrail::workstationName()).run(&summary, &error))
        return m_report.fail(error);
    m_report.say(summary);
    return 0;
}

int ServerAdminTool::create()
{
    QString error;
    if (!ServerSchema::createSite(m_options.server, &error) ||
        !(m_connection = ServerConnection::open(m_options.server, &error)) ||
        !administration().setSessionPolicy(m_options.idleMinutes, m_options.passwordMinimumLength, &error))
        return m_report.fail(error);
    m_report.say(QStringLiteral("The security store \"%1\" on %2 is at schema version %3.")
                     .arg(m_options.server.database, m_options.server.host)
                     .arg(ServerSchema::latestVersion()));
    if (!m_options.writePolicyFile)
        return 0;
    SecuritySettings settings;
    settings.backend = SecuritySettings::Backend::Server;
    settings.server = m_options.server;
    if (!SitePolicyFile::writeServer(settings, m_options.adminGroup, &error))
        return m_report.fail(error);
    m_report.say(QStringLiteral("The system-wide settings file \"%1\" now points every user at the server.")
                     .arg(QDir::toNativeSeparators(SettingsStore::systemFilePath())));
    return 0;
}

} // namespace nebra
