#pragma once

#include "FolderChange.h"

#include <QHash>
#include <QString>

namespace nebra::test {

// A change as tests write it: "MKDIR <path>", "RENAMEFOLDER <old>|<new>",
// with root written as marker ("$R").
inline QString changeLine(const FolderChange& change, const QString& root, const QString& marker)
{
    static const QHash<quint32, QString> kinds{
        {ShellEvent::SHCNE_MKDIR, QStringLiteral("MKDIR")},
        {ShellEvent::SHCNE_RMDIR, QStringLiteral("RMDIR")},
        {ShellEvent::SHCNE_RENAMEFOLDER, QStringLiteral("RENAMEFOLDER")},
        {ShellEvent::SHCNE_UPDATEITEM, QStringLiteral("UPDATEITEM")},
        {ShellEvent::SHCNE_DELETE, QStringLiteral("DELETE")}};
    QString line = kinds.value(change.event) + QLatin1Char(' ') + change.path1;
    if (!change.path2.isEmpty())
        line += QLatin1Char('|') + change.path2;
    return line.replace(root, marker);
}

} // namespace nebra::test
