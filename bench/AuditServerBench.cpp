// Security server benchmark: one log-in and one audit entry over the local
// socket (the entry chained and MAC'd in the server, the head row locked,
// committed with synchronous_commit on and fsync), each beside a bare
// INSERT of the same row into a plain table of the same server with the
// same durability, in the same run; then audit entries per second with 1, 4
// and 8 writers at once, each with its own connection. The server is a
// throw-away cluster in a temporary folder, at the server's default
// durability settings.
//
//   bench_audit_server [entries] [log-ins] [seconds per writer count]   (defaults: 2000, 20, 5)

#include "BenchStats.h"
#include "PostgresServer.h"
#include "SecretBytes.h"
#include "ServerAdministration.h"
#include "ServerConnection.h"
#include "ServerSession.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <vector>

using namespace nebra;

namespace {

struct Stats
{
    double median;
    double p99;
};

Stats stats(const std::vector<double>& us)
{
    return {bench::median(us), bench::percentile(us, 0.99)};
}

std::unique_ptr<ServerConnection> connect(const ServerSettings& settings)
{
    QString error;
    std::unique_ptr<ServerConnection> c = ServerConnection::open(settings, &error);
    if (!c)
        qFatal("%s", qPrintable(error));
    return c;
}

// The plain way to keep the same row durably: one INSERT per transaction.
class BareInsert
{
public:
    explicit BareInsert(ServerConnection& connection) : m_connection(connection)
    {
        QString error;
        if (!m_connection.execScript(
                QStringLiteral("CREATE TABLE bare_trail(seq bigint PRIMARY KEY, utc text, "
                               "user_name text, workstation text, area text, text text, "
                               "mac bytea)"),
                &error))
            qFatal("%s", qPrintable(error));
    }
    void insert(qint64 seq, const QString& text)
    {
        ServerResult q;
        QString error;
        if (!m_connection.exec(q, QStringLiteral("INSERT INTO bare_trail VALUES (?, ?, ?, ?, ?, ?, ?)"),
                               {seq, QStringLiteral("2026-04-02T10:11:12.345Z"), QStringLiteral("jsmith"),
                                QStringLiteral("pc"), QStringLiteral("General"), text,
                                QByteArray(32, '\x5a')},
                               &error))
            qFatal("%s", qPrintable(error));
    }

private:
    ServerConnection& m_connection;
};

void measureAppends(ServerSession& session, const QString& token, BareInsert& bare, int entries)
{
    std::vector<double> ours, plain;
    QString error;
    for (int i = 0; i < entries; ++i) {
        const QString text =
            QStringLiteral("Run protocol: /home/jsmith/Nebra Data/My Assays/Protocols/%1.apr").arg(i);
        QElapsedTimer t;
        t.start();
        bare.insert(i + 1, text);
        plain.push_back(t.nsecsElapsed() / 1000.0);
        t.restart();
        if (session.record(token, QStringLiteral("General"), text, &error) == 0)
            qFatal("%s", qPrintable(error));
        ours.push_back(t.nsecsElapsed() / 1000.0);
    }
    const Stats a = stats(ours), b = stats(plain);
    std::printf("audit entry, %d entries: p50 %.0f us, p99 %.0f us\n", entries, a.median, a.p99);
    std::printf("bare insert, %d entries: p50 %.0f us, p99 %.0f us\n", entries, b.median, b.p99);
    std::printf("ratio entry/bare: p50 %.2f, p99 %.2f\n", a.median / b.median, a.p99 / b.p99);
}

void measureLogIns(ServerSession& session, int count)
{
    std::vector<double> times;
    for (int i = 0; i < count; ++i) {
        QElapsedTimer t;
        t.start();
        if (session.logIn(QStringLiteral("jsmith"), SecretBytes("correct horse")).status !=
            LogInStatus::Success)
            qFatal("log-in failed");
        times.push_back(t.nsecsElapsed() / 1000.0);
    }
    const Stats l = stats(times);
    std::printf("log-in (bcrypt cost 12 in the server), %d runs: p50 %.1f ms, p99 %.1f ms\n", count,
                l.median / 1000, l.p99 / 1000);
}

// Writers, each with its own connection and session, append until the time is up.
double appendsPerSecond(const ServerSettings& client, int writers, int seconds)
{
    std::atomic<qint64> total{0};
    std::vector<QThread*> threads;
    for (int w = 0; w < writers; ++w)
        threads.push_back(QThread::create([&client, &total, seconds] {
            const std::unique_ptr<ServerConnection> c = connect(client);
            ServerSession session(*c, QStringLiteral("pc"));
            const QString token = session.logIn(QStringLiteral("jsmith"), SecretBytes("correct horse")).token;
            QString error;
            QElapsedTimer t;
            t.start();
            while (t.elapsed() < seconds * 1000)
                if (session.record(token, QStringLiteral("General"), QStringLiteral("Plate read"), &error) >
                    0)
                    ++total;
        }));
    for (QThread* t : threads)
        t->start();
    for (QThread* t : threads) {
        t->wait();
        delete t;
    }
    return double(total) / seconds;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    const int entries = args.size() > 1 ? args[1].toInt() : 2000;
    const int logIns = args.size() > 2 ? args[2].toInt() : 20;
    const int seconds = args.size() > 3 ? args[3].toInt() : 5;

    test::PostgresServer server(test::PostgresServer::Durability::Full);
    if (!server.problem().isEmpty())
        qFatal("%s", qPrintable(server.problem()));
    server.createSite();
    {
        const std::unique_ptr<ServerConnection> owner = connect(server.superuser());
        QString error;
        if (!ServerAdministration(*owner, QStringLiteral("pc"))
                 .addUser(QStringLiteral("jsmith"), {}, SecretBytes("correct horse"), &error))
            qFatal("%s", qPrintable(error));
        const std::unique_ptr<ServerConnection> client = connect(server.client());
        ServerSession session(*client, QStringLiteral("pc"));
        const QString token = session.logIn(QStringLiteral("jsmith"), SecretBytes("correct horse")).token;
        BareInsert bare(*owner);
        measureAppends(session, token, bare, entries);
        measureLogIns(session, logIns);
    }
    for (int writers : {1, 4, 8})
        std::printf("%d writer(s): %.0f entries/s\n", writers,
                    appendsPerSecond(server.client(), writers, seconds));
    const std::unique_ptr<ServerConnection> owner = connect(server.superuser());
    std::printf("verify: %s\n",
                qPrintable(ServerAdministration(*owner, QStringLiteral("pc")).verify().message));
    return 0;
}
