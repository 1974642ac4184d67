// Test helper: a workstation that, until MILLISECONDS have passed, logs in
// to the security server as USER, records three audit entries and logs out,
// over and over. Writes "L" for each log-in, "R <sequence>" for each entry
// committed and "O" for each log-out, one a line; failures go to stderr.
//
//   server-writer SOCKET_FOLDER DATABASE USER PASSWORD MILLISECONDS

#include "SecretBytes.h"
#include "ServerConnection.h"
#include "ServerSession.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

using namespace nebra;

namespace {

// Says what failed on stderr; returns the exit code given.
int fail(int code, const char* what, const QString& why)
{
    std::fprintf(stderr, "%s: %s\n", what, qPrintable(why));
    return code;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    ServerSettings settings;
    settings.host = args[1];
    settings.database = args[2];
    QString error;
    const std::unique_ptr<ServerConnection> connection = ServerConnection::open(settings, &error);
    if (!connection)
        return fail(1, "connect", error);
    ServerSession session(*connection,
                          QStringLiteral("workstation-%1").arg(QCoreApplication::applicationPid()));
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < args[5].toLongLong()) {
        const ServerLogIn in = session.logIn(args[3], SecretBytes(args[4].toUtf8()));
        if (in.status != LogInStatus::Success)
            return fail(1, "log-in", QString::number(int(in.status)) + QLatin1Char(' ') + in.error);
        std::printf("L\n");
        for (int i = 0; i < 3; ++i) {
            const qint64 sequence = session.record(
                in.token, "Reader",
                QStringLiteral("Plate read by %1").arg(QCoreApplication::applicationPid()), &error);
            if (sequence == 0)
                return fail(1, "record", error);
            std::printf("R %lld\n", static_cast<long long>(sequence));
        }
        if (!session.logOut(in.token, "Log out", &error))
            return fail(1, "log-out", error);
        std::printf("O\n");
        std::fflush(stdout);
    }
    return 0;
}
