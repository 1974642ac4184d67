// The audit trail viewer's exports: CSV and PDF of a trail of N entries,
// each beside a bare reading of the same entries (the baseline: what any
// export must pay), measured in the same run.
//
//   bench_audit_export [entries] [folder]     (defaults: 20000, a temporary folder)

#include "AuditExport.h"
#include "BenchStore.h"
#include "SecurityStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <cstdio>

using namespace nebra;

namespace {

std::unique_ptr<SecurityStore> makeStore(const QString& folder, int entries)
{
    std::unique_ptr<SecurityStore> store = bench::newStoreIn(folder);
    const AuditAppendResult made = store->audit().record([entries](QList<AuditRecord>* records, QString*) {
        for (int i = 0; i < entries; ++i)
            records->append(
                {QStringLiteral("user%1").arg(i % 7), QStringLiteral("General"),
                 QStringLiteral("Run protocol: /home/lab/My Assays/Protocols/Assay %1.apr").arg(i)});
        return true;
    });
    if (made.sequence <= 0)
        qFatal("%s", qPrintable(made.error));
    return store;
}

double timedMs(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e6;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int entries = argc > 1 ? QByteArray(argv[1]).toInt() : 20000;
    QTemporaryDir temporary;
    const QString folder = argc > 2 ? QString::fromLocal8Bit(argv[2]) : temporary.path();
    QDir().mkpath(folder);
    const std::unique_ptr<SecurityStore> store = makeStore(folder, entries);
    const AuditEntrySource source = [&store](const AuditEntryVisitor& visit, QString* error) {
        return store->audit().forEachEntry(visit, error);
    };
    QString error;
    qint64 seen = 0;
    const double bare = timedMs([&] { source([&seen](const AuditEntry&) { return ++seen > 0; }, &error); });
    AuditExport exporter(source, QStringLiteral("all entries"), [](const QString&) { return true; });
    const QString csv = folder + QStringLiteral("/bench.csv");
    const QString pdf = folder + QStringLiteral("/bench.pdf");
    const double csvMs = timedMs([&] { exporter.writeCsv(csv, &error); });
    const AuditPrintoutTitle title{QStringLiteral("bench"), QStringLiteral("bench"),
                                   QDateTime::currentDateTime(), QStringLiteral("all entries"),
                                   QStringLiteral("not checked")};
    const double pdfMs = timedMs([&] { exporter.writePdf(pdf, title, &error); });
    std::printf("entries %lld (store %d + 1)\n", seen, entries);
    std::printf("bare read            %9.1f ms\n", bare);
    std::printf("CSV export           %9.1f ms  x%.1f  %lld KB\n", csvMs, csvMs / bare,
                QFileInfo(csv).size() / 1024);
    std::printf("PDF export           %9.1f ms  x%.1f  %lld KB\n", pdfMs, pdfMs / bare,
                QFileInfo(pdf).size() / 1024);
    return error.isEmpty() ? 0 : 1;
}
