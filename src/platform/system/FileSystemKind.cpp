#include "FileSystemKind.h"

#include <cerrno>

#include <sys/vfs.h>

namespace nebra {

namespace {

struct Remote
{
    quint64 magic;
    const char* name;
};

// statfs(2)'s f_type of the file systems whose changes inotify does not all
// see; docs/platform.md lists them. The values are the kernel's (and
// coreutils' stat -f) magic numbers.
constexpr Remote RemoteFileSystems[] = {
    {0x6969, "NFS"},
    {0x517B, "SMB"},
    {0xFF534D42, "CIFS"},
    {0xFE534D42, "SMB2/SMB3"},
    {0x65735546, "FUSE"}, // sshfs, bindfs, virtiofs, rclone, gvfs and the like
    {0x01021997, "9P"},   // also the shared folders of WSL and of many virtual machines
    {0x00C36400, "Ceph"},
    {0x5346414F, "AFS"},  // OpenAFS
    {0x6B414653, "kAFS"}, // the kernel's own AFS client
    {0x73757245, "Coda"},
    {0x564C, "NCP"},
    {0x7461636F, "OCFS2"},
    {0x01161970, "GFS2"},
    {0x0BD00BD0, "Lustre"},
    {0x47504653, "GPFS"},
    {0x20030528, "OrangeFS"},
    {0x19830326, "BeeGFS"},
    {0xAAD7AAEA, "PanFS"},
    {0x786F4256, "VirtualBox shared folder"},
    {0xBACBACBC, "VMware shared folder"},
    {0x7C7C6673, "Parallels shared folder"},
};

const Remote* remoteOf(quint64 magic)
{
    for (const Remote& remote : RemoteFileSystems) {
        if (remote.magic == magic)
            return &remote;
    }
    return nullptr;
}

} // namespace

FileSystemKind FileSystemKind::of(const QByteArray& path, int& error)
{
    // A folder that does not exist yet will be made on its parent's file system.
    QByteArray at = path.isEmpty() ? QByteArray("/") : path;
    for (;;) {
        struct statfs info = {};
        if (::statfs(at.constData(), &info) == 0) {
            error = 0;
            return FileSystemKind(quint64(quint32(info.f_type)));
        }
        error = errno;
        if ((error != ENOENT && error != ENOTDIR) || at == "/")
            return FileSystemKind();
        const qsizetype slash = at.lastIndexOf('/');
        at = slash > 0 ? at.left(slash) : QByteArray("/");
    }
}

bool FileSystemKind::isNotifiedType(const QByteArray& type)
{
    // The types of the file systems above, as /proc/self/mountinfo names
    // them; FUSE mounts are "fuse", "fuseblk" or "fuse.<daemon>".
    static const char* const remoteTypes[] = {"nfs",    "nfs4",   "smbfs",    "smb3",    "cifs",  "9p",
                                              "ceph",   "afs",    "coda",     "ncpfs",   "ocfs2", "gfs2",
                                              "lustre", "gpfs",   "pvfs2",    "beegfs",  "panfs", "vboxsf",
                                              "vmhgfs", "prl_fs", "virtiofs", "fuseblk", "fuse"};
    if (type.startsWith("fuse."))
        return false;
    for (const char* remote : remoteTypes) {
        if (type == remote)
            return false;
    }
    return true;
}

bool FileSystemKind::isNotified() const
{
    return remoteOf(m_magic) == nullptr;
}

QString FileSystemKind::remoteName() const
{
    const Remote* remote = remoteOf(m_magic);
    return remote ? QString::fromLatin1(remote->name) : QString();
}

} // namespace nebra
