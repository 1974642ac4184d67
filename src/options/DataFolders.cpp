#include "DataFolders.h"

#include "DiagnosticLog.h"
#include "HLDCollection.h"
#include "Messages.h"
#include "ParentDirectoryRules.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

#include <QDir>

namespace nebra {

namespace {

const QString FolderErrorTitle = QStringLiteral("Folder Specification Error");

const char* const SubfolderNames[] = {"/My Assays",
                                      "/My Assays/Microplate Layouts",
                                      "/My Assays/Read Configurations",
                                      "/My Assays/Results",
                                      "/My Assays/Reports",
                                      "/My Assays/Protocols"};

int askYesNo(const QString& text)
{
    return Messages::show({text, FolderErrorTitle, MessageIcon::Question,
                           MessageButton::Yes | MessageButton::No, MessageButton::Yes});
}

void showFolderError(const QString& text)
{
    Messages::show({text, FolderErrorTitle, MessageIcon::Warning, MessageButton::Ok});
}

} // namespace

QString DataFolders::ExampleSourceFolder()
{
#ifdef Q_OS_WIN
    return QStringLiteral("c:\\Example Assays");
#else
    return QStringLiteral("/opt/Example Assays");
#endif
}

DataFolders::DataFolders(SuitePaths& paths, SuiteSettings& settings, DriverSource drivers,
                         FileSystemObjectFactory fileSystem, QString exampleSource)
    : m_paths(paths), m_settings(settings), m_drivers(std::move(drivers)),
      m_fileSystemFactory(std::move(fileSystem)), m_exampleSource(std::move(exampleSource))
{
}

// What the making of the data folders does, read from the settings: each
// folder in order (a parent before its children) with the example files a
// folder made in this run is seeded with.
struct DataFolders::Plan
{
    struct Folder
    {
        QString path;
        QStringList seeds;         // full source patterns
        bool onlyWithLast = false; // made only when the folder before it was made in this run
    };
    std::vector<Folder> folders;
    bool driverFolders = false; // the settings want one folder per driver
    QStringList drivers;        // those folders
};

void DataFolders::CreateAnyMissingNebraDirectories()
{
    const std::function<void()> create = prepareCreation();
    create();
    finishCreation();
}

std::function<void()> DataFolders::prepareCreation()
{
    LogTraceBlock();
    m_settings.BeginFolderUpdate();
    std::shared_ptr<const FileSystemObject> fs = m_fileSystemFactory();
    m_plan = std::make_shared<const Plan>(plan(fs != nullptr));
    if (!fs)
        return [] {};
    return [fs, plan = m_plan] { create(*plan, *fs); };
}

void DataFolders::finishCreation()
{
    if (m_plan && !m_plan->folders.empty()) {
        for (const Plan::Folder& folder : m_plan->folders)
            if (!folder.onlyWithLast)
                LogTrace(); // one milestone per folder of the tree
        LogTrace();
        if (m_plan->driverFolders) {
            LogTraceBlock();
            for (qsizetype i = 0; i < m_plan->drivers.size(); ++i)
                LogTrace(); // one milestone per driver, the driver's name being the step
        }
    }
    m_plan.reset();
    m_settings.EndFolderUpdate();
}

DataFolders::Plan DataFolders::plan(bool withFileSystem) const
{
    Plan plan;
    if (!withFileSystem)
        return plan;
    const auto examples = [this](std::initializer_list<const char*> patterns) {
        QStringList seeds;
        for (const char* pattern : patterns)
            seeds << m_exampleSource + QLatin1String(pattern);
        return seeds;
    };
    plan.folders = {
        {m_paths.ParentDirectory(), {}},
        {m_paths.MyAssaysFolder(), {}},
        {m_paths.LayoutsFolder(), examples({"/Microplate Layouts/*.mlo"})},
        {m_paths.ReadConfigurationsFolder(), {}},
        {m_paths.ResultsFolder(), examples({"/Results/*.ars", "/Results/*.mht"})},
        {m_paths.ResultsFolder() + QStringLiteral("/QC Example"), examples({"/Results/QC Example/*.ars"}),
         true},
        {m_paths.ProtocolsFolder(), examples({"/Protocols/*.*"})},
        {m_paths.ReportsFolder(), {}},
    };
    plan.driverFolders = !m_settings.SkipDriverFolders();
    if (plan.driverFolders)
        for (const HLDElement& driver : m_drivers().Items())
            plan.drivers << m_paths.ReadConfigurationsFolder() + QLatin1Char('/') + driver.FullName;
    return plan;
}

// Only a folder made in this run is seeded: one the user emptied stays
// empty. A driver's name the file system cannot hold is skipped; the other
// drivers still get their folders.
void DataFolders::create(const Plan& plan, const FileSystemObject& fs)
{
    bool lastMade = false;
    for (const Plan::Folder& folder : plan.folders) {
        if (folder.onlyWithLast && !lastMade)
            continue;
        lastMade = !fs.FolderExists(folder.path) && fs.CreateFolder(folder.path);
        if (lastMade)
            for (const QString& seed : folder.seeds)
                fs.CopyFile(seed, folder.path, false);
    }
    for (const QString& folder : plan.drivers)
        if (!fs.FolderExists(folder))
            fs.CreateFolder(folder);
}

bool DataFolders::AreAllSubfoldersPresent(const QString& candidate)
{
    return subfoldersPresent(FileSystemObject(), candidate);
}

bool DataFolders::subfoldersPresent(const FileSystemObject& fs, const QString& candidate)
{
    bool allPresent = true;
    for (const char* name : SubfolderNames)
        allPresent = fs.FolderExists(candidate + QLatin1String(name)) && allPresent;
    return allPresent;
}

bool DataFolders::DoAllDataFoldersExist()
{
    const FileSystemObject fs;
    const QString folders[] = {m_paths.ParentDirectory(), m_paths.MyAssaysFolder(),
                               m_paths.LayoutsFolder(),   m_paths.ReadConfigurationsFolder(),
                               m_paths.ResultsFolder(),   m_paths.ReportsFolder(),
                               m_paths.ProtocolsFolder()};
    bool allExist = true;
    for (const QString& folder : folders)
        allExist = fs.FolderExists(folder) && allExist;
    return allExist;
}

QString DataFolders::notAnsweringText(const QString& folder)
{
    return QStringLiteral("The folder %1 does not answer, so it cannot be checked.\r\n"
                          "Check the connection to the file server, or choose another folder.")
        .arg(QDir::toNativeSeparators(folder));
}

// What the checks of a typed parent directory need to know of the disk,
// found in one read on a reader thread.
struct DataFolders::TypedFolder
{
    QString problem; // the first rule it breaks
    bool exists = false;
    bool complete = false; // all subfolders present
    bool writable = false;
};

bool DataFolders::ApplyParentDirectory(QString& text)
{
    text = ParentDirectoryRules::normalised(text);
    // Exact comparison: a change of letter case counts as a change.
    if (text == m_paths.ParentDirectory())
        return true;
    std::shared_ptr<const FileSystemObject> fs = m_fileSystemFactory();
    const std::optional<TypedFolder> typed = m_disk.run(text, [fs, text] {
        TypedFolder found;
        found.problem = ParentDirectoryRules::problem(text);
        found.exists = found.problem.isEmpty() && fs && fs->FolderExists(text);
        if (found.exists) {
            found.complete = subfoldersPresent(*fs, text);
            found.writable = ParentDirectoryRules::canWriteInto(text);
        }
        return found;
    });
    if (!typed) {
        showFolderError(notAnsweringText(text));
        return false;
    }
    if (!typed->problem.isEmpty()) {
        showFolderError(typed->problem);
        return false;
    }
    if (!fs)
        return false;
    m_fileSystem = fs;
    return typed->exists ? applyExistingFolder(text, *typed) : applyNewFolder(text);
}

bool DataFolders::applyNewFolder(const QString& text)
{
    const std::optional<bool> made =
        m_disk.run(text, [fs = m_fileSystem, text] { return fs->CreateFolder(text); });
    if (!made) {
        showFolderError(notAnsweringText(text));
        return false;
    }
    if (!*made) {
        showFolderError(QStringLiteral("The specified parent directory path is invalid.\r\n"
                                       "Either it contains illegal characters or\r\n"
                                       "a multiple level directory structure needs to be created."));
        return false;
    }
    if (askYesNo(QStringLiteral("The specified parent directory for data files does not exist.\r\n"
                                "Would you like it and its subfolders to be created now?")) ==
            MessageButton::No ||
        !storeParentDirectory(text)) {
        // The folder was made only to test the path: a refused path leaves no trace.
        m_disk.run(text, [fs = m_fileSystem, text] { return fs->DeleteFolder(text, false); });
        return false;
    }
    createOnDisk(text);
    return true;
}

bool DataFolders::applyExistingFolder(const QString& text, const TypedFolder& typed)
{
    if (!typed.complete && !typed.writable) {
        // Accepting it would leave the tree without the folders it shows.
        showFolderError(ParentDirectoryRules::readOnlySubfoldersText());
        return false;
    }
    if (!typed.complete &&
        askYesNo(QStringLiteral("The specified parent directory has one or more missing subfolders.\r\n"
                                "Would you like them to be created now?")) == MessageButton::No)
        return false;
    if (!storeParentDirectory(text))
        return false;
    if (!typed.complete)
        createOnDisk(text);
    return true;
}

// The parent directory is stored by now: a server that stops answering
// half-way leaves the rest of the folders to the making at the next start.
void DataFolders::createOnDisk(const QString& parent)
{
    m_disk.run(parent, [create = prepareCreation()] {
        create();
        return true;
    });
    finishCreation();
}

bool DataFolders::storeParentDirectory(const QString& text)
{
    if (m_paths.SetParentDirectory(text))
        return true;
    Messages::show({QStringLiteral("The parent directory for data files could not be saved in the "
                                   "settings file, so it has not been changed."),
                    FolderErrorTitle, MessageIcon::Critical, MessageButton::Ok});
    return false;
}

} // namespace nebra
