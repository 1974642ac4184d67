#include "WatchedFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace nebra {

WatchedFolder& WatchedFolder::addChild(const QByteArray& childName, bool isLink)
{
    auto child = std::make_unique<WatchedFolder>();
    child->name = childName;
    child->parent = this;
    child->link = isLink;
    return *children.insert_or_assign(childName, std::move(child)).first->second;
}

QByteArray WatchedFolder::rawPath() const
{
    return parent ? parent->rawPath() + '/' + name : name;
}

QString WatchedFolder::textPath() const
{
    return parent ? parent->childText(name) : rootText;
}

QString WatchedFolder::childText(const QByteArray& childName) const
{
    return textPath() + QLatin1Char('/') + QString::fromUtf8(childName);
}

std::vector<WatchedFolder::Entry> WatchedFolder::subfolders(const QByteArray& path)
{
    std::vector<Entry> entries;
    DIR* dir = ::opendir(path.constData());
    if (!dir)
        return entries;
    const int fd = ::dirfd(dir);
    while (const dirent* entry = ::readdir(dir)) {
        const char* entryName = entry->d_name;
        if (entryName[0] == '.' && (entryName[1] == '\0' || (entryName[1] == '.' && entryName[2] == '\0')))
            continue;
        unsigned char type = entry->d_type;
        struct stat st = {};
        if (type == DT_UNKNOWN && ::fstatat(fd, entryName, &st, AT_SYMLINK_NOFOLLOW) == 0)
            type = S_ISDIR(st.st_mode) ? DT_DIR : S_ISLNK(st.st_mode) ? DT_LNK : DT_REG;
        if (type == DT_DIR)
            entries.push_back({QByteArray(entryName), false});
        else if (type == DT_LNK && ::fstatat(fd, entryName, &st, 0) == 0 && S_ISDIR(st.st_mode))
            entries.push_back({QByteArray(entryName), true});
    }
    ::closedir(dir);
    return entries;
}

bool WatchedFolder::isLinkToFolder(const QByteArray& path)
{
    struct stat st = {};
    if (::lstat(path.constData(), &st) != 0 || !S_ISLNK(st.st_mode))
        return false;
    return ::stat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode);
}

} // namespace nebra
