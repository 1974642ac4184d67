#include "DataFolders.h"

#include "DiagnosticLog.h"
#include "HLDCollection.h"
#include "Messages.h"
#include "ParentDirectoryRules.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

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

void DataFolders::CreateAnyMissingNebraDirectories()
{
    LogTraceBlock();
    m_settings.BeginFolderUpdate();
    m_fileSystem = m_fileSystemFactory();
    if (m_fileSystem) {
        createFolderTree();
        createDriverFolders();
    }
    m_settings.EndFolderUpdate();
}

void DataFolders::createFolderTree()
{
    const FileSystemObject& fs = *m_fileSystem;
    struct Folder
    {
        QString path;
        QStringList seeds;
    };
    // In this order: each creation is one level deep, so a parent comes
    // before its children.
    const Folder folders[] = {
        {m_paths.ParentDirectory(), {}},
        {m_paths.MyAssaysFolder(), {}},
        {m_paths.LayoutsFolder(), {QStringLiteral("/Microplate Layouts/*.mlo")}},
        {m_paths.ReadConfigurationsFolder(), {}},
        {m_paths.ResultsFolder(), {QStringLiteral("/Results/*.ars"), QStringLiteral("/Results/*.mht")}},
        {m_paths.ProtocolsFolder(), {QStringLiteral("/Protocols/*.*")}},
        {m_paths.ReportsFolder(), {}},
    };
    for (const Folder& folder : folders) {
        // Only a folder made in this run is seeded: one the user emptied stays empty.
        if (!fs.FolderExists(folder.path) && fs.CreateFolder(folder.path)) {
            for (const QString& seed : folder.seeds)
                fs.CopyFile(m_exampleSource + seed, folder.path, false);
            if (folder.path == m_paths.ResultsFolder()) {
                const QString qcExample = folder.path + QStringLiteral("/QC Example");
                if (!fs.FolderExists(qcExample) && fs.CreateFolder(qcExample))
                    fs.CopyFile(m_exampleSource + QStringLiteral("/Results/QC Example/*.ars"), qcExample,
                                false);
            }
        }
        LogTrace();
    }
    LogTrace();
}

void DataFolders::createDriverFolders()
{
    if (m_settings.SkipDriverFolders())
        return;
    LogTraceBlock();
    const HLDCollection& drivers = m_drivers();
    for (const HLDElement& driver : drivers.Items()) {
        LogTrace(); // one milestone per driver, the driver's name being the step
        const QString folder = m_paths.ReadConfigurationsFolder() + QLatin1Char('/') + driver.FullName;
        // A name the file system cannot hold is skipped; the other drivers still get their folders.
        if (!m_fileSystem->FolderExists(folder))
            m_fileSystem->CreateFolder(folder);
    }
}

bool DataFolders::AreAllSubfoldersPresent(const QString& candidate)
{
    const FileSystemObject fs;
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

bool DataFolders::ApplyParentDirectory(QString& text)
{
    text = ParentDirectoryRules::normalised(text);
    // Exact comparison: a change of letter case counts as a change.
    if (text == m_paths.ParentDirectory())
        return true;
    if (const QString problem = ParentDirectoryRules::problem(text); !problem.isEmpty()) {
        showFolderError(problem);
        return false;
    }
    m_fileSystem = m_fileSystemFactory();
    if (!m_fileSystem)
        return false;
    return m_fileSystem->FolderExists(text) ? applyExistingFolder(text) : applyNewFolder(text);
}

bool DataFolders::applyNewFolder(const QString& text)
{
    if (!m_fileSystem->CreateFolder(text)) {
        showFolderError(QStringLiteral("The specified parent directory path is invalid.\r\n"
                                       "Either it contains illegal characters or\r\n"
                                       "a multiple level directory structure needs to be created."));
        return false;
    }
    if (askYesNo(QStringLiteral("The specified parent directory for data files does not exist.\r\n"
                                "Would you like it and its subfolders to be created now?")) ==
        MessageButton::No) {
        // The folder was made only to test the path: a refused path leaves no trace.
        m_fileSystem->DeleteFolder(text, false);
        return false;
    }
    if (!storeParentDirectory(text)) {
        m_fileSystem->DeleteFolder(text, false);
        return false;
    }
    CreateAnyMissingNebraDirectories();
    return true;
}

bool DataFolders::applyExistingFolder(const QString& text)
{
    const bool complete = AreAllSubfoldersPresent(text);
    if (!complete && !ParentDirectoryRules::canWriteInto(text)) {
        // Accepting it would leave the tree without the folders it shows.
        showFolderError(ParentDirectoryRules::readOnlySubfoldersText());
        return false;
    }
    if (!complete &&
        askYesNo(QStringLiteral("The specified parent directory has one or more missing subfolders.\r\n"
                                "Would you like them to be created now?")) == MessageButton::No)
        return false;
    if (!storeParentDirectory(text))
        return false;
    if (!complete)
        CreateAnyMissingNebraDirectories();
    return true;
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
