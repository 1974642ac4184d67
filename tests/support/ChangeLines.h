#pragma once

#include "FolderChange.h"

#include <QHash>
#include <QString>

namespace nebra::test {

// A change as tests write it: "MKDIR <path>", "RENAMEFOLDER <old>|<new>",
// with root written as marker ("$R").
inline QString changeLine(const FolderChange& change, const QString& root, const QString& marker)
{
    // clang-format off
    static const QHash<quint32, QString> kinds{{ShellEvent::SHCNE_MKDIR, "MKDIR"}, {ShellEvent::SHCNE_RMDIR, "RMDIR"},
        {ShellEvent::SHCNE_RENAMEFOLDER, "RENAMEFOLDER"}, {ShellEvent::SHCNE_UPDATEITEM, "UPDATEITEM"},
        {ShellEvent::SHCNE_DELETE, "DELETE"}};
    // clang-format on
    QString line = kinds.value(change.event) + QLatin1Char(' ') + change.path1;
    if (!change.path2.isEmpty())
        line += QLatin1Char('|') + change.path2;
    return line.replace(root, marker);
}

} // namespace nebra::test
