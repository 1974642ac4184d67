#pragma once

#include "MountTable.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace nebra::test {

// A folder shared through a FUSE mount made by bindfs, standing for a
// folder on the lab's file server: what another process writes to the
// backing folder appears in the mount without the kernel's notifications
// knowing, as another workstation's changes do. Freezing the mount's daemon
// (SIGSTOP) stands for a server that stops answering.
//
// The destructor lets the daemon go on, unmounts and ends it, so nothing is
// left behind even when a test fails half-way.
class FuseShare
{
public:
    // Why no FUSE mount can be made here; empty when one can.
    static QString unavailableReason()
    {
        for (const char* program : {"bindfs", "fusermount3"})
            if (QStandardPaths::findExecutable(QLatin1String(program)).isEmpty())
                return QStringLiteral("%1 is not installed (scripts/install-deps.sh installs it)")
                    .arg(program);
        const int fd = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
        if (fd < 0)
            return QStringLiteral("/dev/fuse cannot be opened (%1): this machine or container cannot make "
                                  "FUSE mounts")
                .arg(QString::fromLocal8Bit(std::strerror(errno)));
        ::close(fd);
        return {};
    }

    ~FuseShare()
    {
        if (m_mountPoint.isEmpty())
            return;
        if (m_daemon.state() != QProcess::NotRunning)
            thaw();
        QProcess::execute(QStringLiteral("fusermount3"),
                          {QStringLiteral("-u"), QStringLiteral("-z"), m_mountPoint});
        if (m_daemon.state() != QProcess::NotRunning && !m_daemon.waitForFinished(10000)) {
            m_daemon.kill();
            m_daemon.waitForFinished(10000);
        }
    }

    // Mounts backing at mountPoint, making both; false when the mount did not come up.
    bool mount(const QString& backing, const QString& mountPoint)
    {
        QDir().mkpath(backing);
        QDir().mkpath(mountPoint);
        m_mountPoint = mountPoint;
        m_daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_daemon.start(QStringLiteral("bindfs"), {QStringLiteral("-f"), backing, mountPoint});
        if (!m_daemon.waitForStarted(10000))
            return false;
        MountTable mounts;
        const QByteArray point = QFile::encodeName(mountPoint);
        return QTest::qWaitFor([&] { return mounts.mountOf(point).point == point; }, 10000);
    }

    qint64 daemonPid() const { return m_daemon.processId(); }
    void freeze() { ::kill(pid_t(daemonPid()), SIGSTOP); }
    void thaw() { ::kill(pid_t(daemonPid()), SIGCONT); }
    // The server is gone: every call on the mount fails with ENOTCONN.
    void killDaemon()
    {
        ::kill(pid_t(daemonPid()), SIGKILL);
        m_daemon.waitForFinished(10000);
    }

private:
    QProcess m_daemon;
    QString m_mountPoint;
};

// A file server's share for a test: the folder "backing" of a temporary
// folder, mounted through bindfs at "share" beside it. made() mounts it; when
// it cannot, it skips the test (no FUSE on this machine) or fails it (the
// mount did not come up) and returns false, and the test returns.
struct MountedShare
{
    QTemporaryDir dir;
    QString backing = dir.filePath(QStringLiteral("backing"));
    QString mount = dir.filePath(QStringLiteral("share"));
    FuseShare fuse; // last, so that it is unmounted before the folders go

    bool made()
    {
        if (const QString reason = FuseShare::unavailableReason(); !reason.isEmpty()) {
            QTest::qSkip(qPrintable(reason), __FILE__, __LINE__);
            return false;
        }
        if (!fuse.mount(backing, mount)) {
            QTest::qFail("bindfs did not mount the share", __FILE__, __LINE__);
            return false;
        }
        return true;
    }
};

} // namespace nebra::test
