#pragma once

#include <QString>

namespace nebra {

struct SecuritySettings;

// Who may administer a security database, and the site group's folder.
class AdminRights
{
public:
    // Root may; so may a member of the policy's AdminGroup; and, for a
    // personal database (no system-wide policy), the owner of its file (or
    // anyone, while it does not exist yet). Otherwise false, with *error set.
    static bool mayAdminister(const SecuritySettings& settings, QString* error);

    // Makes folder (and its parents) and hands it to the group: owner the
    // caller, group NAME, mode 2770, so that every file made in it belongs
    // to the group (see SecureFiles).
    static bool prepareSharedFolder(const QString& folder, const QString& group, QString* error);

    static bool isMemberOf(const QString& group);
};

} // namespace nebra
