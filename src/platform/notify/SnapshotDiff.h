#pragma once

#include "FolderChange.h"

#include <QString>

#include <vector>

namespace nebra {

class FolderEntries;
class FolderSnapshot;

// What changed between two polls, as the same changes the kernel's
// notifications give (FolderChangeSource), so that whoever takes them
// cannot tell a polled folder from a notified one. Paths are full, made of
// rootText and the names (bytes that are not UTF-8 shown as replacement
// characters).
class SnapshotDiff
{
public:
    // The folders made, removed and renamed below the root, in an order the
    // folder tree can apply one by one:
    // - first the removals (SHCNE_RMDIR), once for a removed folder with all
    //   below it;
    // - then the renames (SHCNE_RENAMEFOLDER, old and new path): a folder is
    //   renamed when the inode of one that went is the inode of one that came
    //   under another name, where nothing of that name was before; the
    //   changes below a renamed folder follow its rename, at its new path;
    // - last the folders made (SHCNE_MKDIR), each before its subfolders.
    // A folder replaced by another of the same name is removed and made.
    // The root that could be read and cannot now (gone, or not a folder) is
    // removed; one that errs otherwise (a server that fails, no permission)
    // changes nothing, as it may answer at the next poll.
    static std::vector<FolderChange> folders(const FolderSnapshot& before, const FolderSnapshot& after,
                                             const QString& rootText);

    struct EntryChanges
    {
        std::vector<FolderChange> changes; // of the files only
        bool changed = false;              // anything the list shows differs, folders included
    };

    // The files of one folder: a file that came or whose inode, size or time
    // changed is updated (SHCNE_UPDATEITEM), a file that went is deleted
    // (SHCNE_DELETE); a renamed file is both. A folder that cannot be read now
    // changes nothing.
    static EntryChanges entries(const FolderEntries& before, const FolderEntries& after,
                                const QString& folderText);
};

} // namespace nebra
