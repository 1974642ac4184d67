#pragma once

#include "BoundedRead.h"
#include "FileSystemObject.h"

#include <QString>

#include <functional>
#include <memory>

namespace nebra {

class HLDCollection;
class SuitePaths;
class SuiteSettings;

// The data folder tree under the parent directory: creation of whatever is
// missing, seeding of newly made folders from the example assays, and the
// validation of a newly typed parent directory.
class DataFolders
{
public:
    // The installed-driver collection, created on first use by the caller.
    using DriverSource = std::function<const HLDCollection&()>;

    // The fixed folder the suite's installer puts the example assays in.
    static QString ExampleSourceFolder();

    DataFolders(SuitePaths& paths, SuiteSettings& settings, DriverSource drivers,
                FileSystemObjectFactory fileSystem = defaultFileSystemObjectFactory(),
                QString exampleSource = ExampleSourceFolder());

    // Creates every missing folder of the tree for the current parent
    // directory, seeds the folders made in this run and makes one
    // read-configuration folder per installed driver. Reports nothing: a
    // folder that cannot be made is simply left out.
    void CreateAnyMissingNebraDirectories();
    // The same in halves, for a caller that must not wait on the disk:
    // prepareCreation() reads the settings, starts their folder update and
    // returns the disk's part, which touches nothing else and may run on any
    // thread; finishCreation() writes the milestones and ends the update.
    std::function<void()> prepareCreation();
    void finishCreation();

    // True when all six folders below the candidate exist (the candidate itself is not tested).
    bool AreAllSubfoldersPresent(const QString& candidate);

    // True when all seven folders of the tree exist for the current parent directory.
    bool DoAllDataFoldersExist();

    // Validates a typed parent directory and applies it, asking the user where
    // folders are missing. The trimmed text is written back into text. Returns
    // false when the typed value must not be accepted (the caller keeps its
    // dialog open); no setting has then changed. The disk is reached on a
    // reader thread while the event loop runs, each step waited for
    // BoundedRead::DefaultWaitMs at most: a folder that does not answer in
    // that time is refused with notAnsweringText(), never accepted unchecked.
    bool ApplyParentDirectory(QString& text);
    static QString notAnsweringText(const QString& folder);

private:
    struct Plan;
    struct TypedFolder;
    Plan plan(bool withFileSystem) const;
    static void create(const Plan& plan, const FileSystemObject& fs);
    static bool subfoldersPresent(const FileSystemObject& fs, const QString& candidate);
    bool applyNewFolder(const QString& text);
    bool applyExistingFolder(const QString& text, const TypedFolder& typed);
    void createOnDisk(const QString& parent);
    bool storeParentDirectory(const QString& text);

    SuitePaths& m_paths;
    SuiteSettings& m_settings;
    DriverSource m_drivers;
    FileSystemObjectFactory m_fileSystemFactory;
    QString m_exampleSource;
    std::shared_ptr<const FileSystemObject> m_fileSystem; // shared with the reads that use it
    BoundedRead m_disk;
    std::shared_ptr<const Plan> m_plan; // between prepareCreation() and finishCreation()
};

} // namespace nebra
