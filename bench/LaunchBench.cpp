// From the Run command to the started process, beside a bare QProcess::startDetached.

#include "BenchStats.h"
#include "DocumentLauncher.h"
#include "SettingsStore.h"
#include "SuitePaths.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace nebra;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    constexpr int Warm = 10;
    constexpr int Runs = 500;
    const QString program = QStandardPaths::findExecutable(QStringLiteral("true"));
    const QString document = QStringLiteral("/data/My Assays/Protocols/ELISA IgG Quantitation.apr");

    QTemporaryDir dir;
    SettingsStore store(dir.filePath(QStringLiteral("Suite.ini")));
    store.setValue(QStringLiteral("Paths/AssayApplicationPath"), program);
    SuitePaths paths(store);
    paths.Initialise();
    QStringList audit;
    LaunchContext context;
    context.canPerform = [](const QString&) { return true; };
    context.audit = [&audit](const QString& entry) {
        audit << entry;
        return true;
    };
    context.selectedDocumentPath = [&document] { return document; };
    DocumentLauncher launcher(paths, context);

    bench::Samples ours;
    bench::Samples bare;
    QElapsedTimer clock;
    auto timed = [&clock](auto&& operation) {
        clock.start();
        operation();
        return clock.nsecsElapsed() / 1e6;
    };
    // Alternated, and each first in turn, so that both see the same state of the system.
    for (int i = 0; i < Warm + Runs; ++i) {
        const auto runOurs = [&] { return timed([&] { launcher.RunProtocol(); }); };
        const auto runBare = [&] { return timed([&] { QProcess::startDetached(program, {document}); }); };
        double oursMs = 0;
        double bareMs = 0;
        if (i % 2 == 0) {
            oursMs = runOurs();
            bareMs = runBare();
        } else {
            bareMs = runBare();
            oursMs = runOurs();
        }
        if (i >= Warm) {
            ours.ms << oursMs;
            bare.ms << bareMs;
        }
    }
    std::printf("Run to started process (%s), %d warm runs, then %d measured\n", qPrintable(program), Warm,
                Runs);
    bench::report("RunProtocol vs QProcess::startDetached", ours, bare);
    return audit.size() == Warm + Runs ? 0 : 1;
}
