#include "FolderSnapshot.h"

#include "DirectoryEntries.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nebra {

namespace {

FolderSnapshot::Folder folderOf(const QByteArray& name, const struct stat& st, bool link)
{
    FolderSnapshot::Folder folder;
    folder.name = name; // shared with the previous snapshot's, when it comes from there
    folder.inode = quint64(st.st_ino);
    folder.link = link;
    folder.listed = link; // nothing below a link is looked at
    if (!link) {
        folder.mtimeSeconds = qint64(st.st_mtim.tv_sec);
        folder.mtimeNanoseconds = qint32(st.st_mtim.tv_nsec);
    }
    return folder;
}

enum class Look
{
    Folder,     // a subfolder, or a link that leads to one
    NotAFolder, // anything else, or gone while we looked
    Unknown,    // cannot be looked at now (permission, a server error)
};

Look failed()
{
    return errno == ENOENT || errno == ENOTDIR ? Look::NotAFolder : Look::Unknown;
}

// The entry name of the open folder fd.
Look lookAt(int fd, const QByteArray& name, FolderSnapshot::Folder& folder)
{
    struct stat st = {};
    if (::fstatat(fd, name.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return failed();
    if (S_ISDIR(st.st_mode)) {
        folder = folderOf(name, st, false);
        return Look::Folder;
    }
    if (!S_ISLNK(st.st_mode))
        return Look::NotAFolder;
    const quint64 linkInode = quint64(st.st_ino);
    if (::fstatat(fd, name.constData(), &st, 0) != 0 || !S_ISDIR(st.st_mode))
        return Look::NotAFolder; // a broken link, or one to a file
    folder = folderOf(name, st, true);
    folder.inode = linkInode; // the link's own, which moves with it
    return Look::Folder;
}

} // namespace

struct FolderSnapshot::Walk
{
    const FolderSnapshot* previous = nullptr;
    bool fullRead = false;

    // The folder's entries may be taken from the previous snapshot.
    bool trusts(const Folder& folder, int previousIndex) const
    {
        if (!previous || previousIndex < 0 || fullRead)
            return false;
        const Folder& before = previous->folder(previousIndex);
        return before.listed && before.link == folder.link && before.inode == folder.inode &&
               before.sameTime(folder) && before.mtimeSeconds + RacySeconds < previous->m_takenAt;
    }
};

FolderSnapshot FolderSnapshot::take(const QByteArray& root, const FolderSnapshot* previous, bool fullRead)
{
    FolderSnapshot snapshot;
    snapshot.m_takenAt = qint64(::time(nullptr));
    const int fd = root.isEmpty() ? -1 : ::open(root.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    struct stat st = {};
    if (fd < 0 || ::fstat(fd, &st) != 0) {
        snapshot.m_error = root.isEmpty() ? ENOENT : errno;
        if (fd >= 0)
            ::close(fd);
        return snapshot;
    }
    snapshot.m_folders.reserve(previous ? size_t(previous->count()) : 256);
    snapshot.m_folders.push_back(folderOf(QByteArray(), st, false));
    Walk walk{previous && !previous->isEmpty() ? previous : nullptr, fullRead};
    snapshot.visit(walk, fd, 0, walk.previous ? 0 : -1);
    ::close(fd);
    return snapshot;
}

void FolderSnapshot::visit(Walk& walk, int fd, int index, int previousIndex)
{
    if (walk.trusts(m_folders[size_t(index)], previousIndex)) {
        listFromPrevious(walk, fd, index, previousIndex);
    } else if (!listFromDisk(fd, index)) {
        if (walk.previous && previousIndex >= 0)
            copySubtree(*walk.previous, previousIndex, index);
        return;
    }
    descend(walk, fd, index, previousIndex);
}

bool FolderSnapshot::listFromDisk(int fd, int index)
{
    std::vector<Folder> children;
    const int error = readDirectoryEntries(fd, [&](const char* name, unsigned char type, quint64) {
        Folder child;
        if ((type == DT_DIR || type == DT_LNK || type == DT_UNKNOWN) &&
            lookAt(fd, QByteArray(name), child) == Look::Folder)
            children.push_back(std::move(child));
    });
    if (error != 0)
        return false;
    ++m_foldersRead;
    appendChildren(index, children);
    return true;
}

// The folder has not changed: its subfolders are those it had, looked at again.
void FolderSnapshot::listFromPrevious(Walk& walk, int fd, int index, int previousIndex)
{
    const Folder& before = walk.previous->folder(previousIndex);
    std::vector<Folder> children;
    children.reserve(size_t(before.childCount));
    for (int i = 0; i < before.childCount; ++i) {
        const Folder& old = walk.previous->folder(before.firstChild + i);
        Folder child;
        const Look look = lookAt(fd, old.name, child);
        if (look == Look::Folder)
            children.push_back(std::move(child));
        else if (look == Look::Unknown)
            children.push_back(old); // kept as it was until it can be looked at
    }
    appendChildren(index, children);
}

void FolderSnapshot::appendChildren(int index, std::vector<Folder>& children)
{
    const auto byName = [](const Folder& a, const Folder& b) { return a.name < b.name; };
    if (!std::is_sorted(children.begin(), children.end(), byName)) // those of the previous snapshot are
        std::sort(children.begin(), children.end(), byName);
    Folder& folder = m_folders[size_t(index)];
    folder.firstChild = int(m_folders.size());
    folder.childCount = int(children.size());
    folder.listed = true;
    for (Folder& child : children) {
        child.parent = index;
        child.firstChild = 0;
        child.childCount = 0;
        m_folders.push_back(std::move(child));
    }
}

void FolderSnapshot::copySubtree(const FolderSnapshot& previous, int previousIndex, int index)
{
    const Folder& before = previous.folder(previousIndex);
    std::vector<Folder> children(previous.m_folders.begin() + before.firstChild,
                                 previous.m_folders.begin() + before.firstChild + before.childCount);
    appendChildren(index, children);
    m_folders[size_t(index)].listed = before.listed;
    const int first = m_folders[size_t(index)].firstChild;
    for (int i = 0; i < before.childCount; ++i)
        copySubtree(previous, before.firstChild + i, first + i);
}

void FolderSnapshot::descend(Walk& walk, int fd, int index, int previousIndex)
{
    const int first = m_folders[size_t(index)].firstChild;
    const int count = m_folders[size_t(index)].childCount;
    for (int i = 0; i < count; ++i) {
        const int child = first + i;
        if (m_folders[size_t(child)].link)
            continue;
        const int previousChild =
            previousIndex >= 0 && walk.previous
                ? walk.previous->childNamed(previousIndex, m_folders[size_t(child)].name)
                : -1;
        const bool trusted = walk.trusts(m_folders[size_t(child)], previousChild);
        if (trusted && walk.previous->folder(previousChild).childCount == 0) {
            m_folders[size_t(child)].listed = true; // unchanged and empty: nothing to open
            continue;
        }
        // An unchanged folder is only looked into, never read: a path handle will do.
        const int flags = (trusted ? O_PATH : O_RDONLY) | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
        const int childFd = ::openat(fd, m_folders[size_t(child)].name.constData(), flags);
        if (childFd < 0) {
            if (previousChild >= 0)
                copySubtree(*walk.previous, previousChild, child);
            continue;
        }
        visit(walk, childFd, child, previousChild);
        ::close(childFd);
    }
}

int FolderSnapshot::childNamed(int parent, const QByteArray& name) const
{
    const Folder& folder = m_folders[size_t(parent)];
    const auto begin = m_folders.begin() + folder.firstChild;
    const auto end = begin + folder.childCount;
    const auto it =
        std::lower_bound(begin, end, name, [](const Folder& f, const QByteArray& n) { return f.name < n; });
    return it != end && it->name == name ? int(it - m_folders.begin()) : -1;
}

QString FolderSnapshot::textPath(int index, const QString& rootText) const
{
    QString path = rootText;
    std::vector<int> chain;
    for (int at = index; at > 0; at = m_folders[size_t(at)].parent)
        chain.push_back(at);
    for (auto it = chain.rbegin(); it != chain.rend(); ++it)
        path += QLatin1Char('/') + QString::fromUtf8(m_folders[size_t(*it)].name);
    return path;
}

} // namespace nebra
