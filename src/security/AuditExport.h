#pragma once

#include "AuditCsv.h"
#include "AuditPrintout.h"
#include "AuditQuery.h"

#include <QString>

#include <functional>

namespace nebra {

// Writes the reviewer's view of the audit trail to a CSV or PDF file. Every
// export is itself recorded in the trail, and the record comes first: the
// file is written aside, the entry is recorded, and only then does the file
// take its name. When the entry cannot be recorded the file is discarded,
// so no export leaves the program unrecorded.
class AuditExport
{
public:
    enum class Outcome
    {
        Written,
        Failed,     // the file could not be written or the entries read; *error says why
        NotRecorded // the record was refused; the recorder has told the user
    };
    // Records the audit entry given; true once it is committed.
    using Recorder = std::function<bool(const QString& text)>;

    AuditExport(AuditEntrySource entries, QString filterWords, Recorder record);

    Outcome writeCsv(const QString& path, QString* error);
    Outcome writePdf(const QString& path, const AuditPrintoutTitle& title, QString* error);
    // Entries in the last file written.
    qint64 entryCount() const { return m_count; }

    // "from 2026-11-01 to 2026-11-25, user jsmith, area Security, text
    // containing "export"", or "all entries". Dates are the local days the
    // range covers, both included.
    static QString filterInWords(const AuditFilter& filter);
    // The audit entry of an export or printout: what was done ("exported to
    // CSV file", "printed on"), where, the number of entries and the filter.
    static QString recordText(const QString& what, const QString& where, const QString& filterWords,
                              qint64 count);
    static QString cannotWriteText(const QString& path, const QString& reason);

private:
    template <typename Write>
    Outcome writeFile(const QString& path, const QString& what, Write write, QString* error);

    AuditEntrySource m_entries;
    QString m_filterWords;
    Recorder m_record;
    qint64 m_count = 0;
};

} // namespace nebra
