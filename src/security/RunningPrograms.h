#pragma once

#include "StartedPrograms.h"

#include <QDeadlineTimer>
#include <QList>
#include <QString>

namespace nebra {

// The programs the launcher started, by process id, with the document or
// folder each was started on; a program counts while its process runs.
// Process ids are kept until the program is seen to have ended. A part of
// the Organiser that writes documents itself (a wizard run in the
// Organiser's process) counts from startedHere() to a few seconds after
// endedHere(), so that the changes it made and the notifications still
// bring are its own.
class RunningPrograms : public StartedPrograms
{
public:
    void started(qint64 processId, const QString& program, const QString& target);
    void startedHere(const QString& program, const QString& target);
    void endedHere(const QString& target);
    QString programOn(const QString& path) const override;

private:
    struct Started
    {
        qint64 processId; // 0: the Organiser's own part, until the deadline
        QString program;
        QString target;
        QDeadlineTimer until = QDeadlineTimer(QDeadlineTimer::Forever);
    };
    static bool isRunning(const Started& program);

    mutable QList<Started> m_started;
};

} // namespace nebra
