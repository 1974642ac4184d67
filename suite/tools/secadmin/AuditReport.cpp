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

} // namespace

bool AuditReport::print(const AuditEntrySource& entries, QIODevice& out, QString* error)
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

bool AuditReport::exportCsv(const AuditEntrySource& entries, const QString& path, QIODevice& out,
                            QString* error)
{
    if (path == QLatin1String("-"))
        return AuditCsv::write(entries, out, error);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("\"%1\" cannot be written (%2).")
                     .arg(QDir::toNativeSeparators(path), file.errorString());
        return false;
    }
    if (!AuditCsv::write(entries, file, error)) {
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
