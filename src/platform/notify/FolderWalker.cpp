#include "FolderWalker.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <sys/inotify.h>

namespace nebra {

const quint32 FolderWalker::WatchMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE |
                                        IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR |
                                        IN_DONT_FOLLOW | IN_EXCL_UNLINK;

FolderWalker::FolderWalker(int fd, const AddWatch& addWatch, QHash<int, WatchedFolder*>& byWatch,
                           QSet<WatchedFolder*>& unwatched, const QSet<QByteArray>& unnotifiedMounts)
    : m_fd(fd), m_addWatch(addWatch), m_byWatch(byWatch), m_unwatched(unwatched),
      m_unnotifiedMounts(unnotifiedMounts)
{
}

FolderWalker::Roots FolderWalker::walkRoots(int fd, const AddWatch& addWatch,
                                            QHash<int, WatchedFolder*> byWatch,
                                            QSet<WatchedFolder*> unwatched,
                                            const QSet<QByteArray>& unnotifiedMounts,
                                            const QStringList& roots)
{
    Roots result;
    const QHash<int, WatchedFolder*> before = byWatch;
    FolderWalker walker(fd, addWatch, byWatch, unwatched, unnotifiedMounts);
    for (const QString& root : roots) {
        std::unique_ptr<WatchedFolder> folder = walker.addRoot(root);
        if (!folder) {
            result.allRoots = false;
            continue;
        }
        walker.scanChildren(*folder, nullptr);
        result.roots.push_back(std::move(folder));
    }
    for (auto it = byWatch.cbegin(); it != byWatch.cend(); ++it)
        if (before.value(it.key()) != it.value())
            result.added.insert(it.key());
    result.byWatch = std::move(byWatch);
    result.unwatched = std::move(unwatched);
    result.lastError = walker.lastError();
    result.limitReached = walker.limitReached();
    return result;
}

std::unique_ptr<WatchedFolder> FolderWalker::addRoot(const QString& root)
{
    auto folder = std::make_unique<WatchedFolder>();
    folder->rootText = QDir::cleanPath(root);
    folder->name = QFile::encodeName(folder->rootText);
    folder->wd = m_addWatch(m_fd, folder->name.constData(), WatchMask);
    if (folder->wd < 0) {
        m_lastError = errno;
        return nullptr;
    }
    m_byWatch.insert(folder->wd, folder.get());
    return folder;
}

bool FolderWalker::tryWatch(WatchedFolder& folder)
{
    const int wd = m_addWatch(m_fd, folder.rawPath().constData(), WatchMask);
    if (wd < 0) {
        m_lastError = errno;
        if (m_lastError == ENOSPC)
            m_limitReached = true;
        if (m_lastError == ENOSPC || m_lastError == EACCES)
            m_unwatched.insert(&folder);
        return false;
    }
    if (WatchedFolder* other = m_byWatch.value(wd); other && other != &folder) {
        folder.link = true; // the same folder reached a second time: not descended again
        return false;
    }
    m_unwatched.remove(&folder);
    folder.wd = wd;
    m_byWatch.insert(wd, &folder);
    return true;
}

void FolderWalker::folderAppeared(WatchedFolder& parent, const QByteArray& name, ChangeBatch* pass)
{
    if (parent.children.count(name))
        return; // reported already (found by a read of its parent)
    WatchedFolder& folder = parent.addChild(name, false);
    const bool watched = tryWatch(folder);
    if (!watched && !folder.link &&
        (m_lastError == ENOENT || m_lastError == ENOTDIR || m_lastError == ELOOP)) {
        // Gone again, or not a folder after all: perhaps a link to one.
        if (!WatchedFolder::isLinkToFolder(folder.rawPath())) {
            parent.children.erase(name);
            return;
        }
        folder.link = true;
    }
    if (pass)
        pass->add(ShellEvent::SHCNE_MKDIR, folder.textPath());
    if (!folder.link)
        scanChildren(folder, pass);
}

void FolderWalker::scanChildren(WatchedFolder& folder, ChangeBatch* pass)
{
    const QByteArray path = folder.rawPath();
    for (const WatchedFolder::Entry& entry : WatchedFolder::subfolders(path)) {
        const bool unnotified =
            !m_unnotifiedMounts.isEmpty() && m_unnotifiedMounts.contains(path + '/' + entry.name);
        if (!entry.link && !unnotified) {
            folderAppeared(folder, entry.name, pass);
        } else if (!folder.children.count(entry.name)) {
            WatchedFolder& added = folder.addChild(entry.name, true);
            if (pass)
                pass->add(ShellEvent::SHCNE_MKDIR, added.textPath());
        }
    }
}

} // namespace nebra
