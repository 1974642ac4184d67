#pragma once

#include <QFile>
#include <QString>

#include "RuntimeErrors.h"

#include <functional>

namespace nebra {

// The diagnostic log "NebraLog.txt": a date line, a time line, then numbered
// milestones, each line ended by CR LF:
//
//   Log trace: Block <n>     written by LogTraceBlock(), on entry to a procedure
//   Log trace: <n>           written by LogTrace(), after a step
//
// The two counters are 16-bit and independent; going past 32767 raises
// OverflowError and writes nothing. Logging switched on after start-up, with
// no file open, raises BadFileError. The level is asked of the
// settings on every call; at 0 or less nothing happens and nothing counts.
class DiagnosticLog
{
public:
    using LevelSource = std::function<int()>;

    static constexpr const char* FileName = "NebraLog.txt";

    explicit DiagnosticLog(LevelSource level);

    // Resets both counters, creates the folder when needed, truncates
    // folder/NebraLog.txt and writes the date and time lines. Returns false,
    // with errorString() set, when the file cannot be written; the log then
    // stays silent for the rest of the run.
    bool Open(const QString& folder);

    void LogTraceBlock();
    void LogTrace();

    qint16 blockCounter() const { return m_blockCounter; }
    qint16 traceCounter() const { return m_traceCounter; }
    QString filePath() const { return m_file.fileName(); }
    QString errorString() const { return m_error; }

    // The log that LogTrace() and LogTraceBlock() below write to.
    static void setProcessWide(DiagnosticLog* log);
    static DiagnosticLog* processWide();

private:
    void write(qint16& counter, const char* prefix);
    void writeLine(const QString& text);

    LevelSource m_level;
    QFile m_file;
    QString m_error;
    qint16 m_blockCounter = 0;
    qint16 m_traceCounter = 0;
    bool m_openFailed = false;
};

// Milestones on the process-wide log; nothing happens while none is set.
void LogTraceBlock();
void LogTrace();

// A line "Log note: " + text on standard error, where the system journal
// takes it, for a failure whose reason support needs (a wizard plug-in that
// cannot be loaded, say). The diagnostic log holds only its counters, so a
// note never goes there, whatever the level.
void LogNote(const QString& text);

} // namespace nebra
