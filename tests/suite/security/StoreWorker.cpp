// Test helper: a second process at work on the security store, one way a run.
// Failures go to stderr, with exit code 1.
//
//   store-worker append DATABASE KEYFILE HEADFILE
//     Appends audit entries as fast as it can and writes "committed <sequence>"
//     after each append has returned, until it is killed.
//   store-worker log-in USER PASSWORD COUNT
//     Tries to log in COUNT times against the database that the settings name
//     (the policy of the system-wide file, as the suite's programs read it) and
//     writes each attempt's LogInStatus as a number on a line of its own.
//   store-worker server SOCKET_FOLDER DATABASE USER PASSWORD MILLISECONDS
//     A workstation that, until MILLISECONDS have passed, logs in to the security
//     server as USER, records three audit entries and logs out, over and over.
//     Writes "L" for each log-in, "R <sequence>" for each entry committed and
//     "O" for each log-out, one a line.

#include "Authenticator.h"
#include "SecretBytes.h"
#include "SecurityStore.h"
#include "ServerConnection.h"
#include "ServerSession.h"
#include "SettingsStore.h"
#include "UserFolders.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

using namespace nebra;

namespace {

int fail(const char* what, const QString& why)
{
    std::fprintf(stderr, "%s: %s\n", what, qPrintable(why));
    return 1;
}

int append(const QStringList& args)
{
    SecuritySettings settings;
    settings.databasePath = args[2];
    settings.siteKeyFile = args[3];
    settings.chainHeadFile = args[4];
    QString error;
    const std::unique_ptr<SecurityStore> store = SecurityStore::open(settings, &error);
    if (!store)
        return fail("open", error);
    for (int i = 1;; ++i) {
        const AuditAppendResult result = store->audit().append(
            "appender", "General", QStringLiteral("Entry number %1 of the appender").arg(i));
        if (result.sequence == 0 || !result.error.isEmpty())
            return fail("append", result.error);
        std::printf("committed %lld\n", static_cast<long long>(result.sequence));
    }
}

int logIn(const QStringList& args)
{
    test::UserFolders::adoptTestPolicyFile();
    QString error;
    const std::unique_ptr<SecurityStore> store =
        SecurityStore::open(SecuritySettings::fromStore(SettingsStore()), &error);
    if (!store)
        return fail("open", error);
    Authenticator authenticator(*store);
    for (int i = 0; i < args[4].toInt(); ++i) {
        const LogInResult result = authenticator.authenticate(args[2], SecretBytes(args[3].toUtf8()));
        std::printf("%d\n", int(result.status));
        if (result.status == LogInStatus::Error)
            fail("log-in", result.error);
    }
    return 0;
}

int workstation(const QStringList& args)
{
    ServerSettings settings;
    settings.host = args[2];
    settings.database = args[3];
    QString error;
    const std::unique_ptr<ServerConnection> connection = ServerConnection::open(settings, &error);
    if (!connection)
        return fail("connect", error);
    const QString pid = QString::number(QCoreApplication::applicationPid());
    ServerSession session(*connection, "workstation-" + pid);
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < args[6].toLongLong()) {
        const ServerLogIn in = session.logIn(args[4], SecretBytes(args[5].toUtf8()));
        if (in.status != LogInStatus::Success)
            return fail("log-in", QString::number(int(in.status)) + QLatin1Char(' ') + in.error);
        std::printf("L\n");
        for (int i = 0; i < 3; ++i) {
            const qint64 sequence = session.record(in.token, "Reader", "Plate read by " + pid, &error);
            if (sequence == 0)
                return fail("record", error);
            std::printf("R %lld\n", static_cast<long long>(sequence));
        }
        if (!session.logOut(in.token, "Log out", &error))
            return fail("log-out", error);
        std::printf("O\n");
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // each line reaches the test as it is written
    const QStringList args = QCoreApplication::arguments();
    const QString mode = args.value(1);
    return mode == "append" ? append(args) : mode == "log-in" ? logIn(args) : workstation(args);
}
