#pragma once

#include <QString>

namespace nebra {

// The file operations behind the file list's in-place rename, with the
// sentences that explain a refusal to the user.
class FileOperations
{
public:
    // Why a file cannot be given this name ("You must type a file name.",
    // a slash, "." or "..", too long); empty when it can.
    static QString NameProblem(const QString& name);

    // Renames without ever replacing an existing entry (renameat2 with
    // RENAME_NOREPLACE, or a check first where the file system lacks it).
    // Returns 0 or the errno value.
    static int RenameNoReplace(const QString& from, const QString& to);

    // The sentence for a rename that the file system refused.
    static QString RenameFailureText(const QString& oldName, const QString& newName, int error);
};

} // namespace nebra
