#include "ReaderLane.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include <pthread.h>

namespace nebra {

std::shared_ptr<ReaderLane> ReaderLane::create(Delivery delivery)
{
    return std::shared_ptr<ReaderLane>(new ReaderLane(std::move(delivery)));
}

void ReaderLane::push(quint64 id, std::function<void()> work)
{
    bool start = false;
    {
        const std::lock_guard lock(m_mutex);
        if (m_closed)
            return;
        m_jobs.push_back({id, std::move(work)});
        start = !m_threadRunning;
        m_threadRunning = true;
    }
    if (start)
        std::thread(&ReaderLane::serve, shared_from_this()).detach();
    else
        m_wake.notify_one();
}

bool ReaderLane::remove(quint64 id)
{
    std::function<void()> dropped; // destroyed outside the lock
    const std::lock_guard lock(m_mutex);
    const auto it = std::find_if(m_jobs.begin(), m_jobs.end(), [id](const Job& job) { return job.id == id; });
    if (it == m_jobs.end())
        return false;
    dropped = std::move(it->work);
    m_jobs.erase(it);
    return true;
}

void ReaderLane::close()
{
    std::deque<Job> dropped;
    Delivery delivery;
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        dropped.swap(m_jobs);
        delivery.swap(m_delivery);
    }
    m_wake.notify_all();
}

// The thread holds the lane, so the lane outlives its owner while a read
// runs; a read that never returns keeps only this lane alive.
void ReaderLane::serve(std::shared_ptr<ReaderLane> lane)
{
    ::pthread_setname_np(::pthread_self(), "nebra-reader");
    std::unique_lock lock(lane->m_mutex);
    for (;;) {
        const bool woken = lane->m_wake.wait_for(lock, std::chrono::milliseconds(IdleEndMs),
                                                 [&lane] { return lane->m_closed || !lane->m_jobs.empty(); });
        if (!woken || lane->m_closed) {
            lane->m_threadRunning = false;
            return;
        }
        Job job = std::move(lane->m_jobs.front());
        lane->m_jobs.pop_front();
        lock.unlock();
        job.work();
        job.work = nullptr; // what the read held goes before it is reported done
        lock.lock();
        // Under the lock: close() cannot finish, and so the owner cannot go,
        // while the delivery is being made.
        if (lane->m_delivery)
            lane->m_delivery(job.id);
    }
}

} // namespace nebra
