#include "DirectoryReader.h"

#include "DirectoryEntries.h"
#include "WildcardFilter.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nebra {

namespace {

// Pipes, sockets and devices hold no document: none of the suite's programs
// can open one, and reading a pipe would block until someone writes to it.
inline bool isSpecial(mode_t mode)
{
    return S_ISFIFO(mode) || S_ISSOCK(mode) || S_ISCHR(mode) || S_ISBLK(mode);
}

inline bool isDotOrDotDot(const char* name)
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Opens a folder for listing; the DIR owns the descriptor afterwards.
DIR* openFolder(const QByteArray& path, int& error)
{
    if (path.isEmpty()) {
        error = ENOENT; // an empty path names no folder (and never the working folder)
        return nullptr;
    }
    const int fd = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        error = errno;
        return nullptr;
    }
    DIR* dir = ::fdopendir(fd);
    if (!dir) {
        error = errno;
        ::close(fd);
    }
    return dir;
}

DirectoryReader::FolderId idOfStat(const struct stat& st)
{
    return {quint64(st.st_dev), quint64(st.st_ino)};
}

// Keeps the entry when it is a folder or a link that leads to one (a broken
// or looping link does not). A folder's identity comes from the entry itself.
void addIfFolder(int fd, const char* name, unsigned char type, quint64 inode, quint64 device,
                 std::vector<DirectoryReader::Subfolder>& folders)
{
    struct stat st = {};
    DirectoryReader::FolderId target{device, inode};
    if (type == DT_UNKNOWN) {
        if (::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            return; // vanished while we looked
        type = S_ISDIR(st.st_mode) ? DT_DIR : S_ISLNK(st.st_mode) ? DT_LNK : DT_REG;
        target = idOfStat(st);
    }
    if (type == DT_DIR) {
        const QByteArray raw(name);
        folders.push_back({raw, QString::fromUtf8(raw), false, target});
    } else if (type == DT_LNK && ::fstatat(fd, name, &st, 0) == 0 && S_ISDIR(st.st_mode)) {
        const QByteArray raw(name);
        folders.push_back({raw, QString::fromUtf8(raw), true, idOfStat(st)});
    }
}

// Reads the entries in large blocks straight from the kernel.
int readSubfolders(int fd, quint64 device, std::vector<DirectoryReader::Subfolder>& folders)
{
    return readDirectoryEntries(fd, [&](const char* name, unsigned char type, quint64 inode) {
        addIfFolder(fd, name, type, inode, device, folders);
    });
}

void sortByName(std::vector<DirectoryReader::Subfolder>& folders)
{
    std::sort(folders.begin(), folders.end(),
              [](const DirectoryReader::Subfolder& a, const DirectoryReader::Subfolder& b) {
                  const int c = a.name.compare(b.name, Qt::CaseInsensitive);
                  return c != 0 ? c < 0 : a.rawName < b.rawName;
              });
}

} // namespace

DirectoryReader::OpenFolder& DirectoryReader::OpenFolder::operator=(OpenFolder&& other) noexcept
{
    if (this != &other) {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = std::exchange(other.m_fd, -1);
    }
    return *this;
}

DirectoryReader::OpenFolder::~OpenFolder()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

DirectoryReader::OpenFolder DirectoryReader::open(const QByteArray& path, int& error)
{
    if (path.isEmpty()) {
        error = ENOENT; // an empty path names no folder (and never the working folder)
        return {};
    }
    const int fd = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    error = fd < 0 ? errno : 0;
    return OpenFolder(fd);
}

DirectoryReader::OpenFolder DirectoryReader::openSubfolder(const OpenFolder& parent, const QByteArray& name,
                                                           int& error)
{
    const int fd = ::openat(parent.fd(), name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    error = fd < 0 ? errno : 0;
    return OpenFolder(fd);
}

DirectoryReader::FolderId DirectoryReader::idOf(const OpenFolder& folder)
{
    struct stat st = {};
    return folder.isOpen() && ::fstat(folder.fd(), &st) == 0 ? idOfStat(st) : FolderId();
}

DirectoryReader::SubfolderListing DirectoryReader::subfolders(const OpenFolder& folder, quint64 device)
{
    SubfolderListing listing;
    if (!folder.isOpen()) {
        listing.error = EBADF;
        return listing;
    }
    listing.error = readSubfolders(folder.fd(), device, listing.folders);
    sortByName(listing.folders);
    return listing;
}

DirectoryReader::SubfolderListing DirectoryReader::subfolders(const QByteArray& path)
{
    int error = 0;
    const OpenFolder folder = open(path, error);
    if (!folder.isOpen()) {
        SubfolderListing listing;
        listing.error = error;
        return listing;
    }
    const FolderId id = idOf(folder);
    SubfolderListing listing = subfolders(folder, id.device);
    listing.id = id;
    return listing;
}

DirectoryReader::FileListing DirectoryReader::files(const QByteArray& folder, const WildcardFilter& filter)
{
    FileListing listing;
    DIR* dir = openFolder(folder, listing.error);
    if (!dir)
        return listing;
    const int fd = ::dirfd(dir);
    errno = 0;
    while (const dirent* entry = ::readdir(dir)) {
        const char* name = entry->d_name;
        if (isDotOrDotDot(name))
            continue;
        const unsigned char type = entry->d_type;
        // A folder is always listed; a plain file only when its name matches,
        // so the names that do not match cost neither a stat nor a conversion.
        if (type != DT_DIR && type != DT_LNK && type != DT_UNKNOWN &&
            !filter.matches(name, std::strlen(name)))
            continue;
        struct stat st = {};
        if (::fstatat(fd, name, &st, 0) != 0 && ::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            continue; // vanished while we looked
        const bool isFolder = S_ISDIR(st.st_mode);
        if (isSpecial(st.st_mode) ||
            (!isFolder && type != DT_REG && !filter.matches(name, std::strlen(name))))
            continue;
        listing.records.push_back({QString::fromUtf8(name), qint64(st.st_mtim.tv_sec),
                                   qint32(st.st_mtim.tv_nsec), qint64(st.st_size), isFolder});
        errno = 0;
    }
    if (errno != 0)
        listing.error = errno;
    ::closedir(dir);
    return listing;
}

} // namespace nebra
