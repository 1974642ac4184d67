#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace nebra {

// The folders below a root as one poll saw them: for each folder its name,
// inode and modification time, and its subfolders. Links to folders are
// kept as folders but never followed, as the kernel's notifications treat
// them. Two snapshots of one root are compared by SnapshotDiff.
//
// A folder's entries change its modification time, so a folder whose
// inode and time are those of the previous snapshot is not read again: its
// subfolders are the ones it had, each looked at with one stat. That makes
// a poll of a quiet tree cost about one stat per folder instead of an open,
// two reads and a close. Times are kept in coarse steps (a few milliseconds
// on a local disk, up to two seconds on some servers), so a change made in
// the same step as the previous read would leave the time as it was: a
// folder is trusted only when its time is older than RacySeconds before the
// previous snapshot began. fullRead reads every folder regardless, for the
// servers whose clocks run ahead of ours.
// A folder that cannot be read now (no permission, a server error, gone
// between two calls) keeps the subfolders the previous snapshot knew.
//
// Taking a snapshot reads the disk and may wait for a server: do it on a
// reader thread (FolderReaders). The object itself is a plain value.
class FolderSnapshot
{
public:
    struct Folder
    {
        QByteArray name; // as on disk; empty for the root
        quint64 inode = 0;
        qint64 mtimeSeconds = 0;
        qint32 mtimeNanoseconds = 0;
        qint32 parent = -1;
        qint32 firstChild = 0; // the subfolders are contiguous, sorted by name
        qint32 childCount = 0;
        bool link = false;   // a symbolic link to a folder: not followed
        bool listed = false; // its subfolders are known

        bool sameTime(const Folder& other) const
        {
            return mtimeSeconds == other.mtimeSeconds && mtimeNanoseconds == other.mtimeNanoseconds;
        }
    };

    static constexpr qint64 RacySeconds = 2;

    static FolderSnapshot take(const QByteArray& root, const FolderSnapshot* previous = nullptr,
                               bool fullRead = false);

    // errno when the root itself could not be read (the snapshot is then empty).
    int error() const { return m_error; }
    bool isEmpty() const { return m_folders.empty(); }
    int count() const { return int(m_folders.size()); }
    // Index 0 is the root.
    const Folder& folder(int index) const { return m_folders[size_t(index)]; }
    // The subfolder of parent called name, or -1.
    int childNamed(int parent, const QByteArray& name) const;

    // The folder's path as the tree shows it: rootText, then the names (bytes
    // that are not UTF-8 become replacement characters).
    QString textPath(int index, const QString& rootText) const;

    // How many folders had their entries read (the others were trusted).
    int foldersRead() const { return m_foldersRead; }

private:
    struct Walk;
    void visit(Walk& walk, int fd, int index, int previousIndex);
    bool listFromDisk(int fd, int index);
    void listFromPrevious(Walk& walk, int fd, int index, int previousIndex);
    void appendChildren(int index, std::vector<Folder>& children);
    void copySubtree(const FolderSnapshot& previous, int previousIndex, int index);
    void descend(Walk& walk, int fd, int index, int previousIndex);

    std::vector<Folder> m_folders;
    int m_error = 0;
    int m_foldersRead = 0;
    qint64 m_takenAt = 0; // seconds since the epoch, when the walk began
};

} // namespace nebra
