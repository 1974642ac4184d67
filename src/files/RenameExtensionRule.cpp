#include "RenameExtensionRule.h"

namespace nebra {

const QString RenameExtensionRule::Title = QStringLiteral("File Rename Error");
// Two blanks between "a" and "file": the text users have always seen.
const QString RenameExtensionRule::Message = QStringLiteral("Changing a  file extension is not allowed.");

bool RenameExtensionRule::IsRefused(const QString& filter, const QString& newName,
                                    const QString& displayedName, const QString& fullPath)
{
    const QString permitted = filter.right(4);
    if (newName.right(4).compare(permitted, Qt::CaseInsensitive) == 0)
        return false;
    // The name shows its extension when the displayed name is the end of the path.
    return fullPath.endsWith(displayedName);
}

} // namespace nebra
