#pragma once

#include <QString>

#include <sys/types.h>

namespace nebra {

// The modes of the security store's files. A store whose folder is setgid
// is shared by that folder's group (the site group that "nebra-secadmin
// create --group" sets up): its files are then readable and writable by the
// group (the site key only readable) and never by others. Any other store
// belongs to its owner alone.
class SecureFiles
{
public:
    static bool isSharedFolder(const QString& folder);
    // 0660 in a shared folder, else 0600.
    static mode_t dataMode(const QString& filePath);
    // 0640 in a shared folder, else 0600.
    static mode_t keyMode(const QString& filePath);

    // Creates an empty file with exactly this mode (whatever the umask);
    // refuses when it exists.
    static bool createEmpty(const QString& filePath, mode_t mode, QString* error);
    // Gives an existing file exactly this mode.
    static bool setMode(const QString& filePath, mode_t mode, QString* error);

    // Empty when others (not owner, not group) can neither read nor write the
    // file; otherwise a sentence naming the file and the command that fixes it.
    static QString exposure(const QString& filePath, const QString& what);
};

} // namespace nebra
