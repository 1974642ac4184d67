#pragma once

#include <QByteArray>
#include <QString>

namespace nebra {

// Reads a document that came from a shared folder without ever blocking.
// Only regular files (symbolic links followed) are read: a named pipe would
// block the reading thread until some other program writes to it, a device
// may never end, and a socket cannot be opened at all. Such entries are
// refused before a byte is read; the descriptor is opened non-blocking and
// its type checked again after opening, so a file swapped for a pipe in
// between is refused as well.
class RegularFile
{
public:
    enum class Status
    {
        Read,       // bytes holds the whole file
        Missing,    // no entry of that name
        NotAFile,   // a folder, pipe, socket or device
        TooLarge,   // more than the limit; bytes holds nothing
        Unreadable, // open or read failed; reason says why
    };

    // Reads at most limit bytes. The size is judged on what was read, never
    // on the size the file system reports, which is 0 for pipes and some
    // virtual files. reason is a short phrase for every status but Read.
    static Status read(const QString& path, qint64 limit, QByteArray& bytes, QString& reason);

    // True when path names a regular file (links followed); no descriptor is opened.
    static bool isRegular(const QString& path);
};

} // namespace nebra
