#pragma once

#include "AuditTrail.h"
#include "DocumentSignature.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>

namespace nebra {

// What a document held when it was fingerprinted: its SHA-256 (32 bytes),
// size and modification time. A removed document has none of them.
struct DocumentFingerprint
{
    QString path; // absolute, as the data folders name it
    QByteArray sha256;
    qint64 size = -1;
    qint64 modifiedMs = 0; // milliseconds since the epoch, UTC

    bool sameContent(const DocumentFingerprint& other) const
    {
        return sha256 == other.sha256 && size == other.size;
    }
};

// How a document's newest fingerprint came about: the kind of the audit
// entry that recorded it. The order and the names are stored (the embedded
// table and the server both keep the name).
enum class DocumentEvent
{
    Recorded,         // seen for the first time
    ChangedBySuite,   // written by the Organiser, or by a program it started on it
    ChangedOutside,   // changed by something else while the Organiser watched
    ChangedUnwatched, // found changed at start-up or on a rescan
    Accepted,         // a reviewer accepted the change, with a reason
    Removed,
    Renamed, // the fingerprint moved from previousPath to path
};

// One entry for the area "Documents" and the row it leaves behind.
struct DocumentChange
{
    DocumentEvent event = DocumentEvent::Recorded;
    DocumentFingerprint fingerprint;
    QString previousPath; // Renamed only
    QString program;      // ChangedBySuite: the program that wrote it ("Organiser" for the Organiser itself)
    QString reason;       // Accepted only
};

// The newest fingerprint of a path, as the store keeps it for look-ups.
struct DocumentRecord
{
    DocumentFingerprint fingerprint;
    DocumentEvent event = DocumentEvent::Recorded;
    qint64 sequence = 0; // the audit entry that recorded it
    bool intact = true;  // false: the row was changed behind the suite's back
};

// Writes document entries and reads the newest records on a connection of
// its own, on the thread that made it (see SecurityBackend::documentWriter):
// so fingerprinting never waits for the store on the main thread.
struct DocumentWriter
{
    // Records the changes in order, each committed before its sequence
    // number is added to *sequences; false, with *error, when one could not
    // be (the embedded store writes all of them in one transaction, or none).
    std::function<bool(const QList<DocumentChange>&, QList<qint64>* sequences, QString* error)> record;
    // Every path's newest record, keyed by path.
    std::function<bool(QHash<QString, DocumentRecord>*, QString*)> records;
    // Every path's signatures, oldest first, keyed by path.
    std::function<bool(QHash<QString, QList<DocumentSignature>>*, QString*)> signatures;
};
// Opens a writer in the calling thread; empty, with *error, when the store cannot be reached.
using DocumentWriterFactory = std::function<std::optional<DocumentWriter>(QString* error)>;

// What the file list and the preview show for a document in a session. The
// signature state of a document joins this one.
enum class RecordState
{
    NotRecorded,
    Recorded,
    ChangedOutside,
    ChangedUnwatched,
};

// The texts and names of the document entries, shared by both stores (the
// server composes the same texts in its own function).
class DocumentEntries
{
public:
    static constexpr const char* Area = "Documents";
    static constexpr const char* AcceptOperation = "AcceptChange";

    // The entry's text; sessionUser is named in the texts of changes no
    // suite program made, as the one who was logged in when it was seen.
    static QString text(const DocumentChange& change, const QString& sessionUser);
    static QString eventName(DocumentEvent event);
    static std::optional<DocumentEvent> eventNamed(const QString& name);
    // A row of the newest-fingerprint table as both stores select it: path,
    // sha256, size, modified, event, sequence. A row whose event no version
    // of the suite writes is not intact.
    static DocumentRecord recordFrom(const std::function<QVariant(int)>& column);
    // How a record shows in the list (no record: NotRecorded). A record whose
    // row was altered behind the suite's back shows as changed.
    static RecordState stateOf(const std::optional<DocumentRecord>& record);
    static QString caption(RecordState state);
    // "2026-11-26T04:45:00.000Z" for the texts.
    static QString utcText(qint64 msSinceEpoch);
};

} // namespace nebra
