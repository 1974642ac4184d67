#include "AdminTool.h"

#include "AdminRights.h"
#include "AuditReport.h"
#include "PasswordPrompt.h"
#include "SecurityAdministration.h"
#include "SecurityStore.h"
#include "ServerAdminTool.h"
#include "SettingsStore.h"
#include "SitePolicyFile.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QIODevice>

#include <pwd.h>
#include <unistd.h>

namespace nebra {

AdminTool::AdminTool(QIODevice& out, QIODevice& err) : m_out(out), m_err(err) {}

AdminTool::~AdminTool() = default;

void AdminTool::say(const QString& text)
{
    m_out.write(text.toUtf8() + (text.endsWith(QLatin1Char('\n')) ? "" : "\n"));
}

int AdminTool::fail(const QString& message)
{
    m_err.write(QStringLiteral("nebra-secadmin: %1\n").arg(message).toUtf8());
    return Failed;
}

QString AdminTool::actor()
{
    const passwd* entry = getpwuid(getuid());
    const QString login = entry ? QString::fromLocal8Bit(entry->pw_name) : qEnvironmentVariable("USER");
    return login + QStringLiteral(" (nebra-secadmin)");
}

QList<AdminTool::Command> AdminTool::commands()
{
    return userCommands() + rightCommands() + inquiryCommands();
}

QList<AdminTool::Command> AdminTool::userCommands()
{
    auto admin = [this] { return SecurityAdministration(*m_store, actor()); };
    using A = Access;
    return {
        {"create",
         "",
         "Create a new security database, its site key and chain head, and set the system-wide policy "
         "that names them (--per-user: a personal database only; --group NAME: shared by the site group; "
         "--admin-group NAME; --reuse-key: use the key file that is there)",
         A::Create,
         0,
         {}},
        {"add-user", "USER", "Add a user (--full-name TEXT); asks for the password", A::IntactHead, 1,
         [this](const QStringList& a) { return addUser(a[0]); }},
        {"disable-user", "USER", "Disable a user: no log-in, no rights", A::IntactHead, 1,
         [=, this](const QStringList& a) {
             return change([&](QString* e) { return admin().setDisabled(a[0], true, e); }, "User disabled.");
         }},
        {"enable-user", "USER", "Enable a disabled user again", A::IntactHead, 1,
         [=, this](const QStringList& a) {
             return change([&](QString* e) { return admin().setDisabled(a[0], false, e); }, "User enabled.");
         }},
        {"set-password", "USER", "Set a user's password; asks for it", A::IntactHead, 1,
         [this](const QStringList& a) { return setPassword(a[0], false); }},
        {"reset-password", "USER", "Set a password the user must change at the next log-in; asks for it",
         A::IntactHead, 1, [this](const QStringList& a) { return setPassword(a[0], true); }},
        {"unlock", "USER", "Unlock an account locked after failed log-ins", A::IntactHead, 1,
         [=, this](const QStringList& a) {
             return change([&](QString* e) { return admin().unlock(a[0], e); }, "Account unlocked.");
         }},
    };
}

QList<AdminTool::Command> AdminTool::rightCommands()
{
    auto admin = [this] { return SecurityAdministration(*m_store, actor()); };
    auto right = [](const QStringList& a, int from) { return Right{a[from], a[from + 1]}; };
    using A = Access;
    return {
        {"grant", "USER AREA OPERATION", "Grant a right to a user (\"*\" matches any area or operation)",
         A::IntactHead, 3,
         [=, this](const QStringList& a) {
             return change([&](QString* e) { return admin().grant(a[0], right(a, 1), e); }, "Right granted.");
         }},
        {"revoke", "USER AREA OPERATION", "Revoke a right granted to a user", A::IntactHead, 3,
         [=, this](const QStringList& a) {
             return change([&](QString* e) { return admin().revoke(a[0], right(a, 1), e); },
                           "Right revoked.");
         }},
        {"add-role", "ROLE", "Add a role", A::IntactHead, 1,
         [=, this](const QStringList& a) {
             return change([&](QString* e) { return admin().addRole(a[0], e); }, "Role added.");
         }},
        {"grant-role", "ROLE AREA OPERATION", "Grant a right to a role", A::IntactHead, 3,
         [=, this](const QStringList& a) {
             return change([&](QString* e) { return admin().grantToRole(a[0], right(a, 1), e); },
                           "Right granted to the role.");
         }},
        {"revoke-role", "ROLE AREA OPERATION", "Revoke a right from a role", A::IntactHead, 3,
         [=, this](const QStringList& a) {
             return change([&](QString* e) { return admin().revokeFromRole(a[0], right(a, 1), e); },
                           "Right revoked from the role.");
         }},
        {"assign-role", "USER ROLE", "Give a user a role", A::IntactHead, 2,
         [=, this](const QStringList& a) {
             return change([&](QString* e) { return admin().assignRole(a[0], a[1], e); }, "Role given.");
         }},
        {"unassign-role", "USER ROLE", "Take a role from a user", A::IntactHead, 2,
         [=, this](const QStringList& a) {
             return change([&](QString* e) { return admin().unassignRole(a[0], a[1], e); },
                           "Role taken away.");
         }},
    };
}

QList<AdminTool::Command> AdminTool::inquiryCommands()
{
    // These open the database even with a damaged chain head: they are how
    // the administrator looks into it and, having done so, seals it afresh.
    using A = Access;
    return {
        {"list-users", "", "List the users with their state, roles and rights", A::AnyHead, 0,
         [this](const QStringList&) { return listUsers(); }},
        {"audit", "", "Print the audit trail, or export it as CSV with --csv FILE (\"-\": standard output)",
         A::AnyHead, 0, [this](const QStringList&) { return printAudit(); }},
        {"verify", "",
         "Check the audit trail's chain (and with --anchor COUNT:MAC that it still holds that entry) and the "
         "users' and rights' records; exits with 1 naming the first bad entry",
         A::AnyHead, 0, [this](const QStringList&) { return verify(); }},
        {"anchor", "", "Print the verified newest entry as COUNT:MAC, to be kept away from this computer",
         A::AnyHead, 0, [this](const QStringList&) { return anchor(); }},
        {"status",
         "",
         "Print the effective security policy and where each value comes from",
         A::Status,
         0,
         {}},
        {"migrate", "",
         "With --backend postgresql: copy the embedded store --database PATH into a new store on the server",
         A::AnyHead, 0,
         [this](const QStringList&) {
             return fail(QStringLiteral("migrate copies to a security server: add --backend postgresql."));
         }},
        {"reseal-head", "",
         "Seal the audit chain head afresh at the newest entry (after looking into a problem)", A::AnyHead, 0,
         [this](const QStringList&) { return reseal(); }},
    };
}

QString AdminTool::commandHelp()
{
    QString text = QStringLiteral("\nCommands:\n");
    for (const Command& c : commands())
        text += QStringLiteral("  %1\n      %2\n")
                    .arg((c.name + QLatin1Char(' ') + c.arguments).trimmed(), c.summary);
    text += QStringLiteral(
        "\nPasswords are read from the terminal without echo, or as one line of standard input when that is "
        "not "
        "a terminal;\nnever from the command line. The database, site key and chain head files are those of "
        "the "
        "[Security] group\nof the suite's settings file unless --database (and --key-file) name others.\n");
    return text;
}

bool AdminTool::parse(const QStringList& arguments, QStringList* positional, int* exitCode)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Administers the suite's security database: users, roles, "
                       "rights and the audit trail."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption database({QStringLiteral("d"), QStringLiteral("database")},
                                      QStringLiteral("The security database file."), QStringLiteral("path"));
    const QCommandLineOption keyFile(QStringLiteral("key-file"),
                                     QStringLiteral("The site key file (default: beside the database)."),
                                     QStringLiteral("path"));
    const QCommandLineOption fullName(QStringLiteral("full-name"), QStringLiteral("Full name for add-user."),
                                      QStringLiteral("text"));
    const QCommandLineOption csv(QStringLiteral("csv"), QStringLiteral("Export the audit trail as CSV."),
                                 QStringLiteral("file"));
    const QCommandLineOption group(QStringLiteral("group"),
                                   QStringLiteral("create: the site group that shares the database."),
                                   QStringLiteral("name"));
    const QCommandLineOption adminGroup(QStringLiteral("admin-group"),
                                        QStringLiteral("create: the group whose members may administer it."),
                                        QStringLiteral("name"));
    const QCommandLineOption anchor(QStringLiteral("anchor"),
                                    QStringLiteral("verify: an entry printed earlier by anchor."),
                                    QStringLiteral("count:mac"));
    const QCommandLineOption reuseKey(QStringLiteral("reuse-key"),
                                      QStringLiteral("create: use the site key file that exists."));
    const QCommandLineOption perUser(QStringLiteral("per-user"),
                                     QStringLiteral("create: a personal database; no system-wide policy."));
    parser.addOptions({database, keyFile, fullName, csv, group, adminGroup, anchor, reuseKey, perUser});
    const QList<QCommandLineOption> server = serverOptions();
    parser.addOptions(server);
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("What to do (see below)."),
                                 QStringLiteral("<command> [arguments]"));
    *exitCode = Usage;
    if (!parser.parse(arguments)) {
        fail(parser.errorText());
        return false;
    }
    if (parser.isSet(help)) {
        say(parser.helpText() + commandHelp());
        *exitCode = Done;
        return false;
    }
    m_database = parser.value(database);
    m_keyFile = parser.value(keyFile);
    m_fullName = parser.value(fullName);
    m_csvPath = parser.value(csv);
    m_group = parser.value(group);
    m_adminGroup = parser.value(adminGroup);
    m_anchor = parser.value(anchor);
    m_reuseKey = parser.isSet(reuseKey);
    m_perUser = parser.isSet(perUser);
    m_backend = parser.value(server[0]);
    m_server = {parser.value(server[1]), parser.value(server[2]), parser.value(server[3]),
                parser.value(server[4])};
    *positional = parser.positionalArguments();
    return true;
}

