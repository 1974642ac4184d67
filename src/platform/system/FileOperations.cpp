#include "FileOperations.h"

#include <QCoreApplication>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace nebra {

namespace {
constexpr int NameMax = 255; // bytes in one file name on the usual Linux file systems

QString tr(const char* text)
{
    return QCoreApplication::translate("FileOperations", text);
}
} // namespace

QString FileOperations::NameProblem(const QString& name)
{
    if (name.trimmed().isEmpty())
        return tr("You must type a file name.");
    if (name == QLatin1String(".") || name == QLatin1String(".."))
        return tr("The name \"%1\" is reserved. Choose another name.").arg(name);
    if (name.contains(QLatin1Char('/')) || name.contains(QChar(0)))
        return tr("A file name can't contain a slash (/).");
    if (QFile::encodeName(name).size() > NameMax)
        return tr("The name is too long. Choose a shorter name.");
    return {};
}

int FileOperations::RenameNoReplace(const QString& from, const QString& to)
{
    const QByteArray oldPath = QFile::encodeName(from);
    const QByteArray newPath = QFile::encodeName(to);
    if (::renameat2(AT_FDCWD, oldPath.constData(), AT_FDCWD, newPath.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A file system without RENAME_NOREPLACE: check, then rename.
    if (::access(newPath.constData(), F_OK) == 0)
        return EEXIST;
    return ::rename(oldPath.constData(), newPath.constData()) == 0 ? 0 : errno;
}

QString FileOperations::RenameFailureText(const QString& oldName, const QString& newName, int error)
{
    if (error == EEXIST)
        return tr("Cannot rename \"%1\": an item named \"%2\" already exists here.").arg(oldName, newName);
    return tr("Cannot rename \"%1\" to \"%2\": %3.")
        .arg(oldName, newName, QString::fromLocal8Bit(std::strerror(error)));
}

} // namespace nebra
