#include "AuditExport.h"

#include <QDir>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>

namespace nebra {

AuditExport::AuditExport(AuditEntrySource entries, QString filterWords, Recorder record)
    : m_entries(std::move(entries)), m_filterWords(std::move(filterWords)), m_record(std::move(record))
{
}

QString AuditExport::filterInWords(const AuditFilter& filter)
{
    const QString dateFormat = QStringLiteral("yyyy-MM-dd");
    QStringList parts;
    QStringList range;
    if (filter.from.isValid())
        range << QStringLiteral("from ") + filter.from.toLocalTime().toString(dateFormat);
    // The end is exclusive: the range covers the day before it at most.
    if (filter.to.isValid())
        range << QStringLiteral("to ") + filter.to.addMSecs(-1).toLocalTime().toString(dateFormat);
    if (!range.isEmpty())
        parts << range.join(QLatin1Char(' '));
    if (!filter.userName.isEmpty())
        parts << QStringLiteral("user ") + filter.userName;
    if (!filter.area.isEmpty())
        parts << QStringLiteral("area ") + filter.area;
    if (!filter.text.isEmpty())
        parts << QStringLiteral("text containing \"%1\"").arg(filter.text);
    return parts.isEmpty() ? QStringLiteral("all entries") : parts.join(QStringLiteral(", "));
}

QString AuditExport::recordText(const QString& what, const QString& where, const QString& filterWords,
                                qint64 count)
{
    return QStringLiteral("Audit trail %1 \"%2\": %3 %4, filter: %5")
        .arg(what, where)
        .arg(count)
        .arg(count == 1 ? QStringLiteral("entry") : QStringLiteral("entries"), filterWords);
}

QString AuditExport::cannotWriteText(const QString& path, const QString& reason)
{
    return QStringLiteral("\"%1\" cannot be written (%2).").arg(QDir::toNativeSeparators(path), reason);
}

template <typename Write>
AuditExport::Outcome AuditExport::writeFile(const QString& path, const QString& what, Write write,
                                            QString* error)
{
    m_count = 0;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = cannotWriteText(path, file.errorString());
        return Outcome::Failed;
    }
    if (!write(file, error)) {
        file.cancelWriting();
        return Outcome::Failed;
    }
    // Recorded before the file takes its name: an export the trail does not
    // know of never appears.
    if (!m_record(recordText(what, QDir::toNativeSeparators(path), m_filterWords, m_count))) {
        file.cancelWriting();
        return Outcome::NotRecorded;
    }
    if (!file.commit()) {
        *error = cannotWriteText(path, file.errorString());
        return Outcome::Failed;
    }
    return Outcome::Written;
}

AuditExport::Outcome AuditExport::writeCsv(const QString& path, QString* error)
{
    return writeFile(
        path, QStringLiteral("exported to CSV file"),
        [this](QSaveFile& file, QString* e) {
            const AuditEntrySource counted = [this](const AuditEntryVisitor& visit, QString* why) {
                return m_entries(
                    [&](const AuditEntry& entry) {
                        ++m_count;
                        return visit(entry);
                    },
                    why);
            };
            return AuditCsv::write(counted, file, e);
        },
        error);
}

AuditExport::Outcome AuditExport::writePdf(const QString& path, const AuditPrintoutTitle& title,
                                           QString* error)
{
    return writeFile(
        path, QStringLiteral("exported to PDF file"),
        [&](QSaveFile& file, QString* e) {
            QPdfWriter writer(&file);
            writer.setTitle(QStringLiteral("Audit Trail"));
            writer.setCreator(QStringLiteral("Organiser"));
            writer.setResolution(300);
            writer.setPageSize(QPageSize(QPageSize::A4));
            writer.setPageOrientation(QPageLayout::Landscape);
            writer.setPageMargins(QMarginsF(12, 12, 12, 12), QPageLayout::Millimeter);
            QPainter painter;
            if (!painter.begin(&writer)) {
                *e = cannotWriteText(path, file.errorString());
                return false;
            }
            AuditPrintout printout(title, m_entries);
            const bool painted = printout.paint(painter, writer, e);
            painter.end(); // writes the file's remaining parts
            m_count = printout.entryCount();
            if (painted && file.error() != QFileDevice::NoError) {
                *e = cannotWriteText(path, file.errorString());
                return false;
            }
            return painted;
        },
        error);
}

} // namespace nebra