int AdminTool::run(const QStringList& arguments)
{
    QStringList positional;
    int exitCode = Usage;
    if (!parse(arguments, &positional, &exitCode))
        return exitCode;
    if (positional.isEmpty()) {
        fail(QStringLiteral("no command given; see nebra-secadmin --help."));
        return Usage;
    }
    const QString name = positional.takeFirst();
    for (const Command& command : commands()) {
        if (command.name != name)
            continue;
        if (positional.size() != command.argumentCount) {
            fail(QStringLiteral(
                     "usage: nebra-secadmin %1 %2 (passwords are never taken from the command line)")
                     .arg(command.name, command.arguments));
            return Usage;
        }
        return execute(command, positional);
    }
    fail(QStringLiteral("unknown command \"%1\"; see nebra-secadmin --help.").arg(name));
    return Usage;
}

int AdminTool::execute(const Command& command, const QStringList& arguments)
{
    SettingsStore settingsFile;
    SecuritySettings settings = SecuritySettings::fromStore(settingsFile, m_database);
    if (!m_keyFile.isEmpty())
        settings.siteKeyFile = m_keyFile;
    if (command.access == Access::Status)
        return status(settingsFile, settings);
    QString error;
    if (!settings.policyError.isEmpty())
        return fail(settings.policyError);
    if (m_backend == QLatin1String("postgresql") ||
        (m_backend.isEmpty() && settings.backend == SecuritySettings::Backend::Server))
        return runOnServer(command, arguments, settings);
    if (!m_backend.isEmpty() && m_backend != QLatin1String("sqlite")) {
        fail(QStringLiteral("unknown back end \"%1\": use sqlite or postgresql.").arg(m_backend));
        return Usage;
    }
    if (command.access == Access::Create && !m_perUser)
        settings.systemWide = true; // this database is to be the site's
    if (!AdminRights::mayAdminister(settings, &error))
        return fail(error);
    if (command.access == Access::Create)
        return create(settings);
    m_store = SecurityStore::open(settings, &error,
                                  command.access == Access::IntactHead ? SecurityStore::HeadCheck::Required
                                                                       : SecurityStore::HeadCheck::Skipped);
    if (!m_store)
        return fail(error);
    return command.action(arguments);
}

