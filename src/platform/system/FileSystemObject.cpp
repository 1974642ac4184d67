#include "FileSystemObject.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace nebra {

namespace {

bool isUsableLeafName(const QString& name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") &&
           !name.contains(QChar(u'\0')) && !name.contains(QLatin1Char('/'));
}

// Copies through QSaveFile: the destination appears complete or not at all.
bool copyOneFile(const QString& source, const QString& destination)
{
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly))
        return false;
    QSaveFile out(destination);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    char buffer[64 * 1024];
    for (qint64 n; (n = in.read(buffer, sizeof buffer)) > 0;) {
        if (out.write(buffer, n) != n) {
            out.cancelWriting();
            return false;
        }
    }
    if (!out.commit())
        return false;
    QFile::setPermissions(destination, in.permissions());
    return true;
}

bool hasReadOnlyFile(const QString& folder)
{
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        if (!it.fileInfo().isWritable())
            return true;
    }
    return false;
}

} // namespace

bool FileSystemObject::FolderExists(const QString& path) const
{
    return !path.isEmpty() && QFileInfo(path).isDir();
}

bool FileSystemObject::FileExists(const QString& path) const
{
    return !path.isEmpty() && QFileInfo(path).isFile();
}

bool FileSystemObject::CreateFolder(const QString& path) const
{
    const int cut = path.lastIndexOf(QLatin1Char('/'));
    if (cut < 0 || !isUsableLeafName(path.mid(cut + 1)))
        return false;
    const QString parent = cut == 0 ? QStringLiteral("/") : path.left(cut);
    if (!FolderExists(parent) || QFileInfo::exists(path))
        return false;
    return QDir(parent).mkdir(path.mid(cut + 1));
}

bool FileSystemObject::CopyFile(const QString& sourcePattern, const QString& destinationFolder,
                                bool overwrite) const
{
    const QFileInfo patternInfo(sourcePattern);
    QString pattern = patternInfo.fileName();
    if (pattern == QLatin1String("*.*"))
        pattern = QStringLiteral("*");
    const QDir sourceDir = patternInfo.dir();
    if (!sourceDir.exists() || !FolderExists(destinationFolder))
        return false;
    const QStringList names = sourceDir.entryList({pattern}, QDir::Files | QDir::Hidden, QDir::Name);
    if (names.isEmpty())
        return false;
    bool allCopied = true;
    for (const QString& name : names) {
        const QString target = destinationFolder + QLatin1Char('/') + name;
        if (QFileInfo::exists(target) && !overwrite) {
            allCopied = false;
            continue;
        }
        allCopied = copyOneFile(sourceDir.filePath(name), target) && allCopied;
    }
    return allCopied;
}

bool FileSystemObject::DeleteFolder(const QString& path, bool force) const
{
    if (!FolderExists(path) || (!force && hasReadOnlyFile(path)))
        return false;
    return QDir(path).removeRecursively();
}

FileSystemObjectFactory defaultFileSystemObjectFactory()
{
    return [] { return std::make_unique<FileSystemObject>(); };
}

} // namespace nebra
