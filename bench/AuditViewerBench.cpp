// Audit trail viewer benchmark: the reviewer's table on a long trail. Opens
// the model on the store and shows the first rows (a window's worth), then
// scrolls to the end (the last page), then sorts by user and by time (and
// scrolls to the end of those), then filters by user and by text: the time of each, and the process's memory,
// beside a bare SELECT of one page (ORDER BY seq DESC LIMIT 256) on the same
// file in the same run.
//
//   bench_audit_viewer FOLDER [entries]      (default: 1000000)
//
// The store is made once in FOLDER/ENTRIES (a few minutes for a million
// entries) and reused by later runs. Run it for 100000 and for 1000000
// entries: the memory should not follow the trail's length.

#include "AuditTrailModel.h"
#include "BenchStats.h"
#include "BenchStore.h"
#include "EmbeddedSecurityBackend.h"
#include "SecurityStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <cstdio>

using namespace nebra;
using namespace nebra::bench;

namespace {

constexpr int VisibleRows = 40; // what a maximised window shows
constexpr int Batch = 50000;    // entries per transaction while the store is made

// Entries like a lab's: a few dozen users, three areas, document paths.
void makeStore(const SecuritySettings& settings, qint64 entries)
{
    QString error;
    std::unique_ptr<SecurityStore> store = SecurityStore::create(settings, QStringLiteral("bench"), &error);
    if (!store)
        qFatal("%s", qPrintable(error));
    static const QStringList areas{"General", "Security", "Administration"};
    for (qint64 made = 1; made < entries; made += Batch) {
        const qint64 batch = qMin<qint64>(Batch, entries - made);
        const AuditAppendResult result = store->audit().record([&](QList<AuditRecord>* records, QString*) {
            for (qint64 i = made; i < made + batch; ++i)
                records->append(
                    {QStringLiteral("user%1").arg(i % 37), areas[i % 3],
                     QStringLiteral("Run protocol: /data/My Assays/Protocols/Plate %1.apr").arg(i)});
            return true;
        });
        if (result.sequence == 0)
            qFatal("%s", qPrintable(result.error));
        std::fprintf(stderr, "\rmade %lld entries", result.sequence);
    }
    std::fprintf(stderr, "\n");
}

// Resident and peak resident memory of this process, in MiB.
double statusMiB(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(int(qstrlen(field))).trimmed().split(' ').value(0).toDouble() / 1024;
    return 0;
}

void resetPeak()
{
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
}

void showRows(const AuditTrailModel& model, int first)
{
    for (int row = first; row < qMin(first + VisibleRows, model.rowCount()); ++row)
        for (int column = 0; column < model.columnCount(); ++column)
            model.data(model.index(row, column));
}

// The plain way to show the newest page: one SELECT on a connection of its own.
Samples bareSelect(const QString& path)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bare"));
    db.setDatabaseName(path);
    if (!db.open())
        qFatal("%s", qPrintable(db.lastError().text()));
    const Samples samples = timed(3, 20, [&db](int) {
        QSqlQuery q(db);
        q.setForwardOnly(true);
        q.exec(QStringLiteral("SELECT seq, utc, user_name, workstation, area, text, mac FROM audit_trail "
                              "ORDER BY seq DESC LIMIT 256"));
        int rows = 0;
        while (q.next())
            rows += q.value(5).toString().isEmpty() ? 0 : 1;
        if (rows != 256)
            qFatal("the bare select read %d rows", rows);
    });
    db.close();
    return samples;
}

void line(const char* what, const Samples& ours, const Samples& bare)
{
    report(what, ours, bare);
    std::printf("%-44s rss %.1f MiB\n", "", statusMiB("VmRSS:"));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() < 2)
        qFatal("usage: bench_audit_viewer FOLDER [entries]");
    const qint64 entries = args.size() > 2 ? args[2].toLongLong() : 1000000;
    const QString folder = args[1] + QLatin1Char('/') + QString::number(entries);
    QDir().mkpath(folder);
    const SecuritySettings settings = bench::storeSettingsIn(folder);
    if (!QFile::exists(settings.databasePath))
        makeStore(settings, entries);
    resetPeak();
    const double before = statusMiB("VmRSS:");

    const Samples bare = bareSelect(settings.databasePath);
    QString error;
    std::unique_ptr<SecurityStore> store = SecurityStore::open(settings, &error);
    if (!store)
        qFatal("%s", qPrintable(error));
    EmbeddedSecurityBackend backend(std::move(store));
    const AuditSource source{[&backend](const AuditFilter& f, qint64* n, QString* e) {
                                 return backend.countAuditEntries(f, n, e);
                             },
                             [&backend](const AuditFilter& f, const AuditOrder& o, qint64 offset, int limit,
                                        QList<AuditEntry>* out, QString* e) {
                                 return backend.readAuditEntries(f, o, offset, limit, out, e);
                             }};

    std::printf("audit trail of %lld entries, rss before opening %.1f MiB\n", entries, before);
    line("open and show the first rows",
         timed(3, 20,
               [&source](int) {
                   AuditTrailModel model(source);
                   model.reload();
                   showRows(model, 0);
               }),
         bare);
    AuditTrailModel model(source);
    model.reload();
    showRows(model, 0);
    line("scroll to the end (newest first)",
         timed(1, 10,
               [&model](int) {
                   model.reload(); // forgets the pages read, so each run reads the last one
                   showRows(model, model.rowCount() - VisibleRows);
               }),
         bare);
    for (const auto& [what, column] : {std::pair{"sort by user, first rows", AuditColumn::User},
                                       std::pair{"sort by time, first rows", AuditColumn::Time}}) {
        line(what,
             timed(1, 10,
                   [&model, column](int i) {
                       model.sort(int(column), i % 2 ? Qt::AscendingOrder : Qt::DescendingOrder);
                       showRows(model, 0);
                   }),
             bare);
    }
    line("sorted by time, scroll to the end",
         timed(1, 5,
               [&model](int) {
                   model.reload();
                   showRows(model, model.rowCount() - VisibleRows);
               }),
         bare);
    // A filter is counted before its first rows show: through the user index, or by reading every text.
    AuditFilter byUser, byText;
    byUser.userName = QStringLiteral("USER7");
    byText.text = QStringLiteral("plate 4242");
    for (const auto& [what, filter] : {std::pair{"filter by user, first rows", byUser},
                                       std::pair{"filter by part of the text, first rows", byText}})
        line(what,
             timed(1, 5,
                   [&model, &filter](int) {
                       model.setFilter(filter);
                       showRows(model, 0);
                   }),
             bare);
    std::printf("rows %d, peak rss %.1f MiB (from %.1f before opening)\n", model.rowCount(),
                statusMiB("VmHWM:"), before);
    return 0;
}
