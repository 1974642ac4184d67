#pragma once

#include <QString>

#include <sys/types.h>

namespace nebra {

// What makes the administrator's system-wide settings file trustworthy, and
// the fix to name when it is not. The file sets the site's security policy,
// so whoever can change it, or replace it in its folder, decides the policy.
class SystemFileCheck
{
public:
    // Empty when owner owns the file (links followed) and its folder and
    // neither is writable by group or others; otherwise a sentence that
    // names the commands that fix it.
    static QString distrust(const QString& path, uid_t owner);

    // Why a file that exists cannot be read, for a user outside the group
    // that may read it: the fix is membership of that group, never a mode
    // that lets every user read what may be the server's password.
    static QString unreadable(const QString& path);

    // True when both paths name one file (or, where neither exists yet, one path).
    static bool sameFile(const QString& a, const QString& b);
};

} // namespace nebra
