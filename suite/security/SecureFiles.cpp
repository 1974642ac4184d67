#include "SecureFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nebra {

bool SecureFiles::isSharedFolder(const QString& folder)
{
    struct stat st = {};
    return ::stat(QFile::encodeName(folder).constData(), &st) == 0 && S_ISDIR(st.st_mode) &&
           (st.st_mode & S_ISGID) != 0;
}

mode_t SecureFiles::dataMode(const QString& filePath)
{
    return isSharedFolder(QFileInfo(filePath).absolutePath()) ? 0660 : 0600;
}

mode_t SecureFiles::keyMode(const QString& filePath)
{
    return isSharedFolder(QFileInfo(filePath).absolutePath()) ? 0640 : 0600;
}

bool SecureFiles::createEmpty(const QString& filePath, mode_t mode, QString* error)
{
    const int fd =
        ::open(QFile::encodeName(filePath).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    // The umask may have taken bits away that the site group needs.
    const bool ok = fd >= 0 && ::fchmod(fd, mode) == 0;
    const int saved = errno;
    if (fd >= 0)
        ::close(fd);
    if (!ok)
        *error = QStringLiteral("\"%1\" cannot be created (%2).")
                     .arg(QDir::toNativeSeparators(filePath), QString::fromLocal8Bit(strerror(saved)));
    return ok;
}

bool SecureFiles::setMode(const QString& filePath, mode_t mode, QString* error)
{
    if (::chmod(QFile::encodeName(filePath).constData(), mode) == 0)
        return true;
    *error = QStringLiteral("The mode of \"%1\" cannot be set (%2).")
                 .arg(QDir::toNativeSeparators(filePath), QString::fromLocal8Bit(strerror(errno)));
    return false;
}

QString SecureFiles::exposure(const QString& filePath, const QString& what)
{
    struct stat st = {};
    if (::stat(QFile::encodeName(filePath).constData(), &st) != 0 || (st.st_mode & (S_IROTH | S_IWOTH)) == 0)
        return {};
    return QStringLiteral("The %1 \"%2\" can be read or changed by every user of this computer, so it is not "
                          "used. Ask your security administrator to run \"chmod o-rwx %2\".")
        .arg(what, QDir::toNativeSeparators(filePath));
}

} // namespace nebra
