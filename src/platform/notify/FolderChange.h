#pragma once

#include <QMetaType>
#include <QString>

namespace nebra {

// Event codes of the suite's shell change notifications. The suite's
// programs and our own diagnostics know changes by these values, so they are
// kept as they are, including the combined masks.
namespace ShellEvent {
enum : quint32
{
    SHCNE_RENAMEITEM = 0x00000001,
    SHCNE_CREATE = 0x00000002,
    SHCNE_DELETE = 0x00000004,
    SHCNE_MKDIR = 0x00000008,
    SHCNE_RMDIR = 0x00000010,
    SHCNE_MEDIAINSERTED = 0x00000020,
    SHCNE_MEDIAREMOVED = 0x00000040,
    SHCNE_DRIVEREMOVED = 0x00000080,
    SHCNE_DRIVEADD = 0x00000100,
    SHCNE_NETSHARE = 0x00000200,
    SHCNE_NETUNSHARE = 0x00000400,
    SHCNE_ATTRIBUTES = 0x00000800,
    SHCNE_UPDATEDIR = 0x00001000,
    SHCNE_UPDATEITEM = 0x00002000,
    SHCNE_SERVERDISCONNECT = 0x00004000,
    SHCNE_UPDATEIMAGE = 0x00008000,
    SHCNE_DRIVEADDGUI = 0x00010000,
    SHCNE_RENAMEFOLDER = 0x00020000,
    SHCNE_FREESPACE = 0x00040000,
    SHCNE_ASSOCCHANGED = 0x08000000,
    SHCNE_DISKEVENTS = 0x0002381F,
    SHCNE_GLOBALEVENTS = 0x0C0581E0,
    SHCNE_ALLEVENTS = 0x7FFFFFFF,
    SHCNE_INTERRUPT = 0x80000000,
};
}

// One change on disk, as the folder tree takes it: folder made (SHCNE_MKDIR,
// path1), folder removed (SHCNE_RMDIR, path1), folder renamed
// (SHCNE_RENAMEFOLDER, path1 the old path, path2 the new one), a file changed
// (SHCNE_UPDATEITEM, path1) and a file gone (SHCNE_DELETE, path1). Paths are
// full, without a trailing separator; a name's bytes that are not UTF-8 are
// shown as replacement characters, as the tree shows them.
struct FolderChange
{
    quint32 event = 0;
    QString path1;
    QString path2; // empty when the change has one item only

    bool operator==(const FolderChange&) const = default;
};

} // namespace nebra

Q_DECLARE_METATYPE(nebra::FolderChange)
