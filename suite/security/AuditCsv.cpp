#include "AuditCsv.h"

#include "DocumentSignature.h"

#include <QIODevice>
#include <QStringList>

namespace nebra {

QByteArray AuditCsv::header()
{
    return QByteArrayLiteral("Sequence,Time (UTC),User,Workstation,Area,Text,MAC,Signature\r\n");
}

QByteArray AuditCsv::line(const AuditEntry& e)
{
    const QStringList fields = {QString::number(e.sequence),
                                e.utc,
                                e.userName,
                                e.workstation,
                                e.area,
                                e.text,
                                QString::fromLatin1(e.mac.toHex()),
                                SignatureEntries::manifestOf(e)};
    QStringList quoted;
    for (const QString& f : fields)
        quoted.append(field(f));
    return quoted.join(QLatin1Char(',')).toUtf8() + "\r\n";
}

bool AuditCsv::write(const AuditEntrySource& source, QIODevice& device, QString* error)
{
    bool written = device.write(header()) > 0;
    const bool read = source(
        [&](const AuditEntry& e) {
            written = written && device.write(line(e)) > 0;
            return written;
        },
        error);
    if (read && !written)
        *error = device.errorString();
    return read && written;
}

QString AuditCsv::field(const QString& raw)
{
    static const QString special = QStringLiteral(",\"\r\n");
    static const QString formulaStarts = QStringLiteral("=+-@\t\r");
    const QString value =
        !raw.isEmpty() && formulaStarts.contains(raw.front()) ? QLatin1Char('\'') + raw : raw;
    bool needsQuotes = false;
    for (const QChar c : value)
        needsQuotes = needsQuotes || special.contains(c);
    if (!needsQuotes)
        return value;
    QString quoted = value;
    quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

} // namespace nebra
