#pragma once

#include <QByteArray>

#include <vector>

namespace nebra {

// The mount points of this process's mount namespace, read from
// /proc/self/mountinfo. Nothing here touches a mounted file system, so a
// mount whose server does not answer cannot make a lookup wait: that is
// what makes the table usable on the user-interface thread.
//
// The table is read again only when the kernel says the mounts changed
// (poll(2) on the open file reports POLLPRI), so a lookup costs a poll call
// and a scan of the mount points.
class MountTable
{
public:
    struct Mount
    {
        QByteArray point;  // where it is mounted, unescaped
        QByteArray type;   // "ext4", "nfs4", "fuse.bindfs"
        QByteArray source; // "/dev/sda1", "server:/export"
    };

    MountTable();
    ~MountTable();
    MountTable(const MountTable&) = delete;
    MountTable& operator=(const MountTable&) = delete;

    // The mount that holds path, judged by the text of the path alone (the
    // longest mount point that is path or a folder above it): a symbolic link
    // on the way to another mount is not followed. A relative path is taken
    // from the working folder. Never empty while /proc is mounted.
    Mount mountOf(const QByteArray& path);

    // Every mount, in the kernel's order.
    const std::vector<Mount>& mounts();

    // One line of mountinfo, as proc(5) describes it; false for a line that is not one.
    static bool parseLine(const QByteArray& line, Mount& mount);

private:
    void refreshIfChanged();
    void read();

    int m_fd = -1;
    bool m_read = false;
    std::vector<Mount> m_mounts;
};

} // namespace nebra
