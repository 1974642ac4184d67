#pragma once

#include <QtGlobal>

#include <cerrno>

#include <sys/syscall.h>
#include <unistd.h>

namespace nebra {

// The entries of an open folder straight from the kernel with getdents64(2),
// in large blocks: readdir(3) would need the folder opened through
// fdopendir, which costs an fstat and an fcntl per folder.
//
// visit(name, type, inode) is called for every entry but "." and "..", in
// directory order; type is the entry's d_type (DT_UNKNOWN where the file
// system does not say). Returns 0, or errno when the folder could not be read.
template <typename Visit> int readDirectoryEntries(int fd, Visit&& visit)
{
    // The kernel's record, as getdents64 fills the buffer.
    struct Record
    {
        quint64 d_ino;
        qint64 d_off;
        unsigned short d_reclen;
        unsigned char d_type;
        char d_name[1];
    };
    alignas(8) char buffer[32768];
    for (;;) {
        const long read = ::syscall(SYS_getdents64, fd, buffer, sizeof buffer);
        if (read < 0)
            return errno;
        if (read == 0)
            return 0;
        for (long offset = 0; offset < read;) {
            const auto* entry = reinterpret_cast<const Record*>(buffer + offset);
            offset += entry->d_reclen;
            const char* name = entry->d_name;
            if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
                continue;
            visit(name, entry->d_type, entry->d_ino);
        }
    }
}

} // namespace nebra
