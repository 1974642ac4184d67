#include "RegularFile.h"

#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nebra {

namespace {

QString systemReason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

RegularFile::Status refuse(RegularFile::Status status, const QString& why, QString& reason)
{
    reason = why;
    return status;
}

} // namespace

bool RegularFile::isRegular(const QString& path)
{
    struct stat st = {};
    return !path.isEmpty() && ::stat(QFile::encodeName(path).constData(), &st) == 0 && S_ISREG(st.st_mode);
}

RegularFile::Status RegularFile::read(const QString& path, qint64 limit, QByteArray& bytes, QString& reason)
{
    bytes.clear();
    const QByteArray name = QFile::encodeName(path);
    struct stat st = {};
    // The type is looked at before opening: opening a device can have effects
    // of its own, and opening a socket fails with a misleading error.
    if (path.isEmpty() || ::stat(name.constData(), &st) != 0) {
        const int error = path.isEmpty() ? ENOENT : errno;
        return refuse(error == ENOENT ? Status::Missing : Status::Unreadable, systemReason(error), reason);
    }
    if (!S_ISREG(st.st_mode))
        return refuse(Status::NotAFile, QStringLiteral("it is not a regular file"), reason);
    const int fd = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return refuse(Status::Unreadable, systemReason(errno), reason);
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return refuse(Status::NotAFile, QStringLiteral("it is not a regular file"), reason);
    }
    QFile file;
    if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return refuse(Status::Unreadable, file.errorString(), reason);
    }
    // One byte past the limit tells a file of exactly the limit from a larger one.
    QByteArray read = file.read(limit + 1);
    if (file.error() != QFileDevice::NoError)
        return refuse(Status::Unreadable, file.errorString(), reason);
    if (read.size() > limit)
        return refuse(Status::TooLarge, QStringLiteral("it is larger than %1 bytes").arg(limit), reason);
    bytes = std::move(read);
    reason.clear();
    return Status::Read;
}

} // namespace nebra
