#include "DiagnosticLog.h"

#include <QDate>
#include <QDir>
#include <QLocale>
#include <QTime>

#include <limits>

namespace nebra {

namespace {
DiagnosticLog*& processWideSlot()
{
    static DiagnosticLog* log = nullptr;
    return log;
}
} // namespace

DiagnosticLog::DiagnosticLog(LevelSource level) : m_level(std::move(level)) {}

bool DiagnosticLog::Open(const QString& folder)
{
    m_blockCounter = 0;
    m_traceCounter = 0;
    m_file.close();
    m_file.setFileName(folder + QLatin1Char('/') + QLatin1String(FileName));
    // The log is written line by line as the program passes its milestones,
    // so that a failure leaves the last milestone on disk; an atomic
    // whole-file write would lose exactly that, so it is a plain file.
    if (!QDir().mkpath(folder) || !m_file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        m_error = m_file.errorString();
        m_openFailed = true;
        return false;
    }
    m_openFailed = false;
    const QLocale locale = QLocale::system();
    writeLine(locale.toString(QDate::currentDate(), QLocale::ShortFormat));
    writeLine(locale.toString(QTime::currentTime(), QLocale::LongFormat));
    return true;
}

void DiagnosticLog::LogTraceBlock()
{
    write(m_blockCounter, "Log trace: Block ");
}

void DiagnosticLog::LogTrace()
{
    write(m_traceCounter, "Log trace: ");
}

void DiagnosticLog::write(qint16& counter, const char* prefix)
{
    if (m_level() <= 0 || m_openFailed)
        return;
    if (counter == std::numeric_limits<qint16>::max())
        throw OverflowError();
    ++counter;
    if (!m_file.isOpen())
        throw BadFileError();
    writeLine(QLatin1String(prefix) + QString::number(counter));
}

void DiagnosticLog::writeLine(const QString& text)
{
    m_file.write(text.toUtf8() + "\r\n");
    m_file.flush(); // the last milestone before a crash is the one support needs
}

void DiagnosticLog::setProcessWide(DiagnosticLog* log)
{
    processWideSlot() = log;
}

DiagnosticLog* DiagnosticLog::processWide()
{
    return processWideSlot();
}

void LogTraceBlock()
{
    if (DiagnosticLog* log = DiagnosticLog::processWide())
        log->LogTraceBlock();
}

void LogTrace()
{
    if (DiagnosticLog* log = DiagnosticLog::processWide())
        log->LogTrace();
}

void LogNote(const QString& text)
{
    qWarning("Log note: %s", qUtf8Printable(text));
}

} // namespace nebra