QList<QCommandLineOption> AdminTool::serverOptions()
{
    return {
        {QStringLiteral("backend"),
         QStringLiteral("sqlite (the database file) or postgresql (a security server)."),
         QStringLiteral("name")},
        {QStringLiteral("server"), QStringLiteral("The server's socket folder or host name."),
         QStringLiteral("host")},
        {QStringLiteral("server-port"), QStringLiteral("The server's port (default 5432)."),
         QStringLiteral("port")},
        {QStringLiteral("server-database"), QStringLiteral("The store's database (default nebra_security)."),
         QStringLiteral("name")},
        {QStringLiteral("server-user"),
         QStringLiteral("The administrator's role on the server (default: the login name)."),
         QStringLiteral("role")},
    };
}

// The server decides who may administer it (its owner role), so no local check but for create,
// which also writes the system-wide file.
int AdminTool::runOnServer(const Command& command, const QStringList& arguments,
                           const SecuritySettings& settings)
{
    QString error;
    if (command.access == Access::Create && !AdminRights::mayAdminister(settings, &error))
        return fail(error);
    ServerAdminTool::Options options;
    options.server = settings.server;
    if (!m_server[0].isEmpty())
        options.server.host = m_server[0];
    if (!m_server[1].isEmpty())
        options.server.port = m_server[1].toInt();
    if (!m_server[2].isEmpty())
        options.server.database = m_server[2];
    options.server.user = m_server[3];
    options.server.password.clear();
    if (!options.server.isLocalSocket() && options.server.sslMode.isEmpty())
        options.server.sslMode = QStringLiteral("verify-full");
    options.fullName = m_fullName;
    options.adminGroup = m_adminGroup;
    options.writePolicyFile = !m_perUser;
    if (!m_database.isEmpty())
        options.openEmbedded = [settings](QString* e) { return SecurityStore::open(settings, e); };
    const int exit = ServerAdminTool(m_out, m_err, options).run(command.name, arguments);
    if (exit >= 0)
        return exit;
    fail(QStringLiteral("\"%1\" is not available on a security server.").arg(command.name));
    return Usage;
}

