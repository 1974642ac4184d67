#pragma once

#include <QByteArray>
#include <QHashFunctions>
#include <QString>

#include <vector>

namespace nebra {

class WildcardFilter;

// Reads folders with readdir(3) and stat(2) directly, on the calling thread.
// Both listings are synchronous and fast enough for the user-interface
// thread: the entry type comes from d_type, and only names that are kept
// are stat'ed or converted to text. Paths are the file system's bytes;
// QFile::encodeName() turns a QString into one.
//
// Nothing here throws or blocks on a missing or unreadable folder: the
// listing is empty and error holds the errno value.
class DirectoryReader
{
public:
    // Identity of a folder on disk, to recognise one reached twice (links).
    struct FolderId
    {
        quint64 device = 0;
        quint64 inode = 0;
        bool operator==(const FolderId&) const = default;
        friend size_t qHash(const FolderId& id, size_t seed = 0)
        {
            return qHashMulti(seed, id.device, id.inode);
        }
    };

    struct Subfolder
    {
        QByteArray rawName; // as on disk, to build paths that open again
        QString name;       // for display (UTF-8, invalid bytes replaced)
        bool isLink = false;
        FolderId target; // the folder the entry leads to, for links only
    };

    struct SubfolderListing
    {
        int error = 0; // errno when the folder could not be read
        FolderId id;   // the listed folder itself
        std::vector<Subfolder> folders;
    };

    // Every subfolder of path, "." and ".." excepted; hidden folders
    // included. A symbolic link counts when it leads to a folder. The names
    // are sorted without regard to case, the order file managers show.
    static SubfolderListing subfolders(const QByteArray& path);

    struct FileRecord
    {
        QString name;
        qint64 mtimeSeconds = 0;
        qint32 mtimeNanoseconds = 0;
        qint64 size = 0;
        bool isFolder = false;
    };

    struct FileListing
    {
        int error = 0;
        std::vector<FileRecord> records; // in directory order
    };

    // Every subfolder and every file whose name the filter matches, with its
    // raw modification time (st_mtim) and size; links are followed, a
    // broken link is listed as itself. "." and ".." are left out.
    static FileListing files(const QByteArray& folder, const WildcardFilter& filter);
};

} // namespace nebra
