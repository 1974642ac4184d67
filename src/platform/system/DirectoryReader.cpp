#include "DirectoryReader.h"

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

inline bool isDotOrDotDot(const char* name)
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Opens a folder for listing; the DIR owns the descriptor afterwards.
DIR* openFolder(const QByteArray& path, int& error, struct stat* self)
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
    if (self && ::fstat(fd, self) != 0) {
        error = errno;
        ::close(fd);
        return nullptr;
    }
    DIR* dir = ::fdopendir(fd);
    if (!dir) {
        error = errno;
        ::close(fd);
    }
    return dir;
}

DirectoryReader::FolderId idOf(const struct stat& st)
{
    return {quint64(st.st_dev), quint64(st.st_ino)};
}

// Keeps the entry when it is a folder or a link that leads to one (a broken
// or looping link does not).
void addIfFolder(int fd, const dirent* entry, std::vector<DirectoryReader::Subfolder>& folders)
{
    unsigned char type = entry->d_type;
    struct stat st = {};
    if (type == DT_UNKNOWN) {
        if (::fstatat(fd, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            return; // vanished while we looked
        type = S_ISDIR(st.st_mode) ? DT_DIR : S_ISLNK(st.st_mode) ? DT_LNK : DT_REG;
    }
    if (type == DT_DIR) {
        const QByteArray raw(entry->d_name);
        folders.push_back({raw, QString::fromUtf8(raw), false, {}});
    } else if (type == DT_LNK && ::fstatat(fd, entry->d_name, &st, 0) == 0 && S_ISDIR(st.st_mode)) {
        const QByteArray raw(entry->d_name);
        folders.push_back({raw, QString::fromUtf8(raw), true, idOf(st)});
    }
}

} // namespace

DirectoryReader::SubfolderListing DirectoryReader::subfolders(const QByteArray& path)
{
    SubfolderListing listing;
    struct stat self = {};
    DIR* dir = openFolder(path, listing.error, &self);
    if (!dir)
        return listing;
    listing.id = idOf(self);
    const int fd = ::dirfd(dir);
    errno = 0;
    while (const dirent* entry = ::readdir(dir)) {
        if (!isDotOrDotDot(entry->d_name))
            addIfFolder(fd, entry, listing.folders);
        errno = 0;
    }
    if (errno != 0)
        listing.error = errno;
    ::closedir(dir);
    std::sort(listing.folders.begin(), listing.folders.end(), [](const Subfolder& a, const Subfolder& b) {
        const int c = a.name.compare(b.name, Qt::CaseInsensitive);
        return c != 0 ? c < 0 : a.rawName < b.rawName;
    });
    return listing;
}

DirectoryReader::FileListing DirectoryReader::files(const QByteArray& folder, const WildcardFilter& filter)
{
    FileListing listing;
    DIR* dir = openFolder(folder, listing.error, nullptr);
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
        if (!isFolder && type != DT_REG && !filter.matches(name, std::strlen(name)))
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
