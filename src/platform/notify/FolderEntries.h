#pragma once

#include <QByteArray>

#include <vector>

namespace nebra {

class WildcardFilter;

// The entries of one folder as a poll of the file list sees them: the
// subfolders and the files the list's filter lets through, each with its
// inode, size and modification time, sorted by name. What is listed is what
// DirectoryReader::files lists: links followed, a broken link as itself,
// pipes, sockets and devices left out. Compared by SnapshotDiff.
//
// Taking it reads the disk: do it on a reader thread (FolderReaders).
class FolderEntries
{
public:
    struct Entry
    {
        QByteArray name;
        quint64 inode = 0;
        qint64 size = 0;
        qint64 mtimeSeconds = 0;
        qint32 mtimeNanoseconds = 0;
        bool folder = false;

        bool operator==(const Entry&) const = default;
    };

    static FolderEntries take(const QByteArray& folder, const WildcardFilter& filter);

    // errno when the folder could not be read (no entries then).
    int error() const { return m_error; }
    const std::vector<Entry>& entries() const { return m_entries; }

private:
    std::vector<Entry> m_entries;
    int m_error = 0;
};

} // namespace nebra
