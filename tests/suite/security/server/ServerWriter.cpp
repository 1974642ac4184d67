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

bool oneSession(ServerSession& session, const QString& user, const QString& password)
{
    const ServerLogIn in = session.logIn(user, SecretBytes(password.toUtf8()));
    if (in.status != LogInStatus::Success) {
        std::fprintf(stderr, "log-in: %d %s\n", int(in.status), qPrintable(in.error));
        return false;
    }
    std::printf("L\n");
    QString error;
    for (int i = 0; i < 3; ++i) {
        const qint64 sequence = session.record(
            in.token, "Reader", QStringLiteral("Plate read by %1").arg(QCoreApplication::applicationPid()),
            &error);
        if (sequence == 0) {
            std::fprintf(stderr, "record: %s\n", qPrintable(error));
            return false;
        }
        std::printf("R %lld\n", static_cast<long long>(sequence));
    }
    if (!session.logOut(in.token, "Log out", &error)) {
        std::fprintf(stderr, "log-out: %s\n", qPrintable(error));
        return false;
    }
    std::printf("O\n");
    std::fflush(stdout);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() != 6) {
        std::fprintf(stderr, "usage: server-writer SOCKET_FOLDER DATABASE USER PASSWORD MILLISECONDS\n");
        return 2;
    }
    ServerSettings settings;
    settings.host = args[1];
    settings.database = args[2];
    QString error;
    const std::unique_ptr<ServerConnection> connection = ServerConnection::open(settings, &error);
    if (!connection) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 1;
    }
    ServerSession session(*connection,
                          QStringLiteral("workstation-%1").arg(QCoreApplication::applicationPid()));
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < args[5].toLongLong())
        if (!oneSession(session, args[3], args[4]))
            return 1;
    return 0;
}
