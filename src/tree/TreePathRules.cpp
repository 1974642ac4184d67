#include "TreePathRules.h"

namespace nebra {

bool TreePathRules::IsThisFolderANebraFolder(const QString& path, const QString& dataRoot)
{
    return path.contains(dataRoot, Qt::CaseInsensitive);
}

bool TreePathRules::IsThisCurrentFolder(const QString& path, const QString& currentFolder)
{
    return path == currentFolder;
}

bool TreePathRules::IsThisFileInCurrentFolder(const QString& path, const QString& currentFolder)
{
    return path.contains(currentFolder, Qt::CaseInsensitive);
}

bool TreePathRules::SamePath(const QString& a, const QString& b)
{
    // Case folding maps one character to one, so the lengths decide most
    // comparisons of a long scan at once.
    return a.size() == b.size() && a.compare(b, Qt::CaseInsensitive) == 0;
}

} // namespace nebra
