#pragma once

#include <QFile>
#include <QString>
#include <QTest>

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <stop_token>
#include <thread>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace nebra::test {

// Makes a named pipe. Nothing ever writes to it, so a reader that opens it
// blocks until a PipeWatchdog lets it go.
inline void makeFifo(const QString& path)
{
    QVERIFY2(::mkfifo(QFile::encodeName(path).constData(), 0600) == 0, qPrintable(path));
}

// A Unix-domain socket bound to a path, as a running service leaves one in a
// folder; closed (the path stays) when the object goes.
class BoundSocket
{
public:
    explicit BoundSocket(const QString& path) : m_fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const QByteArray name = QFile::encodeName(path);
        if (m_fd < 0 || size_t(name.size()) >= sizeof address.sun_path)
            return;
        std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
        m_bound = ::bind(m_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~BoundSocket()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    BoundSocket(const BoundSocket&) = delete;
    BoundSocket& operator=(const BoundSocket&) = delete;

    bool isBound() const { return m_bound; }

private:
    int m_fd;
    bool m_bound = false;
};

// Keeps a test from hanging on a pipe that it expects never to be opened.
// When the limit passes while someone has the pipe open for reading, the
// watchdog opens its writing end and closes it again: the reader gets an end
// of file and returns, and released() tells the test that it had blocked.
class PipeWatchdog
{
public:
    explicit PipeWatchdog(const QString& fifo, int limitMs = 3000)
        : m_fifo(QFile::encodeName(fifo)),
          m_thread([this, limitMs](const std::stop_token& stop) { watch(stop, limitMs); })
    {
    }

    bool released() const { return m_released; }

private:
    void watch(const std::stop_token& stop, int limitMs)
    {
        std::mutex mutex;
        std::condition_variable_any wake;
        std::unique_lock lock(mutex);
        // After the limit, polling for a reader so that a blocked one is let go soon.
        for (auto wait = std::chrono::milliseconds(limitMs);
             !wake.wait_for(lock, stop, wait, [&stop] { return stop.stop_requested(); });
             wait = std::chrono::milliseconds(100)) {
            // Succeeds only when a reader has the pipe open (or waits in open()).
            const int fd = ::open(m_fifo.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
            if (fd >= 0) {
                ::close(fd);
                m_released = true;
            }
        }
    }

    QByteArray m_fifo;
    std::atomic<bool> m_released = false;
    std::jthread m_thread; // last: asked to stop and joined first
};

} // namespace nebra::test
