#include "ParentDirectoryRules.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <climits>
#include <unistd.h>

namespace nebra::ParentDirectoryRules {

namespace {

// The file system's limits, in bytes of the encoded name.
constexpr qsizetype MaxPathBytes = PATH_MAX - 1;
constexpr qsizetype MaxNameBytes = NAME_MAX;

// Room for the deepest folder the tree makes below the parent.
const QString DeepestSubfolder = QStringLiteral("/My Assays/Read Configurations");

bool tooLong(const QString& path)
{
    if (QFile::encodeName(path + DeepestSubfolder).size() > MaxPathBytes)
        return true;
    const QStringList names = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    return std::any_of(names.cbegin(), names.cend(),
                       [](const QString& name) { return QFile::encodeName(name).size() > MaxNameBytes; });
}

} // namespace

QString normalised(const QString& typed)
{
    QString text = typed.trimmed();
    if (text.size() > 1 && (text.endsWith(QLatin1Char('/')) || text.endsWith(QLatin1Char('\\'))))
        text.chop(1);
    return text;
}

QString problem(const QString& path)
{
    if (path.isEmpty())
        return QStringLiteral("Please type the parent directory for data files.");
    if (QDir::isRelativePath(path))
        return QStringLiteral("The specified parent directory path is incomplete.\r\n"
                              "Type the full path of the folder, beginning with /.");
    if (tooLong(path))
        return QStringLiteral("The specified parent directory path is too long.");
    const QFileInfo info(path);
    if (info.exists() && !info.isDir())
        return QStringLiteral("The specified parent directory is a file, not a folder.");
    const QFileInfo container(info.absolutePath());
    if (!info.exists() && container.isDir() && !canWriteInto(container.absoluteFilePath()))
        return QStringLiteral("The specified parent directory cannot be created:\r\n"
                              "the folder it belongs in cannot be written to.");
    return {};
}

bool canWriteInto(const QString& folder)
{
    // access() rather than the permission bits: it also knows read-only file systems.
    return ::access(QFile::encodeName(folder).constData(), W_OK | X_OK) == 0;
}

QString readOnlySubfoldersText()
{
    return QStringLiteral("The specified parent directory has one or more missing subfolders,\r\n"
                          "and they cannot be created because the folder cannot be written to.");
}

} // namespace nebra::ParentDirectoryRules
