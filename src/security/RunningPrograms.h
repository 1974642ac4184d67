#pragma once

#include "StartedPrograms.h"

#include <QList>
#include <QString>

namespace nebra {

// The programs the launcher started, by process id, with the document or
// folder each was started on; a program counts while its process runs.
// Process ids are kept until the program is seen to have ended.
class RunningPrograms : public StartedPrograms
{
public:
    void started(qint64 processId, const QString& program, const QString& target);
    QString programOn(const QString& path) const override;

private:
    struct Started
    {
        qint64 processId;
        QString program;
        QString target;
    };
    static bool isRunning(qint64 processId);

    mutable QList<Started> m_started;
};

} // namespace nebra
