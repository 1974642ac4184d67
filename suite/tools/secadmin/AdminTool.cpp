#include "AdminTool.h"

#include "AdminRights.h"
#include "DocumentReport.h"
#include "EmbeddedAdminTool.h"
#include "SecurityStore.h"
#include "ServerAdminTool.h"
#include "SettingsStore.h"
#include "SignatureReport.h"
#include "SitePolicyFile.h"
#include "SuitePaths.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <cstdio>

namespace nebra {

AdminTool::AdminTool(QIODevice& out, QIODevice& err) : m_report(out, err) {}

AdminTool::~AdminTool() = default;

int AdminTool::main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("nebra-secadmin"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NEBRA_VERSION));
    QCoreApplication::setOrganizationName(QStringLiteral("Nebra"));
    QFile out;
    QFile err;
    out.open(stdout, QIODevice::WriteOnly | QIODevice::Unbuffered);
    err.open(stderr, QIODevice::WriteOnly | QIODevice::Unbuffered);
    return AdminTool(out, err).run(QCoreApplication::arguments());
}

QList<AdminTool::Command> AdminTool::commands()
{
    return changeCommands() + inquiryCommands();
}

QList<AdminTool::Command> AdminTool::changeCommands()
{
    return {
        {"create", "",
         "Create a new security database, its site key and chain head, and set the system-wide policy "
         "that names them (--per-user: a personal database only; --group NAME: shared by the site group; "
         "--admin-group NAME; --reuse-key: use the key file that is there). With --backend postgresql: "
         "the roles, database and schema on the server, brought up to date when they exist",
         0, ""},
        {"add-user", "USER", "Add a user (--full-name TEXT); asks for the password", 1, "User added."},
        {"disable-user", "USER", "Disable a user: no log-in, no rights", 1, "User disabled."},
        {"enable-user", "USER", "Enable a disabled user again", 1, "User enabled."},
        {"set-password", "USER", "Set a user's password; asks for it", 1, "Password set."},
        {"reset-password", "USER", "Set a password the user must change at the next log-in; asks for it", 1,
         "Password reset; it must be changed at the next log-in."},
        {"unlock", "USER", "Unlock an account locked after failed log-ins", 1, "Account unlocked."},
        {"grant", "USER AREA OPERATION", "Grant a right to a user (\"*\" matches any area or operation)", 3,
         "Right granted."},
        {"revoke", "USER AREA OPERATION", "Revoke a right granted to a user", 3, "Right revoked."},
        {"add-role", "ROLE", "Add a role", 1, "Role added."},
        {"grant-role", "ROLE AREA OPERATION", "Grant a right to a role", 3, "Right granted to the role."},
        {"revoke-role", "ROLE AREA OPERATION", "Revoke a right from a role", 3,
         "Right revoked from the role."},
        {"assign-role", "USER ROLE", "Give a user a role", 2, "Role given."},
        {"unassign-role", "USER ROLE", "Take a role from a user", 2, "Role taken away."},
    };
}

// These open an embedded database even with a damaged chain head: they are
// how the administrator looks into it and, having done so, seals it afresh.
QList<AdminTool::Command> AdminTool::inquiryCommands()
{
    return {
        {"list-users", "", "List the users with their state, roles and rights", 0, ""},
        {"audit", "", "Print the audit trail, or export it as CSV with --csv FILE (\"-\": standard output)",
         0, ""},
        {"verify", "",
         "Check the audit trail's chain (and with --anchor COUNT:MAC that it still holds that entry) and the "
         "users' and rights' records; exits with 1 naming the first bad entry",
         0, ""},
        {"verify-documents", "[FOLDER]",
         "Compare every document under FOLDER (default: the data folders' parent directory) with its newest "
         "recorded fingerprint; prints a line for each that needs a reviewer (altered, changed outside the "
         "suite, missing, unrecorded; accepted change for information) and exits with 1 when any but "
         "accepted changes is printed; --csv FILE (\"-\": standard output) writes them as CSV",
         1, "", true},
        {"signatures", "PATH",
         "List each electronic signature of the document (meaning, full name, user, local time) and whether "
         "it still matches the file (valid, or void); exits with 1 unless it has signatures and all are "
         "valid",
         1, ""},
        {"anchor", "", "Print the verified newest entry as COUNT:MAC, to be kept away from this computer", 0,
         ""},
        {"status", "", "Print the effective security policy and where each value comes from", 0, ""},
        {"migrate", "",
         "With --backend postgresql: copy the embedded store --database PATH into a new store on the server",
         0, ""},
        {"reseal-head", "",
         "Seal the audit chain head afresh at the newest entry (after looking into a problem); on a server, "
         "move the head back to the newest entry left after entries were removed",
         0, ""},
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
        "not a terminal;\nnever from the command line. The database, site key and chain head files are "
        "those of the [Security] group\nof the suite's settings file unless --database (and --key-file) "
        "name others.\n");
    return text;
}

