#include "FolderReaders.h"

#include "ReaderLane.h"

#include <QDir>
#include <QFile>
#include <QTimerEvent>

namespace nebra {

FolderReaders::FolderReaders(QObject* parent) : QObject(parent) {}

FolderReaders::~FolderReaders()
{
    // After close() no lane delivers, so no queued call can reach this object
    // once it is gone (QObject's destructor drops those already posted).
    for (auto& [key, lane] : m_lanes)
        lane->close();
}

quint64 FolderReaders::submit(const QString& path, Lane lane, QObject* context, std::function<void()> work,
                              std::function<void()> deliver, std::function<void()> waiting)
{
    const quint64 id = m_nextId++;
    Pending pending;
    pending.context = context;
    pending.hasContext = context != nullptr;
    pending.deliver = std::move(deliver);
    pending.waiting = std::move(waiting);
    pending.lane = laneFor(path, lane);
    pending.timer = startTimer(WaitingAfterMs, Qt::PreciseTimer);
    m_readOfTimer.insert(pending.timer, id);
    const std::shared_ptr<ReaderLane> target = pending.lane;
    m_pending.insert(id, std::move(pending));
    target->push(id, std::move(work));
    return id;
}

std::shared_ptr<ReaderLane> FolderReaders::laneFor(const QString& path, Lane lane)
{
    const QByteArray point = m_mounts.mountOf(QFile::encodeName(QDir::cleanPath(path))).point;
    const QByteArray key = (lane == Lane::User ? "u" : "b") + point;
    std::shared_ptr<ReaderLane>& slot = m_lanes[key];
    if (!slot) {
        // The lane's thread reports here through a queued call; the lane is
        // closed before this object goes, so the pointer is never stale.
        slot = ReaderLane::create([this](quint64 id) {
            QMetaObject::invokeMethod(
                this, [this, id] { finished(id); }, Qt::QueuedConnection);
        });
    }
    return slot;
}

void FolderReaders::cancel(quint64 id)
{
    const auto it = m_pending.find(id);
    if (it == m_pending.end())
        return;
    const Pending pending = std::move(*it);
    m_pending.erase(it);
    if (pending.timer)
        killTimer(pending.timer);
    m_readOfTimer.remove(pending.timer);
    pending.lane->remove(id);
}

void FolderReaders::finished(quint64 id)
{
    const auto it = m_pending.find(id);
    if (it == m_pending.end())
        return; // cancelled
    const Pending pending = std::move(*it);
    m_pending.erase(it);
    if (pending.timer)
        killTimer(pending.timer);
    m_readOfTimer.remove(pending.timer);
    if (contextAlive(pending))
        pending.deliver();
}

void FolderReaders::timerEvent(QTimerEvent* event)
{
    const int timer = event->timerId();
    killTimer(timer);
    const quint64 id = m_readOfTimer.take(timer);
    const auto it = m_pending.find(id);
    if (it == m_pending.end())
        return;
    it->timer = 0;
    const std::function<void()> waiting = it->waiting;
    if (waiting && contextAlive(*it))
        waiting(); // may cancel this read or start others
}

} // namespace nebra
