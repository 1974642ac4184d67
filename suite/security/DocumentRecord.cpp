#include "DocumentRecord.h"

#include <QDateTime>

#include <array>

namespace nebra {

namespace {

struct EventName
{
    DocumentEvent event;
    const char* name;
};

constexpr std::array<EventName, 7> EventNames = {{
    {DocumentEvent::Recorded, "recorded"},
    {DocumentEvent::ChangedBySuite, "suite"},
    {DocumentEvent::ChangedOutside, "outside"},
    {DocumentEvent::ChangedUnwatched, "unwatched"},
    {DocumentEvent::Accepted, "accepted"},
    {DocumentEvent::Removed, "removed"},
    {DocumentEvent::Renamed, "renamed"},
}};

QString fingerprintText(const DocumentFingerprint& fingerprint)
{
    return QStringLiteral("%1 sha256=%2 size=%3 modified=%4")
        .arg(fingerprint.path, QString::fromLatin1(fingerprint.sha256.toHex()))
        .arg(fingerprint.size)
        .arg(DocumentEntries::utcText(fingerprint.modifiedMs));
}

} // namespace

QString DocumentEntries::utcText(qint64 msSinceEpoch)
{
    return QDateTime::fromMSecsSinceEpoch(msSinceEpoch, Qt::UTC).toString(Qt::ISODateWithMs);
}

QString DocumentEntries::text(const DocumentChange& change, const QString& sessionUser)
{
    const QString what = fingerprintText(change.fingerprint);
    switch (change.event) {
    case DocumentEvent::Recorded:
        return QStringLiteral("Document recorded: ") + what;
    case DocumentEvent::ChangedBySuite:
        return QStringLiteral("Document changed: %1 by %2").arg(what, change.program);
    case DocumentEvent::ChangedOutside:
        return QStringLiteral("Document changed outside the suite: %1 (seen while %2 was logged in)")
            .arg(what, sessionUser);
    case DocumentEvent::ChangedUnwatched:
        return QStringLiteral("Document changed while nothing recorded it: %1 (found while %2 was logged in)")
            .arg(what, sessionUser);
    case DocumentEvent::Accepted:
        return QStringLiteral("Document change accepted: %1 reason: %2").arg(what, change.reason);
    case DocumentEvent::Removed:
        return QStringLiteral("Document removed: ") + change.fingerprint.path;
    case DocumentEvent::Renamed:
        return QStringLiteral("Document renamed: %1 -> %2").arg(change.previousPath, change.fingerprint.path);
    }
    return {};
}

QString DocumentEntries::eventName(DocumentEvent event)
{
    for (const EventName& row : EventNames)
        if (row.event == event)
            return QString::fromLatin1(row.name);
    return {};
}

std::optional<DocumentEvent> DocumentEntries::eventNamed(const QString& name)
{
    for (const EventName& row : EventNames)
        if (name == QLatin1String(row.name))
            return row.event;
    return std::nullopt;
}

DocumentRecord DocumentEntries::recordFrom(const std::function<QVariant(int)>& column)
{
    DocumentRecord row;
    row.fingerprint = {column(0).toString(), column(1).toByteArray(), column(2).toLongLong(),
                       column(3).toLongLong()};
    const std::optional<DocumentEvent> event = eventNamed(column(4).toString());
    row.event = event.value_or(DocumentEvent::ChangedUnwatched);
    row.intact = event.has_value();
    row.sequence = column(5).toLongLong();
    return row;
}

RecordState DocumentEntries::stateOf(const std::optional<DocumentRecord>& record)
{
    if (!record || record->event == DocumentEvent::Removed)
        return RecordState::NotRecorded;
    // A row no one can vouch for says nothing about the document: it needs a look.
    if (!record->intact || record->event == DocumentEvent::ChangedUnwatched)
        return RecordState::ChangedUnwatched;
    if (record->event == DocumentEvent::ChangedOutside)
        return RecordState::ChangedOutside;
    return RecordState::Recorded;
}

QString DocumentEntries::caption(RecordState state)
{
    switch (state) {
    case RecordState::NotRecorded:
        return QStringLiteral("Not recorded");
    case RecordState::Recorded:
        return QStringLiteral("Recorded");
    case RecordState::ChangedOutside:
        return QStringLiteral("Changed outside the suite");
    case RecordState::ChangedUnwatched:
        return QStringLiteral("Changed while not recorded");
    }
    return {};
}

} // namespace nebra
