// Audit trail benchmark: the latency of one audit entry (MAC chain, commit
// with WAL + synchronous FULL, chain head advanced) and of one log-in
// (Argon2id at the production cost), each beside a bare SQLite insert of the
// same row with the same durability settings, measured in the same run.
//
//   bench_audit_trail [entries] [folder]     (defaults: 3000, the current folder)

#include "Authenticator.h"
#include "BenchStats.h"
#include "BenchStore.h"
#include "SecretBytes.h"
#include "SecurityAdministration.h"
#include "SecurityStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSysInfo>
#include <QTemporaryDir>

#include <algorithm>
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

// The plain way to keep the same row durably: one prepared INSERT per
// transaction into a table of the same columns, WAL, synchronous FULL.
class BareInsert
{
public:
    explicit BareInsert(const QString& path)
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bare"));
        db.setDatabaseName(path);
        if (!db.open())
            qFatal("%s", qPrintable(db.lastError().text()));
        QSqlQuery q(db);
        q.exec(QStringLiteral("PRAGMA journal_mode=WAL"));
        q.exec(QStringLiteral("PRAGMA synchronous=FULL"));
        q.exec(QStringLiteral(
            "CREATE TABLE audit_trail(seq INTEGER PRIMARY KEY, utc TEXT NOT NULL, user_name TEXT "
            "NOT NULL, workstation TEXT NOT NULL, area TEXT NOT NULL, text TEXT NOT NULL, mac BLOB "
            "NOT NULL)"));
        m_insert = QSqlQuery(db);
        m_insert.prepare(QStringLiteral("INSERT INTO audit_trail VALUES(?, ?, ?, ?, ?, ?, ?)"));
    }
    void insert(qint64 seq, const QString& text)
    {
        m_insert.addBindValue(seq);
        m_insert.addBindValue(QStringLiteral("2026-04-02T10:11:12.345Z"));
        m_insert.addBindValue(QStringLiteral("jsmith"));
        m_insert.addBindValue(QSysInfo::machineHostName());
        m_insert.addBindValue(QStringLiteral("General"));
        m_insert.addBindValue(text);
        m_insert.addBindValue(QByteArray(32, '\x5a'));
        if (!m_insert.exec())
            qFatal("%s", qPrintable(m_insert.lastError().text()));
    }

private:
    QSqlQuery m_insert;
};

double elapsedUs(const QElapsedTimer& t)
{
    return double(t.nsecsElapsed()) / 1000.0;
}

// Appends the entries, each beside a bare insert of the same row; returns
// the bare insert's figures for the log-in ratio.
Stats measureAppends(SecurityStore& store, BareInsert& bare, int entries)
{
    std::vector<double> ours, plain;
    for (int i = 0; i < entries; ++i) {
        const QString text =
            QStringLiteral("Run protocol: /home/jsmith/Nebra Data/My Assays/Protocols/%1.apr").arg(i);
        QElapsedTimer t;
        t.start();
        bare.insert(i + 1, text);
        plain.push_back(elapsedUs(t));
        t.restart();
        if (store.audit().append(QStringLiteral("jsmith"), QStringLiteral("General"), text).sequence == 0)
            qFatal("append failed");
        ours.push_back(elapsedUs(t));
    }
    const Stats a = stats(ours), b = stats(plain);
    std::printf("audit append, %d entries: median %.0f us, p99 %.0f us\n", entries, a.median, a.p99);
    std::printf("bare insert,  %d entries: median %.0f us, p99 %.0f us\n", entries, b.median, b.p99);
    std::printf("ratio audit/bare: median %.2f, p99 %.2f\n", a.median / b.median, a.p99 / b.p99);
    return b;
}

void measureLogIns(SecurityStore& store, const Stats& bare)
{
    Authenticator authenticator(store);
    authenticator.authenticate(QStringLiteral("jsmith"),
                               SecretBytes("correct horse")); // makes the dummy hash
    std::vector<double> logIns;
    for (int i = 0; i < 20; ++i) {
        QElapsedTimer t;
        t.start();
        if (authenticator.authenticate(QStringLiteral("jsmith"), SecretBytes("correct horse")).status !=
            LogInStatus::Success)
            qFatal("log-in failed");
        logIns.push_back(elapsedUs(t));
    }
    const Stats l = stats(logIns);
    std::printf("log-in (Argon2id %d MiB, %d passes), 20 runs: median %.1f ms, p99 %.1f ms\n",
                store.settings().hashCost.memoryMiB, store.settings().hashCost.passes, l.median / 1000,
                l.p99 / 1000);
    std::printf("ratio log-in/bare insert: median %.0f\n", l.median / bare.median);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    const int entries = args.size() > 1 ? args[1].toInt() : 3000;
    QTemporaryDir dir((args.size() > 2 ? args[2] : QDir::currentPath()) +
                      QStringLiteral("/bench-audit-XXXXXX"));
    std::unique_ptr<SecurityStore> store = bench::newStoreIn(dir.path());
    QString error;
    if (!SecurityAdministration(*store, QStringLiteral("bench"))
             .addUser(QStringLiteral("jsmith"), {}, SecretBytes("correct horse"), &error))
        qFatal("%s", qPrintable(error));
    {
        BareInsert bare(dir.filePath(QStringLiteral("bare.db")));
        measureLogIns(*store, measureAppends(*store, bare, entries));
        std::printf("verify: %s\n", qPrintable(store->audit().verify().message));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("bare"));
    return 0;
}
