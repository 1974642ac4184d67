#include "FolderChangeSource.h"

#include "FileSystemKind.h"
#include "FolderReaders.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace nebra {

namespace {

constexpr int DefaultRescanInterval = 30000;
// The second half of a move is queued right after the first; a reader can
// still slip in between, so an unmatched first half waits this long.
constexpr int MoveGrace = 2;

} // namespace

// The walk's own descriptor of the source's instance: a walk abandoned and
// still running after close() adds its watches to the same instance, never
// to a descriptor number reused since.
struct FolderChangeSource::Instance
{
    explicit Instance(int source) : fd(::fcntl(source, F_DUPFD_CLOEXEC, 0)) {}
    ~Instance()
    {
        if (fd >= 0)
            ::close(fd);
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;
    int fd;
};

struct FolderChangeSource::PendingMove
{
    quint32 cookie = 0;
    Folder* dir = nullptr;
    QByteArray name;
    bool isDir = false;
};

FolderChangeSource::FolderChangeSource(QObject* parent)
    : QObject(parent), m_moveTimer(new QTimer(this)), m_rescanTimer(new QTimer(this)),
      m_addWatch([](int fd, const char* path, quint32 mask) { return ::inotify_add_watch(fd, path, mask); }),
      m_readers(new FolderReaders(this))
{
    m_moveTimer->setSingleShot(true);
    m_moveTimer->setInterval(MoveGrace);
    m_rescanTimer->setInterval(DefaultRescanInterval);
    connect(m_moveTimer, &QTimer::timeout, this, [this] {
        if (m_walking)
            return; // read when the walk is taken in
        Pass pass;
        drain(pass);
        flushPendingMoves(pass);
        deliver(pass);
    });
    connect(m_rescanTimer, &QTimer::timeout, this, &FolderChangeSource::rescanUnwatched);
}

FolderChangeSource::~FolderChangeSource()
{
    close();
}

bool FolderChangeSource::open()
{
    if (m_fd >= 0)
        return false;
    m_fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_fd < 0) {
        m_lastError = errno;
        return false;
    }
    ++m_opened;
    m_staleWatches.clear();
    m_notifier = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &FolderChangeSource::readEvents);
    return true;
}

