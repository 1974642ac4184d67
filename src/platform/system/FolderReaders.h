#pragma once

#include "MountTable.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <type_traits>

namespace nebra {

class ReaderLane;

// Runs reads of the data folders (listings, file facts, documents,
// existence checks) on reader threads, so that the thread that owns this
// object (the user-interface thread) never waits for a disk or a server.
//
// Each mount has two lanes, each a queue with a thread of its own: User for
// what the user waits for, Background for the polls that follow a share.
// A lane runs its reads one at a time in the order they came, so results of
// one lane arrive in order; a mount that stops answering holds up only its
// own lanes, never another mount's. Which mount a path is on is judged from
// its text and the mount table (MountTable), without touching the disk.
//
// A read's result comes back as a queued call on this object's thread:
// done(result) runs there, unless the read was cancelled or its context
// object has gone. A read that has not answered within WaitingAfterMs calls
// waiting() once, on this thread; done() follows whenever the read ends.
//
// Destroying this object never waits: reads still queued are dropped, and a
// reader thread stuck in the kernel is abandoned. It holds nothing of this
// object's and delivers nothing, and the process can end while it waits.
class FolderReaders : public QObject
{
    Q_OBJECT
public:
    enum class Lane
    {
        User,
        Background,
    };

    static constexpr int WaitingAfterMs = 2000;

    explicit FolderReaders(QObject* parent = nullptr);
    ~FolderReaders() override;

    // Runs work() on the lane of path's mount, then done(result) here. work
    // must not touch anything another thread uses; it gets its inputs by
    // value. Returns the read's id, never 0.
    template <typename Work, typename Done>
    quint64 read(const QString& path, Lane lane, QObject* context, Work work, Done done,
                 std::function<void()> waiting = {})
    {
        using Result = std::invoke_result_t<Work&>;
        auto slot = std::make_shared<std::optional<Result>>();
        return submit(
            path, lane, context, [slot, work = std::move(work)]() mutable { slot->emplace(work()); },
            [slot, done = std::move(done)]() mutable { done(std::move(**slot)); }, std::move(waiting));
    }

    // The read's done() and waiting() will not be called; a read not yet
    // started does not run at all.
    void cancel(quint64 id);
    // Started or queued, and neither delivered nor cancelled.
    bool isPending(quint64 id) const { return m_pending.contains(id); }
    int pendingCount() const { return int(m_pending.size()); }

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    struct Pending
    {
        QPointer<QObject> context;
        bool hasContext = false;
        std::function<void()> deliver;
        std::function<void()> waiting;
        std::shared_ptr<ReaderLane> lane;
        int timer = 0;
    };

    quint64 submit(const QString& path, Lane lane, QObject* context, std::function<void()> work,
                   std::function<void()> deliver, std::function<void()> waiting);
    std::shared_ptr<ReaderLane> laneFor(const QString& path, Lane lane);
    void finished(quint64 id);
    bool contextAlive(const Pending& pending) const { return !pending.hasContext || pending.context; }

    MountTable m_mounts;
    std::map<QByteArray, std::shared_ptr<ReaderLane>> m_lanes; // by lane and mount point
    QHash<quint64, Pending> m_pending;
    QHash<int, quint64> m_readOfTimer;
    quint64 m_nextId = 1;
};

} // namespace nebra
