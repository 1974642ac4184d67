#include "FolderEntries.h"

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

FolderEntries FolderEntries::take(const QByteArray& folder, const WildcardFilter& filter)
{
    FolderEntries snapshot;
    const int fd = folder.isEmpty() ? -1 : ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        snapshot.m_error = folder.isEmpty() ? ENOENT : errno;
        return snapshot;
    }
    snapshot.m_error = readDirectoryEntries(fd, [&](const char* name, unsigned char type, quint64) {
        // A plain file the filter refuses costs neither a stat nor a copy.
        if (type == DT_REG && !filter.matches(name, std::strlen(name)))
            return;
        struct stat st = {};
        if (::fstatat(fd, name, &st, 0) != 0 && ::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            return; // gone while we looked
        const bool isFolder = S_ISDIR(st.st_mode);
        if (!isFolder && !S_ISREG(st.st_mode) && !S_ISLNK(st.st_mode))
            return; // a pipe, socket or device holds no document
        if (!isFolder && type != DT_REG && !filter.matches(name, std::strlen(name)))
            return;
        snapshot.m_entries.push_back({QByteArray(name), quint64(st.st_ino), qint64(st.st_size),
                                      qint64(st.st_mtim.tv_sec), qint32(st.st_mtim.tv_nsec), isFolder});
    });
    ::close(fd);
    std::sort(snapshot.m_entries.begin(), snapshot.m_entries.end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return snapshot;
}

} // namespace nebra
