#include "RunningPrograms.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <csignal>

namespace nebra {

void RunningPrograms::started(qint64 processId, const QString& program, const QString& target)
{
    if (processId > 0)
        m_started.append({processId, program, QDir::cleanPath(target)});
}

bool RunningPrograms::isRunning(qint64 processId)
{
    if (::kill(pid_t(processId), 0) != 0 && errno != EPERM)
        return false;
    // A process that ended but was not reaped yet no longer writes anything.
    QFile stat(QStringLiteral("/proc/%1/stat").arg(processId));
    if (!stat.open(QIODevice::ReadOnly))
        return true;
    const QByteArray line = stat.readAll();
    const qsizetype state = line.lastIndexOf(')') + 2;
    return state <= 1 || state >= line.size() || line.at(state) != 'Z';
}

QString RunningPrograms::programOn(const QString& path) const
{
    m_started.removeIf([](const Started& s) { return !isRunning(s.processId); });
    for (const Started& s : m_started)
        if (path == s.target || (path.startsWith(s.target) && path.at(s.target.size()) == QLatin1Char('/')))
            return s.program;
    return {};
}

} // namespace nebra
