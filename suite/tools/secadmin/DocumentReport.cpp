#include "DocumentReport.h"

#include "AuditCsv.h"

#include <QDir>

#include <algorithm>

namespace nebra {

namespace {

bool inside(const QString& path, const QString& folder)
{
    return folder.isEmpty() || path == folder || path.startsWith(folder + QLatin1Char('/'));
}

} // namespace

QString DocumentReport::label(Finding finding)
{
    switch (finding) {
    case Finding::Altered:
        return QStringLiteral("altered");
    case Finding::ChangedOutside:
        return QStringLiteral("changed outside the suite");
    case Finding::Missing:
        return QStringLiteral("missing");
    case Finding::Unrecorded:
        return QStringLiteral("unrecorded");
    case Finding::AcceptedChange:
        return QStringLiteral("accepted change");
    }
    return {};
}

std::optional<DocumentReport::Finding> DocumentReport::findingFor(const QString& path,
                                                                  const std::optional<DocumentRecord>& record)
{
    if (!record || record->event == DocumentEvent::Removed)
        return Finding::Unrecorded;
    // The whole content is read: a time or size put back proves nothing.
    const std::optional<DocumentFingerprint> now = DocumentFolders::fingerprint(path);
    if (!record->intact || !now || !now->sameContent(record->fingerprint))
        return Finding::Altered;
    switch (record->event) {
    case DocumentEvent::ChangedOutside:
    case DocumentEvent::ChangedUnwatched:
        return Finding::ChangedOutside;
    case DocumentEvent::Accepted:
        return Finding::AcceptedChange;
    default:
        return std::nullopt;
    }
}

QList<DocumentReport::Line> DocumentReport::check(const DocumentFolders& folders, const QString& within,
                                                  const QHash<QString, DocumentRecord>& records)
{
    const QString folder = within.isEmpty() ? QString() : QDir::cleanPath(within);
    QList<Line> lines;
    const QStringList documents = folders.list(folder);
    for (const QString& path : documents) {
        const auto record = records.constFind(path);
        if (const std::optional<Finding> finding =
                findingFor(path, record == records.cend() ? std::nullopt : std::optional(*record)))
            lines.append({*finding, path});
    }
    for (auto it = records.cbegin(); it != records.cend(); ++it)
        if (it->event != DocumentEvent::Removed && inside(it.key(), folder) && folders.isDocument(it.key()) &&
            !std::binary_search(documents.cbegin(), documents.cend(), it.key()))
            lines.append({Finding::Missing, it.key()});
    std::sort(lines.begin(), lines.end(), [](const Line& a, const Line& b) { return a.path < b.path; });
    return lines;
}

QByteArray DocumentReport::text(const QList<Line>& lines)
{
    QByteArray out;
    for (const Line& line : lines)
        out += (label(line.finding) + QStringLiteral(": ") + line.path + QLatin1Char('\n')).toUtf8();
    return out;
}

QByteArray DocumentReport::csv(const QList<Line>& lines)
{
    QByteArray out = "finding,path\r\n";
    // Quoted and kept from running as a formula as the audit export's cells are.
    for (const Line& line : lines)
        out += (AuditCsv::field(label(line.finding)) + QLatin1Char(',') + AuditCsv::field(line.path) +
                QStringLiteral("\r\n"))
                   .toUtf8();
    return out;
}

int DocumentReport::exitStatus(const QList<Line>& lines)
{
    return std::all_of(lines.cbegin(), lines.cend(),
                       [](const Line& line) { return line.finding == Finding::AcceptedChange; })
               ? 0
               : 1;
}

} // namespace nebra
