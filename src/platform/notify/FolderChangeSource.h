#pragma once

#include "ChangeBatch.h"
#include "FolderChange.h"
#include "FolderWalker.h"
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

class FolderReaders;

// Follows folders on disk through the kernel's inotify interface and reports
// each change as a FolderChange with full paths, on the thread that owns it
// (the main thread).
//
// Every folder below the watched roots gets a watch of its own. The first
// walk of the roots runs on a reader thread (FolderReaders), so that a large
// or slow disk never holds the owner's thread; watched() tells when its
// watches are in place. Meanwhile the kernel's events wait in its queue and
// are read, in order, when the walk is taken in: a folder made during the
// walk is reported unless the walk found it. A walk still running when the
// source is told to unwatch, close or go is abandoned, never waited for, and
// its watches are removed when it ends. The source
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
//   on a thread of ours, and its changes are for a poll to find (FolderPoller);
// - a folder's move within the roots is one rename; a move out is a removal
//   and a move in a folder made, with its subfolders.
// Changes found in one pass over the kernel's queue are delivered together,
// in the kernel's order: repeated changes of one file count once, and a
// folder made and removed again within the pass is not reported at all.
class FolderChangeSource : public QObject
{
    Q_OBJECT
public:
    using AddWatch = FolderWalker::AddWatch;

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

    // Starts watching every folder under each root (which need not exist
    // all); watched() follows once per call, when the watches are in place.
    // False when the source is not open. A call while a walk runs is walked
    // after it.
    bool watch(const QStringList& roots);
    // Removes every watch and forgets every folder; a walk still running is
    // abandoned and its watched() never comes.
    void unwatchAll();
    bool isWatching() const { return !m_roots.empty() || m_walking; }
    // A walk of watch() is running.
    bool isWalking() const { return m_walking; }

    int watchCount() const { return int(m_byWatch.size()); }
    int lastError() const { return m_lastError; }
    Statistics statistics() const;

    // How often folders without a watch are read again (default 30 s).
    void setRescanInterval(int milliseconds);
    // Replaces inotify_add_watch, so a test can run out of watches. It is
    // called on the reader thread during a walk of watch().
    void setAddWatch(AddWatch addWatch);

    // The system's limit of watches per user, 0 when it cannot be read.
    static int systemWatchLimit();

Q_SIGNALS:
    void changed(const nebra::FolderChange& change);
    // The system refused a watch for want of watches; emitted once per source.
    void watchLimitReached(int limit);
    // The walk of a watch() call is done and its watches are in place;
    // allRoots is false when a root could not be watched (lastError() holds
    // errno), the roots that could be stay watched.
    void watched(bool allRoots);

private:
    using Folder = WatchedFolder;
    using Pass = ChangeBatch;
    struct PendingMove;
    struct Instance;

    void readEvents();
    void drain(Pass& pass);
    void handleEvent(const ::inotify_event& event, Pass& pass);
    void handleMovedTo(Folder& dir, const QByteArray& name, quint32 mask, quint32 cookie, Pass& pass);
    void handleMovedFrom(const PendingMove& move, Pass& pass);
    void flushPendingMoves(Pass& pass);
    void deliver(Pass& pass);

    void startWalk(const QStringList& roots);
    void adopt(FolderWalker::Roots& walk, quint64 generation);
    void dropStaleWatches();
    FolderWalker walker();
    // Takes in a walk's refusals: lastError(), watchLimitReached() once.
    void settle(int lastError, bool limitReached);
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
    FolderReaders* m_readers;
    bool m_walking = false;
    quint64 m_generation = 0;  // a walk started before the last unwatchAll() is stale
    quint64 m_opened = 0;      // instances opened: a walk's instance may be closed since
    QStringList m_queuedRoots; // watch() calls while a walk runs
    QSet<int> m_staleWatches;  // added by abandoned walks
};

} // namespace nebra
