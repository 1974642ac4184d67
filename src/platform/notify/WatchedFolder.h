#pragma once

#include <QByteArray>
#include <QString>

#include <map>
#include <memory>
#include <vector>

namespace nebra {

// A folder the change source has reported (or was given as a root), with
// the subfolders it has reported under it. A folder's watch follows its
// inode, so a folder moved within the roots keeps its watch and only its
// place among these changes.
struct WatchedFolder
{
    QByteArray name;  // as on disk; the full path for a root
    QString rootText; // a root's path as given, cleaned
    WatchedFolder* parent = nullptr;
    std::map<QByteArray, std::unique_ptr<WatchedFolder>> children;
    int wd = -1;       // the watch, -1 for none
    bool link = false; // a link to a folder, or a folder reached a second time: never descended

    WatchedFolder& addChild(const QByteArray& childName, bool isLink);

    // The path to open it by, and the path as the tree shows it (a name's
    // bytes that are not UTF-8 become replacement characters).
    QByteArray rawPath() const;
    QString textPath() const;
    QString childText(const QByteArray& childName) const;

    struct Entry
    {
        QByteArray name;
        bool link = false; // a symbolic link that leads to a folder
    };
    // The subfolders of a folder (links to folders included), or none when
    // it cannot be read: vanished, replaced by a file or unreadable.
    static std::vector<Entry> subfolders(const QByteArray& path);
    static bool isLinkToFolder(const QByteArray& path);
};

} // namespace nebra
