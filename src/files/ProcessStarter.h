#pragma once

#include <QString>

namespace nebra {

struct CommandLine;

// Starts a command line as a detached process: the Organiser does not wait
// for it.
class ProcessStarter
{
public:
    // Starts the process. Returns an empty string on success, otherwise one
    // sentence saying why the program could not be started (no program set,
    // no such file, a folder, not executable, not on the search path, or
    // refused by the system). On success *processId, when given, is the
    // started process's id.
    static QString Start(const CommandLine& line, qint64* processId = nullptr);
};

} // namespace nebra
