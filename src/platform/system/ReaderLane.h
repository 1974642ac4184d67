#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace nebra {

// One queue of reads and the one thread that runs them, in the order they
// came. The thread is started when work arrives and ends by itself after a
// while without any; it is detached and never joined, because a read on a
// file server that stopped answering may never return, and nothing may wait
// for it: not the user-interface thread, not the program's exit. The lane
// lives as long as its thread or its owner holds it.
//
// Thread-safe: push, remove and close may be called from any thread.
class ReaderLane : public std::enable_shared_from_this<ReaderLane>
{
public:
    // Told, on the lane's thread, that the read with this id has run.
    using Delivery = std::function<void(quint64 id)>;

    static std::shared_ptr<ReaderLane> create(Delivery delivery);

    // Queues work; starts the thread when none runs.
    void push(quint64 id, std::function<void()> work);
    // Drops a read that has not started; false when it runs or ran already.
    bool remove(quint64 id);
    // No delivery after this returns; the queue is dropped, and a read that
    // is running is left to finish (or not) on its own.
    void close();

    // How long an idle thread waits for work before it ends.
    static constexpr int IdleEndMs = 30000;

private:
    explicit ReaderLane(Delivery delivery) : m_delivery(std::move(delivery)) {}
    static void serve(std::shared_ptr<ReaderLane> lane);

    struct Job
    {
        quint64 id = 0;
        std::function<void()> work;
    };

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Job> m_jobs;
    Delivery m_delivery;
    bool m_threadRunning = false;
    bool m_closed = false;
};

} // namespace nebra