QList<QCommandLineOption> AdminTool::storeOptions()
{
    auto option = [](const QString& name, const QString& help, const QString& value = {}) {
        return QCommandLineOption(name, help, value);
    };
    return {
        QCommandLineOption({QStringLiteral("d"), QStringLiteral("database")},
                           QStringLiteral("The security database file."), QStringLiteral("path")),
        option("key-file", "The site key file (default: beside the database).", "path"),
        option("full-name", "Full name for add-user.", "text"),
        option("csv", "audit, verify-documents: write CSV into the file (\"-\": standard output).", "file"),
        option("group", "create: the site group that shares the database.", "name"),
        option("admin-group", "create: the group whose members may administer it.", "name"),
        option("anchor", "verify: an entry printed earlier by anchor.", "count:mac"),
        option("reuse-key", "create: use the site key file that exists."),
        option("per-user", "create: a personal database; no system-wide policy."),
    };
}

QList<QCommandLineOption> AdminTool::serverOptions()
{
    auto option = [](const QString& name, const QString& help, const QString& value) {
        return QCommandLineOption(name, help, value);
    };
    return {
        option("backend", "sqlite (the database file) or postgresql (a security server).", "name"),
        option("server", "The server's socket folder or host name.", "host"),
        option("server-port", "The server's port (default 5432).", "port"),
        option("server-database", "The store's database (default nebra_security).", "name"),
        option("server-user", "The administrator's role on the server (default: the login name).", "role"),
    };
}

bool AdminTool::parse(const QStringList& arguments, QStringList* positional, int* exitCode)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Administers the suite's security database: users, roles, rights and the audit trail."));
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions(storeOptions());
    parser.addOptions(serverOptions());
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("What to do (see below)."),
                                 QStringLiteral("<command> [arguments]"));
    *exitCode = Usage;
    if (!parser.parse(arguments)) {
        m_report.fail(parser.errorText());
        return false;
    }
    if (parser.isSet(help)) {
        m_report.say(parser.helpText() + commandHelp());
        *exitCode = Done;
        return false;
    }
    keep(parser);
    *positional = parser.positionalArguments();
    return true;
}

void AdminTool::keep(const QCommandLineParser& parser)
{
    auto value = [&](const char* name) { return parser.value(QLatin1String(name)); };
    m_database = value("database");
    m_keyFile = value("key-file");
    m_fullName = value("full-name");
    m_csvPath = value("csv");
    m_group = value("group");
    m_adminGroup = value("admin-group");
    m_anchor = value("anchor");
    m_reuseKey = parser.isSet(QStringLiteral("reuse-key"));
    m_perUser = parser.isSet(QStringLiteral("per-user"));
    m_backend = value("backend");
    m_server = {value("server"), value("server-port"), value("server-database"), value("server-user")};
}

int AdminTool::run(const QStringList& arguments)
{
    QStringList positional;
    int exitCode = Usage;
    if (!parse(arguments, &positional, &exitCode))
        return exitCode;
    if (positional.isEmpty()) {
        m_report.fail(QStringLiteral("no command given; see nebra-secadmin --help."));
        return Usage;
    }
    const QString name = positional.takeFirst();
    for (const Command& command : commands()) {
        if (command.name != name)
            continue;
        if (positional.size() != command.argumentCount &&
            !(command.lastOptional && positional.size() == command.argumentCount - 1)) {
            m_report.fail(QStringLiteral(
                              "usage: nebra-secadmin %1 %2 (passwords are never taken from the command line)")
                              .arg(command.name, command.arguments));
            return Usage;
        }
        return execute(command, positional);
    }
    m_report.fail(QStringLiteral("unknown command \"%1\"; see nebra-secadmin --help.").arg(name));
    return Usage;
}

int AdminTool::execute(const Command& command, const QStringList& arguments)
{
    SettingsStore settingsFile;
    SecuritySettings settings = SecuritySettings::fromStore(settingsFile, m_database);
    if (!m_keyFile.isEmpty())
        settings.siteKeyFile = m_keyFile;
    if (command.name == QLatin1String("status"))
        return status(settingsFile, settings);
    if (!settings.policyError.isEmpty())
        return m_report.fail(settings.policyError);
    int exit = Usage;
    if (m_backend == QLatin1String("postgresql") ||
        (m_backend.isEmpty() && settings.backend == SecuritySettings::Backend::Server))
        exit = onServer(command, arguments, settings);
    else if (m_backend.isEmpty() || m_backend == QLatin1String("sqlite"))
        exit = onEmbedded(command, arguments, settings);
    else
        m_report.fail(QStringLiteral("unknown back end \"%1\": use sqlite or postgresql.").arg(m_backend));
    if (exit == Done && !command.done.isEmpty())
        m_report.say(command.done);
    return exit;
}

