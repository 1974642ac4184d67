#pragma once

#include "AuditTrail.h"

#include <QByteArray>
#include <QString>

#include <functional>

class QIODevice;

namespace nebra {

// Visits audit entries in the order they are to appear; stops when the
// visitor returns false. False, with *error set, when they cannot be read.
using AuditEntryVisitor = std::function<bool(const AuditEntry&)>;
using AuditEntrySource = std::function<bool(const AuditEntryVisitor& visit, QString* error)>;

// The audit trail as CSV, in the one form the administration tool and the
// Organiser both write: RFC 4180 with a header row, CRLF line ends, UTF-8,
// the columns sequence, time (UTC), user, workstation, area, text, the MAC
// in hexadecimal and, for a signature entry, the signature as the other
// forms show it (meaning, printed name, user and local time with its zone),
// fields quoted where needed.
class AuditCsv
{
public:
    static QByteArray header();
    static QByteArray line(const AuditEntry& entry);

    // Writes the header and one line per entry the source visits. False, with
    // *error set, when the entries cannot be read or the device refuses them.
    static bool write(const AuditEntrySource& source, QIODevice& device, QString* error);

    // A cell that a spreadsheet would take for a formula (starting with "=",
    // "+", "-", "@", a tab or a carriage return) gets a leading "'", so that
    // an entry's text can never run as a formula on the reviewer's computer.
    static QString field(const QString& value);
};

} // namespace nebra
