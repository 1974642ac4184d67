#include "ServerAdminTool.h"

#include "AuditTrail.h"
#include "PasswordPrompt.h"
#include "SecretBytes.h"
#include "SecuritySettings.h"
#include "SecurityStore.h"
#include "ServerAdministration.h"
#include "ServerConnection.h"
#include "ServerMigration.h"
#include "ServerSchema.h"
#include "SettingsStore.h"
#include "SitePolicyFile.h"

#include <QDir>
#include <QFileInfo>
#include <QIODevice>

#include <unistd.h>

namespace nebra {

ServerAdminTool::ServerAdminTool(QIODevice& out, QIODevice& err, Options options)
    : m_out(out), m_err(err), m_options(std::move(options))
{
}

ServerAdminTool::~ServerAdminTool() = default;

QString ServerAdminTool::actor()
{
    const QByteArray login = qgetenv("SUDO_USER").isEmpty() ? qgetenv("USER") : qgetenv("SUDO_USER");
    return login.isEmpty() ? QStringLiteral("uid %1").arg(::getuid()) : QString::fromLocal8Bit(login);
}

void ServerAdminTool::say(const QString& text)
{
    m_out.write((text + QLatin1Char('\n')).toUtf8());
}

int ServerAdminTool::fail(const QString& message)
{
    m_err.write((QStringLiteral("nebra-secadmin: ") + message + QLatin1Char('\n')).toUtf8());
    return 1;
}

QList<ServerAdminTool::Command> ServerAdminTool::commands()
{
    using A = ServerAdministration;
    auto right = [](const QStringList& a) { return Right{a[1], a[2]}; };
    return {
        {"create", 0, [this](const QStringList&) { return create(); }},
        {"verify", 0, [this](const QStringList&) { return verify(); }},
        {"migrate", 0, [this](const QStringList&) { return migrate(); }},
        {"add-user", 1,
         [=, this](const QStringList& a) {
             return withPassword(
                 a[0],
                 [&](A& admin, const SecretBytes& p, QString* e) {
                     return admin.addUser(a[0], m_options.fullName, p, e);
                 },
                 QStringLiteral("User added."));
         }},
        {"set-password", 1,
         [=, this](const QStringList& a) {
             return withPassword(
                 a[0],
                 [&](A& admin, const SecretBytes& p, QString* e) {
                     return admin.setPassword(a[0], p, false, e);
                 },
                 QStringLiteral("Password set."));
         }},
        {"reset-password", 1,
         [=, this](const QStringList& a) {
             return withPassword(
                 a[0],
                 [&](A& admin, const SecretBytes& p, QString* e) {
                     return admin.setPassword(a[0], p, true, e);
                 },
                 QStringLiteral("Password reset."));
         }},
        {"disable-user", 1,
         [=, this](const QStringList& a) {
             return change([&](A& admin, QString* e) { return admin.setDisabled(a[0], true, e); },
                           "User disabled.");
         }},
        {"enable-user", 1,
         [=, this](const QStringList& a) {
             return change([&](A& admin, QString* e) { return admin.setDisabled(a[0], false, e); },
                           "User enabled.");
         }},
        {"unlock", 1,
         [=, this](const QStringList& a) {
             return change([&](A& admin, QString* e) { return admin.unlock(a[0], e); }, "Account unlocked.");
         }},
        {"grant", 3,
         [=, this](const QStringList& a) {
             return change([&](A& admin, QString* e) { return admin.grant(a[0], right(a), e); },
                           "Right granted.");
         }},
        {"revoke", 3,
         [=, this](const QStringList& a) {
             return change([&](A& admin, QString* e) { return admin.revoke(a[0], right(a), e); },
                           "Right revoked.");
         }},
        {"add-role", 1,
         [=, this](const QStringList& a) {
             return change([&](A& admin, QString* e) { return admin.addRole(a[0], e); }, "Role added.");
         }},
        {"grant-role", 3,
         [=, this](const QStringList& a) {
             return change([&](A& admin, QString* e) { return admin.grantToRole(a[0], right(a), e); },
                           "Right granted to the role.");
         }},
        {"assign-role", 2,
         [=, this](const QStringList& a) {
             return change([&](A& admin, QString* e) { return admin.assignRole(a[0], a[1], e); },
                           "Role given.");
         }},
    };
}

int ServerAdminTool::run(const QString& command, const QStringList& arguments)
{
    for (const Command& c : commands()) {
        if (c.name != command)
            continue;
        if (arguments.size() != c.argumentCount) {
            fail(QStringLiteral("%1 takes %2 argument(s).").arg(command).arg(c.argumentCount));
            return 2;
        }
        QString error;
        if (command != QLatin1String("create") &&
            !(m_connection = ServerConnection::open(m_options.server, &error)))
            return fail(error);
        return c.action(arguments);
    }
    return -1;
}

int ServerAdminTool::change(const std::function<bool(ServerAdministration&, QString*)>& action,
                            const QString& done)
{
    ServerAdministration admin(*m_connection, actor(), AuditTrail::workstationName());
    QString error;
    if (!action(admin, &error))
        return fail(error);
    if (!done.isEmpty())
        say(done);
    return 0;
}

int ServerAdminTool::withPassword(
    const QString& name,
    const std::function<bool(ServerAdministration&, const SecretBytes&, QString*)>& action,
    const QString& done)
{
    QString error;
    const std::optional<SecretBytes> password = PasswordPrompt::readNewPassword(name, &error);
    if (!password)
        return fail(error);
    return change([&](ServerAdministration& admin, QString* e) { return action(admin, *password, e); }, done);
}

int ServerAdminTool::verify()
{
    const AuditVerification result =
        ServerAdministration(*m_connection, actor(), AuditTrail::workstationName()).verify();
    if (!result.ok) {
        say(result.message);
        return 1;
    }
    say(result.message);
    return 0;
}

int ServerAdminTool::migrate()
{
    QString error;
    const std::unique_ptr<SecurityStore> source =
        m_options.openEmbedded ? m_options.openEmbedded(&error) : std::unique_ptr<SecurityStore>();
    if (!source)
        return fail(error.isEmpty()
                        ? QStringLiteral("migrate needs --database PATH: the embedded store to copy.")
                        : error);
    QString summary;
    if (!ServerMigration(*source, *m_connection, actor(), AuditTrail::workstationName())
             .run(&summary, &error))
        return fail(error);
    say(summary);
    return 0;
}

int ServerAdminTool::create()
{
    QString error;
    if (!ServerSchema::createSite(m_options.server, {}, &error))
        return fail(error);
    say(QStringLiteral("The security store \"%1\" on %2 is at schema version %3.")
            .arg(m_options.server.database, m_options.server.host)
            .arg(ServerSchema::latestVersion()));
    if (!m_options.writePolicyFile)
        return 0;
    SecuritySettings settings;
    settings.backend = SecuritySettings::Backend::Server;
    settings.server = m_options.server;
    if (!SitePolicyFile::writeServer(settings, m_options.adminGroup, &error))
        return fail(error);
    say(QStringLiteral("The system-wide settings file \"%1\" now points every user at the server.")
            .arg(QDir::toNativeSeparators(SettingsStore::systemFilePath())));
    return 0;
}

} // namespace nebra
