#include "ProcessStarter.h"

#include "CommandLine.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace nebra {

namespace {
// Why the program cannot be started, found before trying, so that the
// message can name the cause rather than the system's bare refusal.
QString checkProgram(const QString& program)
{
    if (program.trimmed().isEmpty())
        return QStringLiteral("No program is set.");
    if (!program.contains(QLatin1Char('/'))) {
        if (QStandardPaths::findExecutable(program).isEmpty())
            return QStringLiteral("The program cannot be found on the search path (PATH).");
        return {};
    }
    const QFileInfo info(program);
    if (!info.exists())
        return QStringLiteral("The file does not exist.");
    if (info.isDir())
        return QStringLiteral("The path names a folder, not a program.");
    if (!info.isExecutable())
        return QStringLiteral("The file is not executable.");
    return {};
}
} // namespace

QString ProcessStarter::Start(const CommandLine& line, qint64* processId)
{
    if (QString reason = checkProgram(line.program); !reason.isEmpty())
        return reason;
    if (!QProcess::startDetached(line.program, line.arguments, QString(), processId))
        return QStringLiteral("The system could not start the program.");
    return {};
}

} // namespace nebra