int AdminTool::create(const SecuritySettings& settings)
{
    QString error;
    if (!m_group.isEmpty() &&
        !AdminRights::prepareSharedFolder(QFileInfo(settings.databasePath).absolutePath(), m_group, &error))
        return fail(error);
    m_store = SecurityStore::create(settings, actor(), &error,
                                    m_reuseKey ? SecurityStore::KeyUse::Reuse : SecurityStore::KeyUse::New);
    if (!m_store)
        return fail(error);
    say(QStringLiteral("Created the security database \"%1\" with the site key \"%2\".")
            .arg(QDir::toNativeSeparators(settings.databasePath),
                 QDir::toNativeSeparators(settings.siteKeyFile)));
    if (m_perUser)
        return Done;
    if (!SitePolicyFile::write(settings, m_adminGroup, &error))
        return fail(error);
    say(QStringLiteral("The system-wide settings file \"%1\" now turns security on for every user.")
            .arg(QDir::toNativeSeparators(SettingsStore::systemFilePath())));
    return Done;
}

int AdminTool::status(const SettingsStore& store, const SecuritySettings& settings)
{
    say(SitePolicyFile::describe(store, settings));
    return settings.policyError.isEmpty() ? Done : Failed;
}

int AdminTool::change(const std::function<bool(QString*)>& action, const QString& done)
{
    QString error;
    if (!action(&error))
        return fail(error);
    say(done);
    return Done;
}

int AdminTool::addUser(const QString& name)
{
    QString error;
    const std::optional<SecretBytes> password = PasswordPrompt::readNewPassword(name, &error);
    if (!password)
        return fail(error);
    return change(
        [&](QString* e) {
            return SecurityAdministration(*m_store, actor()).addUser(name, m_fullName, *password, e);
        },
        QStringLiteral("User added."));
}

