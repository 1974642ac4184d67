#pragma once

#include "AuditCsv.h"

#include <QString>

class QIODevice;

namespace nebra {

// The audit trail written out for people and for spreadsheets, from either
// back end's trail (a source visiting its entries in order).
class AuditReport
{
public:
    // One line per entry: sequence, time (UTC), user, workstation, area, text, tab-separated.
    static bool print(const AuditEntrySource& entries, QIODevice& out, QString* error);

    // The CSV form of AuditCsv (formula-neutralised cells, the MAC in
    // hexadecimal). path "-" writes to out; a file is replaced
    // atomically, so a failed export leaves no half-written file.
    static bool exportCsv(const AuditEntrySource& entries, const QString& path, QIODevice& out,
                          QString* error);
};

} // namespace nebra
