// First-start creation of the data folder tree with its example seeding,
// beside the least a durable copy of the same files needs (mkdir; each file
// written to a temporary name, synced, renamed into place, as a save does),
// and beside a plain copy that never syncs, in the same run, alternating.
//
//   bench_data_folders [rounds]

#include "BenchStats.h"
#include "DataFolders.h"
#include "HLDCollection.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace fs = std::filesystem;

using nebra::bench::median;

namespace {

const QString Examples = QStringLiteral(NEBRA_SOURCE_DATA_DIR "/Example Assays");

double organiserRun(const nebra::HLDCollection& drivers)
{
    QTemporaryDir dir;
    nebra::SettingsStore store(dir.filePath(QStringLiteral("Suite.ini")));
    nebra::SuiteSettings settings(store);
    nebra::SuitePaths paths(store);
    paths.Initialise();
    paths.SetParentDirectory(dir.filePath(QStringLiteral("Parent")));
    nebra::DataFolders folders(
        paths, settings, [&drivers]() -> const nebra::HLDCollection& { return drivers; },
        nebra::defaultFileSystemObjectFactory(), Examples);
    QElapsedTimer timer;
    timer.start();
    folders.CreateAnyMissingNebraDirectories();
    return timer.nsecsElapsed() / 1e6;
}

// A copy that a power cut cannot leave half-written: the bytes go to a
// temporary file in the target folder, which is synced and then renamed.
void durableCopy(const fs::path& from, const fs::path& to)
{
    const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    const fs::path temporary = to.string() + ".tmp";
    const int out = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    char buffer[65536];
    ssize_t n = 0;
    while (in >= 0 && out >= 0 && (n = ::read(in, buffer, sizeof buffer)) > 0)
        if (::write(out, buffer, size_t(n)) != n)
            break;
    if (out >= 0) {
        ::fdatasync(out);
        ::close(out);
        ::rename(temporary.c_str(), to.c_str());
    }
    if (in >= 0)
        ::close(in);
}

bool g_durable = true;

void copyMatching(const fs::path& from, const fs::path& to, const std::string& extension)
{
    for (const auto& entry : fs::directory_iterator(from))
        if (entry.is_regular_file() && (extension.empty() || entry.path().extension() == extension)) {
            if (g_durable)
                durableCopy(entry.path(), to / entry.path().filename());
            else
                fs::copy_file(entry.path(), to / entry.path().filename());
        }
}

double plainRun(const nebra::HLDCollection& drivers, bool durable)
{
    g_durable = durable;
    QTemporaryDir dir;
    const fs::path parent = dir.filePath(QStringLiteral("Parent")).toStdString();
    const fs::path examples = Examples.toStdString();
    QElapsedTimer timer;
    timer.start();
    const fs::path assays = parent / "My Assays";
    for (const fs::path& p :
         {parent, assays, assays / "Microplate Layouts", assays / "Read Configurations", assays / "Results",
          assays / "Results" / "QC Example", assays / "Protocols", assays / "Reports"})
        fs::create_directory(p);
    copyMatching(examples / "Microplate Layouts", assays / "Microplate Layouts", ".mlo");
    copyMatching(examples / "Results", assays / "Results", ".ars");
    copyMatching(examples / "Results", assays / "Results", ".mht");
    copyMatching(examples / "Results" / "QC Example", assays / "Results" / "QC Example", ".ars");
    copyMatching(examples / "Protocols", assays / "Protocols", "");
    for (const nebra::HLDElement& driver : drivers.Items())
        fs::create_directory(assays / "Read Configurations" / driver.FullName.toStdString());
    return timer.nsecsElapsed() / 1e6;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 && std::atoi(argv[1]) > 0 ? std::atoi(argv[1]) : 200;
    const nebra::HLDCollection drivers(QStringLiteral(NEBRA_SOURCE_DATA_DIR "/drivers.json"));
    QList<double> ours, durable, plain;
    for (int i = 0; i < rounds; ++i) {
        // Each round starts with the next of the three, so none always runs first.
        for (int k = 0; k < 3; ++k) {
            const int which = (i + k) % 3;
            if (which == 0)
                ours << organiserRun(drivers);
            else if (which == 1)
                durable << plainRun(drivers, true);
            else
                plain << plainRun(drivers, false);
        }
    }
    std::printf("first-start data folder creation and seeding, median of %d rounds, alternating\n", rounds);
    std::printf("  CreateAnyMissingNebraDirectories          %7.3f ms\n", median(ours));
    std::printf("  mkdir + copy, each file synced and renamed %7.3f ms\n", median(durable));
    std::printf("  ratio                                     %7.2f\n", median(ours) / median(durable));
    std::printf("  (mkdir + copy without syncing             %7.3f ms)\n", median(plain));
    return 0;
}
