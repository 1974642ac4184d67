#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace nebra {

// The file-system component: existence tests, one-level folder creation,
// copying by wildcard pattern and folder deletion. Every operation reports
// success; none throws, so callers that ignore failures simply go on.
class FileSystemObject
{
public:
    virtual ~FileSystemObject() = default;

    bool FolderExists(const QString& path) const;
    bool FileExists(const QString& path) const;

    // Creates one folder whose parent must already exist. Fails for an
    // existing path and for a name the file system cannot hold.
    bool CreateFolder(const QString& path) const;

    // Copies the files matching the last component of sourcePattern ("*" and
    // "?" wildcards; "*.*" matches every file, as it always has) into
    // destinationFolder. With overwrite false an existing file is left alone
    // and counts as a failure. Fails when nothing matches. Each copy is
    // written under a temporary name and renamed, so no half-written file is
    // ever left behind.
    bool CopyFile(const QString& sourcePattern, const QString& destinationFolder, bool overwrite) const;

    // Deletes a folder with everything in it. Without force, read-only files stop the deletion.
    bool DeleteFolder(const QString& path, bool force) const;
};

// Creates the file-system component; returns null when it is not available.
// Start-up takes one of these so that a test can make creation fail.
using FileSystemObjectFactory = std::function<std::unique_ptr<FileSystemObject>()>;
FileSystemObjectFactory defaultFileSystemObjectFactory();

} // namespace nebra
