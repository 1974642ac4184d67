#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace nebra {

// The file list's messages to the user about renaming and deleting, each
// shown through nebra::Messages over the list.
class FileListPrompts
{
public:
    // A name the file system cannot take is refused with the reason; true when it can.
    static bool acceptNewName(QWidget* owner, const QString& name);
    // The rename of oldName to newName failed with errno error.
    static void renameFailed(QWidget* owner, const QString& oldName, const QString& newName, int error);
    // Asks before moving the items to the trash: one named item (a folder or
    // a file), or a number of them. True when the user answers Yes.
    static bool confirmMoveToTrash(QWidget* owner, const QString& firstName, bool firstIsFolder, int count);
    // One line of the failure message: the item's name and the file system's reason.
    static QString moveToTrashFailure(const QString& name, const QString& reason);
    // Lists the items that could not be moved to the trash, one failure a line.
    static void moveToTrashFailed(QWidget* owner, const QStringList& failures);
};

} // namespace nebra
