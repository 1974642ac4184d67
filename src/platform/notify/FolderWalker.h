#pragma once

#include "ChangeBatch.h"
#include "WatchedFolder.h"

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace nebra {

// Watches folders and reads their subfolders into a tree of WatchedFolder:
// the walk of FolderChangeSource, for its roots (on a reader thread) and for
// each folder that appears later (on the source's own thread). It touches
// nothing but what it is given: the inotify descriptor, the watches known so
// far (so that a folder reached a second time is not descended again), the
// folders without a watch and the mount points not to enter.
class FolderWalker
{
public:
    // Adds a watch the way inotify_add_watch(2) does (-1 and errno on failure).
    using AddWatch = std::function<int(int fd, const char* path, quint32 mask)>;

    static const quint32 WatchMask;

    // What a walk of roots found: the roots with their folders, and the watch
    // tables it was given with its own added.
    struct Roots
    {
        std::vector<std::unique_ptr<WatchedFolder>> roots;
        QHash<int, WatchedFolder*> byWatch;
        QSet<WatchedFolder*> unwatched;
        QSet<int> added; // the watches it made
        int lastError = 0;
        bool limitReached = false;
        bool allRoots = true;
    };
    // Watches each root and every folder below it, for a reader thread: it
    // touches only its arguments (the folders in the tables are compared,
    // never read).
    static Roots walkRoots(int fd, const AddWatch& addWatch, QHash<int, WatchedFolder*> byWatch,
                           QSet<WatchedFolder*> unwatched, const QSet<QByteArray>& unnotifiedMounts,
                           const QStringList& roots);

    FolderWalker(int fd, const AddWatch& addWatch, QHash<int, WatchedFolder*>& byWatch,
                 QSet<WatchedFolder*>& unwatched, const QSet<QByteArray>& unnotifiedMounts);

    // A root, watched, without its subfolders; null when it cannot be watched.
    std::unique_ptr<WatchedFolder> addRoot(const QString& root);
    // Watches the folder; a folder reached a second time is marked a link.
    bool tryWatch(WatchedFolder& folder);
    // Adds the folder, watched, with its subfolders; reports each to pass
    // when given. A folder gone again, or not a folder, is not added.
    void folderAppeared(WatchedFolder& parent, const QByteArray& name, ChangeBatch* pass);
    // Adds the folder's subfolders not known yet, watched, with theirs.
    void scanChildren(WatchedFolder& folder, ChangeBatch* pass);

    // errno of the last refusal, 0 when none.
    int lastError() const { return m_lastError; }
    // A watch was refused for want of watches.
    bool limitReached() const { return m_limitReached; }

private:
    int m_fd;
    const AddWatch& m_addWatch;
    QHash<int, WatchedFolder*>& m_byWatch;
    QSet<WatchedFolder*>& m_unwatched;
    const QSet<QByteArray>& m_unnotifiedMounts;
    int m_lastError = 0;
    bool m_limitReached = false;
};

} // namespace nebra
