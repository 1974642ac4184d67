#pragma once

#include "ChangeBatch.h"
#include "FolderChange.h"
#include "MountTable.h"
#include "WatchedFolder.h"

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class QSocketNotifier;
class QTimer;
struct inotify_event;

namespace nebra {

// Follows folders on disk through the kernel's inotify interface and reports
// each change as a FolderChange with full paths, on the thread that owns it
// (the main thread): no other thread is involved.
//
// Every folder below the watched roots gets a watch of its own. The source
// keeps the folders it has reported, so that whatever the kernel does, what
// it reports adds up to the folders on disk:
// - a new folder is watched and then read at once, and every subfolder that
//   was made before its watch existed is reported too;
// - when the kernel's queue overflows and events are lost, the roots are read
//   again and the differences are reported as folders made and removed;
// - when the system's limit of watches is reached, watchLimitReached() is
//   emitted once and the folders without a watch are read again
//   periodically; an unreadable folder is treated the same way;
// - a link to a folder is reported as a folder but never followed, and a
//   folder reached a second time (a bind mount) is not descended again;
// - a file system mounted below a root whose changes the kernel cannot see
//   (a file server's share, FileSystemKind) is reported as a folder but
//   neither watched nor descended: looking into it would wait for its server
//   on this thread, and its changes are for a poll to find (FolderPoller);
// - a folder's move within the roots is one rename; a move out is a removal
//   and a move in a folder made, with its subfolders.
// Changes found in one pass over the kernel's queue are delivered together,
// in the kernel's order: repeated changes of one file count once, and a
// folder made and removed again within the pass is not reported at all.
class FolderChangeSource : public QObject
{
    Q_OBJECT
public:
    // Adds a watch the way inotify_add_watch(2) does (-1 and errno on failure).
    using AddWatch = std::function<int(int fd, const char* path, quint32 mask)>;

    struct Statistics
    {
        qint64 kernelEvents = 0; // events read from the kernel
        int overflows = 0;       // times the kernel's queue overflowed
        int rescans = 0;         // full reads of the roots after an overflow
        double lastRescanMs = 0;
        int unwatchedFolders = 0; // folders without a watch of their own now
    };

    explicit FolderChangeSource(QObject* parent = nullptr);
    ~FolderChangeSource() override;

    // Opens a notification instance and starts reading it. False when one is
    // open already or the system refuses one (lastError() holds errno).
    bool open();
    // Stops reading and closes the instance, with every watch.
    void close();
    bool isOpen() const { return m_fd >= 0; }

    // Watches every folder under each root (which need not exist all). False
    // when the source is not open or a root cannot be watched; the roots that
    // could be stay watched.
    bool watch(const QStringList& roots);
    // Removes every watch and forgets every folder.
    void unwatchAll();
    bool isWatching() const { return !m_roots.empty(); }

    int watchCount() const { return int(m_byWatch.size()); }
    int lastError() const { return m_lastError; }
    Statistics statistics() const;

    // How often folders without a watch are read again (default 30 s).
    void setRescanInterval(int milliseconds);
    // Replaces inotify_add_watch, so a test can run out of watches.
    void setAddWatch(AddWatch addWatch);

    // The system's limit of watches per user, 0 when it cannot be read.
    static int systemWatchLimit();

Q_SIGNALS:
    void changed(const nebra::FolderChange& change);
    // The system refused a watch for want of watches; emitted once per source.
    void watchLimitReached(int limit);

private:
    using Folder = WatchedFolder;
    using Pass = ChangeBatch;
    struct PendingMove;

    void readEvents();
    void drain(Pass& pass);
    void handleEvent(const ::inotify_event& event, Pass& pass);
    void handleMovedTo(Folder& dir, const QByteArray& name, quint32 mask, quint32 cookie, Pass& pass);
    void handleMovedFrom(const PendingMove& move, Pass& pass);
    void flushPendingMoves(Pass& pass);
    void deliver(Pass& pass);

    Folder* addRoot(const QString& root);
    void folderAppeared(Folder& parent, const QByteArray& name, Pass* pass);
    void fileAppeared(Folder& parent, const QByteArray& name, Pass& pass);
    bool tryWatch(Folder& folder);
    void scanChildren(Folder& folder, Pass* pass);
    void syncChildren(Folder& folder, bool recursive, Pass& pass);
    void forget(Folder& folder);
    void forgetWatches(Folder& folder);
    void rescanAfterOverflow(Pass& pass);
    void rescanUnwatched();
    void updateRescanTimer();

    Folder* findFolder(const QByteArray& rawPath) const;
    void noteUnnotifiedMounts();

    int m_fd = -1;
    int m_lastError = 0;
    bool m_limitWarned = false;
    QSocketNotifier* m_notifier = nullptr;
    QTimer* m_moveTimer;   // a move's second half may lag its first a little
    QTimer* m_rescanTimer; // folders without a watch
    AddWatch m_addWatch;
    std::vector<std::unique_ptr<Folder>> m_roots;
    QHash<int, Folder*> m_byWatch;
    QSet<Folder*> m_unwatched;
    std::vector<PendingMove> m_pendingMoves;
    Statistics m_stats;
    MountTable m_mounts;
    QSet<QByteArray> m_unnotifiedMounts; // mount points, as of the last walk or pass
};

} // namespace nebra