int AdminTool::setPassword(const QString& name, bool mustChange)
{
    QString error;
    if (!m_store->users().find(name, &error))
        return fail(error.isEmpty() ? QStringLiteral("There is no user \"%1\".").arg(name) : error);
    const std::optional<SecretBytes> password = PasswordPrompt::readNewPassword(name, &error);
    if (!password)
        return fail(error);
    return change(
        [&](QString* e) {
            return SecurityAdministration(*m_store, actor()).setPassword(name, *password, mustChange, e);
        },
        mustChange ? QStringLiteral("Password reset; it must be changed at the next log-in.")
                   : QStringLiteral("Password set."));
}

int AdminTool::listUsers()
{
    QString error;
    const QList<UserRecord> users = m_store->users().users(&error);
    if (!error.isEmpty())
        return fail(error);
    for (const UserRecord& user : users) {
        QStringList state;
        state << (user.disabled ? QStringLiteral("disabled") : QStringLiteral("enabled"));
        if (user.locked)
            state << QStringLiteral("locked");
        if (user.failedLogIns > 0)
            state << QStringLiteral("%1 failed log-ins").arg(user.failedLogIns);
        if (user.mustChangePassword)
            state << QStringLiteral("must change password");
        if (user.passwordHash.isEmpty())
            state << QStringLiteral("no password");
        if (!user.intact)
            state << QStringLiteral("RECORD ALTERED");
        QStringList rights;
        for (const Right& r : m_store->users().rightsOf(user.name, &error))
            rights << r.area + QLatin1Char('/') + r.operation;
        say(QStringLiteral("%1\t%2\t%3\troles: %4\trights: %5")
                .arg(user.name, user.fullName, state.join(QStringLiteral(", ")),
                     m_store->users().rolesOf(user.name, &error).join(QStringLiteral(", ")),
                     rights.join(QStringLiteral(", "))));
    }
    return error.isEmpty() ? Done : fail(error);
}

int AdminTool::printAudit()
{
    QString error;
    const bool ok = m_csvPath.isEmpty() ? AuditReport::print(m_store->audit(), m_out, &error)
                                        : AuditReport::exportCsv(m_store->audit(), m_csvPath, m_out, &error);
    if (!ok)
        return fail(error);
    if (!m_csvPath.isEmpty() && m_csvPath != QLatin1String("-"))
        say(QStringLiteral("Exported to \"%1\".").arg(QDir::toNativeSeparators(m_csvPath)));
    return Done;
}

int AdminTool::verify()
{
    std::optional<AuditAnchor> anchor;
    if (!m_anchor.isEmpty() && !(anchor = AuditAnchor::parse(m_anchor))) {
        fail(QStringLiteral("\"%1\" is not an anchor; give COUNT:MAC as printed by nebra-secadmin anchor.")
                 .arg(m_anchor));
        return Usage;
    }
    const AuditVerification result = m_store->audit().verify(anchor);
    QString error;
    const QStringList altered = m_store->users().alteredRows(&error);
    for (const QString& row : altered)
        say(row);
    if (!error.isEmpty())
        return fail(error);
    if (result.ok && altered.isEmpty()) {
        say(result.message);
        if (anchor)
            say(QStringLiteral("The audit trail still holds the anchor's entry %1.").arg(anchor->count));
        return Done;
    }
    if (result.ok) {
        say(result.message);
        say(QStringLiteral("Users or rights have been altered outside the suite."));
        return Failed;
    }
    if (result.firstBadSequence > 0)
        say(QStringLiteral("First bad entry: %1").arg(result.firstBadSequence));
    say(result.message);
    say(QStringLiteral("The audit trail is NOT intact."));
    return Failed;
}

int AdminTool::anchor()
{
    const AuditVerification result = m_store->audit().verify();
    if (!result.ok) {
        say(result.message);
        return fail(QStringLiteral("the audit trail is not intact, so it gives no anchor."));
    }
    if (result.entryCount == 0)
        return fail(QStringLiteral("the audit trail is empty."));
    say(AuditAnchor{result.entryCount, result.newestMac}.toString());
    return Done;
}

int AdminTool::reseal()
{
    const AuditVerification before = m_store->audit().verify();
    say(QStringLiteral("Before: %1").arg(before.message));
    QString error;
    if (!SecurityAdministration(*m_store, actor()).resealChainHead(&error))
        return fail(error);
    say(QStringLiteral("The audit chain head now seals the newest entry."));
    return Done;
}

} // namespace nebra