int AdminTool::onEmbedded(const Command& command, const QStringList& arguments,
                          const SecuritySettings& settings)
{
    EmbeddedAdminTool::Options options;
    options.verifyDocuments = documentCheck(arguments);
    options.checkSignatures = signatureCheck(arguments);
    options.settings = settings;
    options.fullName = m_fullName;
    options.csvPath = m_csvPath;
    options.anchor = m_anchor;
    options.group = m_group;
    options.adminGroup = m_adminGroup;
    options.reuseKey = m_reuseKey;
    options.perUser = m_perUser;
    return EmbeddedAdminTool(m_report, std::move(options)).run(command.name, arguments);
}

// The server decides who may administer it (members of nebra_admin), so no local check but for
// create, which also writes the system-wide file.
int AdminTool::onServer(const Command& command, const QStringList& arguments,
                        const SecuritySettings& settings)
{
    QString error;
    if (command.name == QLatin1String("create") && !AdminRights::mayAdminister(settings, &error))
        return m_report.fail(error);
    ServerAdminTool::Options options;
    options.verifyDocuments = documentCheck(arguments);
    options.checkSignatures = signatureCheck(arguments);
    options.server = settings.server;
    if (!m_server[0].isEmpty())
        options.server.host = m_server[0];
    if (!m_server[1].isEmpty())
        options.server.port = m_server[1].toInt();
    if (!m_server[2].isEmpty())
        options.server.database = m_server[2];
    options.server.user = m_server[3];
    options.server.password.clear();
    // A chain check or a migration of a long trail may take its time.
    options.server.statementTimeoutSeconds = 0;
    if (!options.server.isLocalSocket() && options.server.sslMode.isEmpty())
        options.server.sslMode = QStringLiteral("verify-full");
    options.fullName = m_fullName;
    options.csvPath = m_csvPath;
    options.anchor = m_anchor;
    options.adminGroup = m_adminGroup;
    options.idleMinutes = settings.timeOutMinutes;
    options.passwordMinimumLength = settings.passwordMinimumLength;
    options.writePolicyFile = !m_perUser;
    if (!m_database.isEmpty())
        options.openEmbedded = [settings](QString* e) { return SecurityStore::open(settings, e); };
    const int exit = ServerAdminTool(m_report, options).run(command.name, arguments);
    if (exit >= 0)
        return exit;
    m_report.fail(QStringLiteral("\"%1\" is not available on a security server.").arg(command.name));
    return Usage;
}

std::function<int(const QHash<QString, DocumentRecord>&)>
AdminTool::documentCheck(const QStringList& arguments)
{
    return [this, arguments](const QHash<QString, DocumentRecord>& records) {
        SettingsStore settingsFile;
        SuitePaths paths(settingsFile);
        paths.Initialise();
        const QString folder =
            arguments.isEmpty() ? paths.ParentDirectory() : QFileInfo(arguments.first()).absoluteFilePath();
        const QList<DocumentReport::Line> lines =
            DocumentReport::check(DocumentFolders::of(paths), folder, records);
        QString error;
        if (!m_report.write(m_csvPath.isEmpty() ? DocumentReport::text(lines) : DocumentReport::csv(lines),
                            m_csvPath.isEmpty() ? QStringLiteral("-") : m_csvPath, &error))
            return m_report.fail(error);
        return DocumentReport::exitStatus(lines);
    };
}

SignatureCheck AdminTool::signatureCheck(const QStringList& arguments)
{
    return [this, arguments](const SignatureReader& read) {
        // Signatures name the document's absolute path, as the data folders do.
        const QString path =
            arguments.isEmpty() ? QString() : QFileInfo(arguments.first()).absoluteFilePath();
        QList<DocumentSignature> signatures;
        QString error;
        if (!read(path, &signatures, &error))
            return m_report.fail(error);
        const std::optional<QByteArray> sha256 = SignatureReport::sha256Of(path);
        m_report.say(SignatureReport::text(path, signatures, sha256));
        return SignatureReport::exitStatus(signatures, sha256);
    };
}

int AdminTool::status(const SettingsStore& store, const SecuritySettings& settings)
{
    m_report.say(SitePolicyFile::describe(store, settings));
    return settings.policyError.isEmpty() ? Done : Failed;
}

} // namespace nebra
