#pragma once

#include <QString>

namespace nebra {

// A document keeps its extension when it is renamed in the file list. The
// permitted extension is the last four characters of the list's filter
// (".apr" of "*.apr"); letter case does not count. Where the list hides
// extensions the user cannot change one, so nothing is checked. With the
// filter "*.*" no name can end in the filter's last four characters, so a
// file whose extension shows can never be renamed there.
class RenameExtensionRule
{
public:
    static const QString Title;   // "File Rename Error"
    static const QString Message; // "Changing a  file extension is not allowed."

    // True when renaming the file shown as displayedName (full path
    // fullPath) to newName changes its extension and must be refused.
    static bool IsRefused(const QString& filter, const QString& newName, const QString& displayedName,
                          const QString& fullPath);
};

} // namespace nebra
