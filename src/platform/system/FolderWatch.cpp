#include "FolderWatch.h"

#include "FolderReaders.h"

#include <QFile>
#include <QSocketNotifier>

#include <sys/inotify.h>
#include <unistd.h>

namespace nebra {

namespace {

constexpr quint32 Events = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE | IN_ATTRIB |
                           IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

// One inotify instance per folder watched: giving a folder up closes it,
// with its watch, and an add that answers after that has nothing to undo.
// It lives as long as an add that uses it, so a reader thread stuck in the
// kernel never adds a watch to a descriptor number reused since.
struct FolderWatch::Instance
{
    int fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ~Instance()
    {
        if (fd >= 0)
            ::close(fd);
    }
};

FolderWatch::FolderWatch(FolderReaders& readers, QObject* parent) : QObject(parent), m_readers(readers) {}

FolderWatch::~FolderWatch() = default;

void FolderWatch::watch(const QString& folder)
{
    if (folder == m_folder)
        return;
    clear();
    m_folder = folder;
    auto instance = std::make_shared<Instance>();
    if (instance->fd < 0)
        return; // no notifications: the folder is simply not followed
    m_instance = instance;
    m_readers.read(
        folder, FolderReaders::Lane::User, this,
        [instance, path = QFile::encodeName(folder)] {
            return ::inotify_add_watch(instance->fd, path.constData(), Events) >= 0;
        },
        [this, instance](bool added) {
            if (instance != m_instance)
                return;
            if (!added) { // missing or unreadable: asked again with the next watch()
                m_instance.reset();
                m_folder.clear();
                return;
            }
            m_notifier = new QSocketNotifier(instance->fd, QSocketNotifier::Read, this);
            connect(m_notifier, &QSocketNotifier::activated, this, &FolderWatch::readEvents);
        });
}

void FolderWatch::clear()
{
    m_folder.clear();
    if (m_notifier) {
        m_notifier->setEnabled(false);
        m_notifier->deleteLater(); // clear() may come from its own signal
        m_notifier = nullptr;
    }
    m_instance.reset();
}

// The events' details do not matter: whoever listens reads the folder
// again. A folder that went is no longer watched (IN_IGNORED), so that it
// is watched again when it is back.
void FolderWatch::readEvents()
{
    if (!m_instance)
        return;
    alignas(inotify_event) char buffer[4096];
    bool gone = false;
    ssize_t length = 0;
    while ((length = ::read(m_instance->fd, buffer, sizeof buffer)) > 0) {
        for (ssize_t at = 0; at < length;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            at += ssize_t(sizeof(inotify_event) + event->len);
            gone = gone || (event->mask & IN_IGNORED);
        }
    }
    if (gone)
        clear();
    Q_EMIT changed();
}

} // namespace nebra
