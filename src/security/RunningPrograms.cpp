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

namespace {
// How long the Organiser's own part counts after it ended: the notifications
// of its last writes and their reading come after it.
constexpr int OwnWritesSettleMs = 10000;
} // namespace

void RunningPrograms::startedHere(const QString& program, const QString& target)
{
    m_started.append({0, program, QDir::cleanPath(target)});
}

void RunningPrograms::endedHere(const QString& target)
{
    for (Started& s : m_started)
        if (s.processId == 0 && s.target == QDir::cleanPath(target) && s.until.isForever())
            s.until.setRemainingTime(OwnWritesSettleMs);
}

bool RunningPrograms::isRunning(const Started& program)
{
    if (program.processId == 0)
        return !program.until.hasExpired();
    const qint64 processId = program.processId;
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
    m_started.removeIf([](const Started& s) { return !isRunning(s); });
    for (const Started& s : m_started)
        if (path == s.target || (path.startsWith(s.target) && path.at(s.target.size()) == QLatin1Char('/')))
            return s.program;
    return {};
}

} // namespace nebra