void FolderChangeSource::close()
{
    unwatchAll();
    delete m_notifier;
    m_notifier = nullptr;
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

bool FolderChangeSource::watch(const QStringList& roots)
{
    if (m_fd < 0)
        return false;
    if (m_walking)
        m_queuedRoots << roots;
    else
        startWalk(roots);
    return true;
}

// The folders known are not touched until the walk is taken in: the
// notifier and the timers that read the kernel's queue or the folders wait,
// so the walk may start from copies of the watch tables.
void FolderChangeSource::startWalk(const QStringList& roots)
{
    noteUnnotifiedMounts();
    auto instance = std::make_shared<Instance>(m_fd);
    m_walking = true;
    m_notifier->setEnabled(false);
    m_rescanTimer->stop();
    const quint64 generation = m_generation;
    const quint64 opened = m_opened;
    m_readers->read(
        roots.value(0), FolderReaders::Lane::Background, this,
        [instance, addWatch = m_addWatch, byWatch = m_byWatch, unwatched = m_unwatched,
         mounts = m_unnotifiedMounts, roots] {
            return FolderWalker::walkRoots(instance->fd, addWatch, byWatch, unwatched, mounts, roots);
        },
        [this, generation, opened](FolderWalker::Roots result) {
            if (opened == m_opened) // else its instance is closed, with its watches
                adopt(result, generation);
        });
}

void FolderChangeSource::adopt(FolderWalker::Roots& walk, quint64 generation)
{
    if (generation != m_generation) { // abandoned: its watches go
        m_staleWatches.unite(walk.added);
        if (!m_walking)
            dropStaleWatches();
        return;
    }
    m_walking = false;
    for (auto& root : walk.roots)
        m_roots.push_back(std::move(root));
    m_byWatch = std::move(walk.byWatch);
    m_unwatched = std::move(walk.unwatched);
    dropStaleWatches();
    settle(walk.lastError, walk.limitReached);
    m_notifier->setEnabled(true);
    readEvents(); // what the kernel queued during the walk
    if (generation != m_generation)
        return; // a receiver of those changes unwatched
    if (!m_queuedRoots.isEmpty())
        startWalk(std::exchange(m_queuedRoots, {}));
    Q_EMIT watched(walk.allRoots);
}

// A watch an abandoned walk made and no folder known holds. The kernel gives
// a folder one watch per instance, so one known may be the same.
void FolderChangeSource::dropStaleWatches()
{
    for (const int wd : std::as_const(m_staleWatches))
        if (m_fd >= 0 && !m_byWatch.contains(wd))
            ::inotify_rm_watch(m_fd, wd);
    m_staleWatches.clear();
}

void FolderChangeSource::unwatchAll()
{
    ++m_generation;
    m_queuedRoots.clear();
    if (m_walking && m_notifier)
        m_notifier->setEnabled(true);
    m_walking = false;
    for (auto& root : m_roots)
        forgetWatches(*root);
    m_roots.clear();
    m_byWatch.clear();
    m_unwatched.clear();
    m_pendingMoves.clear();
    m_moveTimer->stop();
    m_rescanTimer->stop();
}

FolderChangeSource::Statistics FolderChangeSource::statistics() const
{
    Statistics stats = m_stats;
    stats.unwatchedFolders = int(m_unwatched.size());
    return stats;
}

void FolderChangeSource::setRescanInterval(int milliseconds)
{
    m_rescanTimer->setInterval(milliseconds);
}

void FolderChangeSource::setAddWatch(AddWatch addWatch)
{
    m_addWatch = std::move(addWatch);
}

int FolderChangeSource::systemWatchLimit()
{
    QFile file(QStringLiteral("/proc/sys/fs/inotify/max_user_watches"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().trimmed().toInt();
}

// ---- reading the kernel's queue

void FolderChangeSource::readEvents()
{
    noteUnnotifiedMounts();
    Pass pass;
    drain(pass);
    if (m_pendingMoves.empty())
        m_moveTimer->stop();
    else
        m_moveTimer->start();
    deliver(pass);
}

void FolderChangeSource::drain(Pass& pass)
{
    if (m_fd < 0)
        return;
    alignas(inotify_event) char buffer[64 * 1024];
    for (;;) {
        const ssize_t length = ::read(m_fd, buffer, sizeof buffer);
        if (length <= 0)
            break; // EAGAIN: the queue is empty
        for (ssize_t at = 0; at < length;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            ++m_stats.kernelEvents;
            handleEvent(*event, pass);
            at += ssize_t(sizeof(inotify_event) + event->len);
        }
    }
    if (pass.overflowed)
        rescanAfterOverflow(pass);
}

void FolderChangeSource::handleEvent(const ::inotify_event& event, Pass& pass)
{
    if (event.mask & IN_Q_OVERFLOW) {
        ++m_stats.overflows;
        pass.overflowed = true;
        return;
    }
    // The kernel queues a move's two halves one right after the other: a first
    // half followed by anything else has no second. Settled before anything is
    // looked up, since it may forget folders.
    if (!(event.mask & IN_MOVED_TO))
        flushPendingMoves(pass);
    Folder* dir = m_byWatch.value(event.wd);
    if (!dir)
        return; // a watch removed already
    if (event.mask & IN_IGNORED) {
        m_byWatch.remove(event.wd);
        dir->wd = -1;
        return;
    }
    if (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF)) {
        // A subfolder's end is reported by its parent; only a root's is ours to report.
        if (!dir->parent) {
            pass.add(ShellEvent::SHCNE_RMDIR, dir->rootText);
            forgetWatches(*dir);
            std::erase_if(m_roots, [dir](const auto& root) { return root.get() == dir; });
        }
        return;
    }
    const QByteArray name(event.len ? event.name : "");
    const auto child = dir->children.find(name);
    const bool knownFolder = child != dir->children.end();
    if (event.mask & IN_MOVED_FROM) {
        m_pendingMoves.push_back({event.cookie, dir, name, knownFolder || (event.mask & IN_ISDIR)});
    } else if (event.mask & IN_MOVED_TO) {
        handleMovedTo(*dir, name, event.mask, event.cookie, pass);
    } else if (event.mask & IN_CREATE) {
        if (event.mask & IN_ISDIR)
            folderAppeared(*dir, name, &pass);
        else
            fileAppeared(*dir, name, pass);
    } else if (event.mask & IN_DELETE) {
        if (knownFolder) {
            pass.add(ShellEvent::SHCNE_RMDIR, child->second->textPath());
            forget(*child->second);
        } else if (!(event.mask & IN_ISDIR)) {
            pass.add(ShellEvent::SHCNE_DELETE, dir->childText(name));
        }
    } else if (event.mask & (IN_CLOSE_WRITE | IN_ATTRIB)) {
        if (!(event.mask & IN_ISDIR))
            pass.add(ShellEvent::SHCNE_UPDATEITEM, dir->childText(name));
        else if (knownFolder && child->second->wd < 0 && !child->second->link && tryWatch(*child->second))
            syncChildren(*child->second, true, pass); // readable again
    }
}

void FolderChangeSource::handleMovedTo(Folder& dir, const QByteArray& name, quint32 mask, quint32 cookie,
                                       Pass& pass)
{
    const auto from = std::find_if(m_pendingMoves.begin(), m_pendingMoves.end(),
                                   [cookie](const PendingMove& move) { return move.cookie == cookie; });
    if (from == m_pendingMoves.end()) { // moved in from outside the roots
        if (mask & IN_ISDIR)
            folderAppeared(dir, name, &pass);
        else
            fileAppeared(dir, name, pass);
        return;
    }
    const PendingMove move = *from;
    m_pendingMoves.erase(from);
    const auto source = move.dir->children.find(move.name);
    if (source == move.dir->children.end()) {
        if (!move.isDir)
            pass.add(ShellEvent::SHCNE_DELETE, move.dir->childText(move.name));
        if (mask & IN_ISDIR)
            folderAppeared(dir, name, &pass);
        else
            fileAppeared(dir, name, pass);
        return;
    }
    const QString oldPath = source->second->textPath();
    std::unique_ptr<Folder> folder = std::move(source->second);
    move.dir->children.erase(source);
    if (const auto replaced = dir.children.find(name); replaced != dir.children.end())
        forget(*replaced->second); // a rename over an empty folder replaces it
    folder->name = name;
    folder->parent = &dir;
    Folder& moved = *dir.children.emplace(name, std::move(folder)).first->second;
    pass.add(ShellEvent::SHCNE_RENAMEFOLDER, oldPath, moved.textPath());
}

void FolderChangeSource::handleMovedFrom(const PendingMove& move, Pass& pass)
{
    const auto child = move.dir->children.find(move.name);
    if (child != move.dir->children.end()) {
        pass.add(ShellEvent::SHCNE_RMDIR, child->second->textPath());
        forget(*child->second);
    } else if (!move.isDir) {
        pass.add(ShellEvent::SHCNE_DELETE, move.dir->childText(move.name));
    }
}

void FolderChangeSource::flushPendingMoves(Pass& pass)
{
    std::vector<PendingMove> moves;
    moves.swap(m_pendingMoves);
    for (const PendingMove& move : moves)
        handleMovedFrom(move, pass);
}

// Hands the pass's changes out, coalesced, in order.
void FolderChangeSource::deliver(Pass& pass)
{
    for (const FolderChange& change : pass.coalesced())
        Q_EMIT changed(change);
    pass.changes.clear();
}

// ---- the folders reported

FolderWalker FolderChangeSource::walker()
{
    return FolderWalker(m_fd, m_addWatch, m_byWatch, m_unwatched, m_unnotifiedMounts);
}

void FolderChangeSource::settle(int lastError, bool limitReached)
{
    if (lastError)
        m_lastError = lastError;
    if (limitReached && !m_limitWarned) {
        m_limitWarned = true;
        Q_EMIT watchLimitReached(systemWatchLimit());
    }
    updateRescanTimer();
}

void FolderChangeSource::folderAppeared(Folder& parent, const QByteArray& name, Pass* pass)
{
    FolderWalker folders = walker();
    folders.folderAppeared(parent, name, pass);
    settle(folders.lastError(), folders.limitReached());
}

void FolderChangeSource::fileAppeared(Folder& parent, const QByteArray& name, Pass& pass)
{
    // A link to a folder shows as a folder; it is never followed.
    if (!parent.children.count(name) && WatchedFolder::isLinkToFolder(parent.rawPath() + '/' + name)) {
        pass.add(ShellEvent::SHCNE_MKDIR, parent.addChild(name, true).textPath());
        return;
    }
    pass.add(ShellEvent::SHCNE_UPDATEITEM, parent.childText(name));
}

bool FolderChangeSource::tryWatch(Folder& folder)
{
    FolderWalker folders = walker();
    const bool watched = folders.tryWatch(folder);
    settle(folders.lastError(), folders.limitReached());
    return watched;
}

// Adds the folder's subfolders, watched, with theirs; reports each when a pass is given.
void FolderChangeSource::scanChildren(Folder& folder, Pass* pass)
{
    FolderWalker folders = walker();
    folders.scanChildren(folder, pass);
    settle(folders.lastError(), folders.limitReached());
}

// The mount table needs no call on a file system; it is read again only
// when the mounts changed.
void FolderChangeSource::noteUnnotifiedMounts()
{
    m_unnotifiedMounts.clear();
    for (const MountTable::Mount& mount : m_mounts.mounts())
        if (!FileSystemKind::isNotifiedType(mount.type))
            m_unnotifiedMounts.insert(mount.point);
}

// Compares the folder's subfolders on disk with those reported and reports the differences.
void FolderChangeSource::syncChildren(Folder& folder, bool recursive, Pass& pass)
{
    const std::vector<WatchedFolder::Entry> entries = WatchedFolder::subfolders(folder.rawPath());
    QHash<QByteArray, bool> onDisk;
    for (const WatchedFolder::Entry& entry : entries)
        onDisk.insert(entry.name, entry.link);
    std::vector<Folder*> gone;
    for (auto& [name, child] : folder.children) {
        const auto it = onDisk.constFind(name);
        if (it == onDisk.cend() || *it != child->link)
            gone.push_back(child.get());
    }
    for (Folder* child : gone) {
        pass.add(ShellEvent::SHCNE_RMDIR, child->textPath());
        forget(*child);
    }
    scanChildren(folder, &pass); // reports the folders not known yet
    if (!recursive)
        return;
    for (auto& [name, child] : folder.children) {
        if (child->link)
            continue;
        if (child->wd < 0)
            tryWatch(*child);
        syncChildren(*child, true, pass);
    }
}

void FolderChangeSource::forget(Folder& folder)
{
    forgetWatches(folder);
    if (folder.parent) {
        const QByteArray name = folder.name; // the folder goes with the erase
        folder.parent->children.erase(name);
    }
}

void FolderChangeSource::forgetWatches(Folder& folder)
{
    for (auto& [name, child] : folder.children)
        forgetWatches(*child);
    if (folder.wd >= 0) {
        ::inotify_rm_watch(m_fd, folder.wd); // fails harmlessly when the folder is gone
        m_byWatch.remove(folder.wd);
    }
    m_unwatched.remove(&folder);
    std::erase_if(m_pendingMoves, [&folder](const PendingMove& move) { return move.dir == &folder; });
}

void FolderChangeSource::rescanAfterOverflow(Pass& pass)
{
    QElapsedTimer timer;
    timer.start();
    flushPendingMoves(pass); // their halves may be among the lost events
    for (auto& root : m_roots)
        syncChildren(*root, true, pass);
    ++m_stats.rescans;
    m_stats.lastRescanMs = double(timer.nsecsElapsed()) / 1e6;
    pass.overflowed = false;
}

void FolderChangeSource::rescanUnwatched()
{
    if (m_walking)
        return; // the timer starts again when the walk is taken in
    // Parents first; a folder may vanish with its parent during the round.
    QList<QByteArray> paths;
    for (const Folder* folder : std::as_const(m_unwatched))
        paths.append(folder->rawPath());
    std::sort(paths.begin(), paths.end());
    Pass pass;
    for (const QByteArray& path : std::as_const(paths)) {
        if (Folder* folder = findFolder(path)) {
            tryWatch(*folder);
            syncChildren(*folder, false, pass);
        }
    }
    updateRescanTimer();
    deliver(pass);
}

void FolderChangeSource::updateRescanTimer()
{
    if (m_unwatched.isEmpty())
        m_rescanTimer->stop();
    else if (!m_rescanTimer->isActive())
        m_rescanTimer->start();
}

FolderChangeSource::Folder* FolderChangeSource::findFolder(const QByteArray& path) const
{
    for (const auto& root : m_roots) {
        if (!path.startsWith(root->name) ||
            (path.size() > root->name.size() && path[root->name.size()] != '/'))
            continue;
        Folder* folder = root.get();
        const QByteArray rest = path.mid(root->name.size());
        for (const QByteArray& name : rest.split('/')) {
            if (name.isEmpty())
                continue;
            const auto child = folder->children.find(name);
            if (child == folder->children.end()) {
                folder = nullptr;
                break;
            }
            folder = child->second.get();
        }
        if (folder)
            return folder;
    }
    return nullptr;
}

} // namespace nebra
