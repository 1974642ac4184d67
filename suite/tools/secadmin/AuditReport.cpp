#include "AuditReport.h"

#include "AuditTrail.h"

#include <QDir>
#include <QSaveFile>

namespace nebra {

namespace {

// Tabs and line ends inside a text would break the one-line-per-entry form.
QString flattened(QString text)
{
    return text.replace(QLatin1Char('\t'), QLatin1Char(' '))
        .replace(QLatin1Char('\r'), QLatin1Char(' '))
        .replace(QLatin1Char('\n'), QLatin1Char(' '));
}

bool writeCsv(const AuditEntries& entries, QIODevice& device, QString* error)
{
    bool written = device.write("Sequence,Time (UTC),User,Workstation,Area,Text,MAC\r\n") > 0;
    const bool read = entries(
        [&](const AuditEntry& e) {
            const QStringList fields = {
                QString::number(e.sequence),       e.utc, e.userName, e.workstation, e.area, e.text,
                QString::fromLatin1(e.mac.toHex())};
            QStringList quoted;
            for (const QString& field : fields)
                quoted.append(AuditReport::csvField(field));
            written = written && device.write(quoted.join(QLatin1Char(',')).toUtf8() + "\r\n") > 0;
            return written;
        },
        error);
    if (read && !written)
        *error = device.errorString();
    return read && written;
}

} // namespace

QString AuditReport::csvField(const QString& raw)
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

bool AuditReport::print(const AuditEntries& entries, QIODevice& out, QString* error)
{
    bool written = true;
    const bool read = entries(
        [&](const AuditEntry& e) {
            const QString line =
                QStringList{
                    QString::number(e.sequence), e.utc, e.userName, e.workstation, e.area, flattened(e.text)}
                    .join(QLatin1Char('\t'));
            written = out.write(line.toUtf8() + '\n') > 0;
            return written;
        },
        error);
    if (read && !written)
        *error = out.errorString();
    return read && written;
}

bool AuditReport::exportCsv(const AuditEntries& entries, const QString& path, QIODevice& out, QString* error)
{
    if (path == QLatin1String("-"))
        return writeCsv(entries, out, error);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("\"%1\" cannot be written (%2).")
                     .arg(QDir::toNativeSeparators(path), file.errorString());
        return false;
    }
    if (!writeCsv(entries, file, error)) {
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        *error = QStringLiteral("\"%1\" cannot be written (%2).")
                     .arg(QDir::toNativeSeparators(path), file.errorString());
        return false;
    }
    return true;
}

} // namespace nebra
