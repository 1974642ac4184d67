#include "AdminRights.h"

#include "SecuritySettings.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstring>
#include <grp.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace nebra {

namespace {

std::optional<gid_t> groupId(const QString& group)
{
    const struct group* entry = getgrnam(group.toLocal8Bit().constData());
    if (!entry)
        return std::nullopt;
    return entry->gr_gid;
}

QString lastError()
{
    return QString::fromLocal8Bit(strerror(errno));
}

} // namespace

bool AdminRights::isMemberOf(const QString& group)
{
    const std::optional<gid_t> gid = groupId(group);
    if (!gid)
        return false;
    if (getegid() == *gid)
        return true;
    const int count = getgroups(0, nullptr);
    std::vector<gid_t> groups(size_t(qMax(count, 0)));
    const int got = getgroups(count, groups.data());
    for (int i = 0; i < got; ++i)
        if (groups[size_t(i)] == *gid)
            return true;
    return false;
}

bool AdminRights::mayAdminister(const SecuritySettings& settings, QString* error)
{
    if (geteuid() == 0)
        return true;
    if (!settings.adminGroup.isEmpty() && isMemberOf(settings.adminGroup))
        return true;
    if (!settings.systemWide) {
        struct stat st = {};
        const QByteArray path = QFile::encodeName(settings.databasePath);
        if (::stat(path.constData(), &st) != 0 ? errno == ENOENT : st.st_uid == geteuid())
            return true;
    }
    *error = settings.adminGroup.isEmpty()
                 ? QStringLiteral("only root may administer the security database \"%1\".")
                       .arg(QDir::toNativeSeparators(settings.databasePath))
                 : QStringLiteral("only root or a member of the group \"%1\" may administer the security "
                                  "database \"%2\".")
                       .arg(settings.adminGroup, QDir::toNativeSeparators(settings.databasePath));
    return false;
}

bool AdminRights::prepareSharedFolder(const QString& folder, const QString& group, QString* error)
{
    const std::optional<gid_t> gid = groupId(group);
    if (!gid) {
        *error = QStringLiteral("there is no group \"%1\".").arg(group);
        return false;
    }
    const QByteArray path = QFile::encodeName(folder);
    if (!QDir().mkpath(folder) || ::chown(path.constData(), uid_t(-1), *gid) != 0 ||
        ::chmod(path.constData(), 02770) != 0) {
        *error = QStringLiteral("the folder \"%1\" cannot be given to the group \"%2\" (%3).")
                     .arg(QDir::toNativeSeparators(folder), group, lastError());
        return false;
    }
    return true;
}

} // namespace nebra
