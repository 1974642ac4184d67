#pragma once

#include <QString>

namespace nebra {

// The path comparisons of the folder tree. Their case rules differ on
// purpose: membership tests ignore case, the current-folder test does not.
class TreePathRules
{
public:
    // True when dataRoot occurs anywhere in path, ignoring case (a
    // containment test, not a prefix test).
    static bool IsThisFolderANebraFolder(const QString& path, const QString& dataRoot);
    // True when path is exactly the current folder, letter case included.
    static bool IsThisCurrentFolder(const QString& path, const QString& currentFolder);
    // True when the current folder occurs anywhere in path, ignoring case, so
    // a file in a subfolder of the current folder counts too.
    static bool IsThisFileInCurrentFolder(const QString& path, const QString& currentFolder);
    // The tree's lookup rule: the same path, ignoring case.
    static bool SamePath(const QString& a, const QString& b);
};

} // namespace nebra
