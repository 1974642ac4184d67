#pragma once

#include <QString>

namespace nebra {

// The checks a typed parent directory must pass before the folder tree is
// looked at: what the file system could never hold, or would refuse to make.
namespace ParentDirectoryRules {

// Removes the blanks around the text and one trailing separator; a lone "/"
// (the root folder) is kept.
QString normalised(const QString& typed);

// Why the path cannot serve as parent directory, or an empty string when it
// may: empty, relative, too long, a file, or a new folder whose folder cannot
// be written to. A missing folder whose own folder is missing too is left to
// the creation attempt, which reports it.
QString problem(const QString& path);

// True when folders can be made in the existing folder (read-only file
// systems and missing write permission answer false).
bool canWriteInto(const QString& folder);

QString readOnlySubfoldersText();

} // namespace ParentDirectoryRules

} // namespace nebra
