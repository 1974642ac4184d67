#pragma once

#include <QString>

namespace nebra {

// The programs the Organiser started for the session's user that still run,
// by the document or folder each was started on.
class StartedPrograms
{
public:
    virtual ~StartedPrograms() = default;
    // The name of a program still running that was started on path or on a
    // folder that holds it; empty when there is none.
    virtual QString programOn(const QString& path) const = 0;
};

} // namespace nebra
