#pragma once

#include <QByteArray>
#include <QString>

namespace nebra {

// The kind of file system a folder lives on, from statfs(2)'s magic number,
// and whether the kernel's change notifications (inotify) see every change
// made to it. They do not on file systems another machine or process also
// writes: network file systems (NFS, SMB/CIFS, 9P, Ceph, AFS and the like),
// cluster file systems, and FUSE mounts (sshfs, bindfs, virtiofs), whose
// daemon may change the files behind the kernel's back. inotify(7) reports
// only what a program on this machine does through the file-system calls.
//
// statfs itself waits for the server on a network mount: call of() on a
// reader thread, never on the user-interface thread.
class FileSystemKind
{
public:
    FileSystemKind() = default;
    explicit FileSystemKind(quint64 magic) : m_magic(magic) {}

    // The file system of path, or of its nearest existing parent folder when
    // path does not exist (yet). error is errno when not even "/" answered.
    static FileSystemKind of(const QByteArray& path, int& error);

    quint64 magic() const { return m_magic; }
    // False for the file systems whose changes inotify cannot all see.
    bool isNotified() const;
    // The same judgement from a file system type as the mount table names it
    // ("ext4", "nfs4", "fuse.sshfs"), which needs no call on the file system.
    static bool isNotifiedType(const QByteArray& type);
    // A short name for the diagnostic log and the documentation ("NFS", "FUSE"),
    // empty for file systems the kernel's notifications follow.
    QString remoteName() const;

private:
    quint64 m_magic = 0;
};

} // namespace nebra
