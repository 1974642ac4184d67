#pragma once

#include <QString>

#include <functional>

class QIODevice;

namespace nebra {

struct AuditEntry;

// Visits a trail's entries in order (stopping when the visit returns false);
// false, with *error, when they cannot be read. Either back end's trail.
using AuditVisit = std::function<bool(const AuditEntry&)>;
using AuditEntries = std::function<bool(const AuditVisit& visit, QString* error)>;

// The audit trail written out for people and for spreadsheets.
class AuditReport
{
public:
    // One line per entry: sequence, time (UTC), user, workstation, area, text, tab-separated.
    static bool print(const AuditEntries& entries, QIODevice& out, QString* error);

    // RFC 4180 CSV with a header row, fields quoted where needed, including
    // the MAC in hexadecimal. path "-" writes to out; a file is replaced
    // atomically, so a failed export leaves no half-written file.
    static bool exportCsv(const AuditEntries& entries, const QString& path, QIODevice& out, QString* error);

    // A cell that a spreadsheet would take for a formula (starting with "=",
    // "+", "-", "@", a tab or a carriage return) gets a leading "'", so that
    // an entry's text can never run as a formula on the reviewer's computer.
    static QString csvField(const QString& value);
};

} // namespace nebra
