// First-start creation of the data folder tree with its example seeding,
// beside a plain mkdir + copy of the same files, in the same run.
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

void copyMatching(const fs::path& from, const fs::path& to, const std::string& extension)
{
    for (const auto& entry : fs::directory_iterator(from))
        if (entry.is_regular_file() && (extension.empty() || entry.path().extension() == extension))
            fs::copy_file(entry.path(), to / entry.path().filename());
}

double plainRun(const nebra::HLDCollection& drivers)
{
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
    QList<double> ours, plain;
    for (int i = 0; i < rounds; ++i) {
        ours << organiserRun(drivers);
        plain << plainRun(drivers);
    }
    std::printf("first-start data folder creation and seeding, median of %d rounds\n", rounds);
    std::printf("  CreateAnyMissingNebraDirectories   %7.3f ms\n", median(ours));
    std::printf("  plain mkdir + copy                 %7.3f ms\n", median(plain));
    std::printf("  ratio                              %7.2f\n", median(ours) / median(plain));
    return 0;
}
