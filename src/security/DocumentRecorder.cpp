#include "DocumentRecorder.h"

#include "StartedPrograms.h"

#include <QMetaObject>

namespace nebra {

namespace {

// How long after the Organiser announced a write its change is taken as the suite's.
constexpr qint64 ExpectedWriteSeconds = 30;
// How long a document that disappeared may take to reappear under another name.
constexpr int RenameGraceMs = 250;
// Entries handed to the writer at once.
constexpr int WriteBatch = 1000;
// How long the end of a session waits for a read under way.
constexpr int FinishWaitMs = 200;

} // namespace

// A document read on a worker: its fingerprint, or none when it is gone or
// unchanged since it was last read.
struct DocumentRecorder::Hashed
{
    QString path;
    int cause;
    std::optional<DocumentStat> stat;
    std::optional<DocumentFingerprint> fingerprint;
};

struct DocumentRecorder::Scanned
{
    QHash<QString, DocumentStat> documents;
};

DocumentRecorder::DocumentRecorder(DocumentFolders folders, DocumentWriterFactory writers,
                                   const StartedPrograms* programs, QObject* parent)
    : QObject(parent), m_folders(std::move(folders)), m_programs(programs),
      m_clock([] { return QDateTime::currentDateTimeUtc(); }), m_writer(std::move(writers))
{
    m_retry.setSingleShot(true);
    m_retry.setInterval(10000);
    connect(&m_retry, &QTimer::timeout, this, &DocumentRecorder::write);
    m_grace.setSingleShot(true);
    m_grace.setInterval(RenameGraceMs);
    connect(&m_grace, &QTimer::timeout, this, &DocumentRecorder::settleWhenIdle);
}

DocumentRecorder::~DocumentRecorder()
{
    // Documents not read yet are read at the next start; the writer finishes what it was handed.
    m_readers.clear();
    m_readers.waitForDone();
}

void DocumentRecorder::start()
{
    m_scanning = true;
    m_writer.readRecords(this,
                         [this](bool ok, const DocumentWriterThread::Records& records, const QString& error) {
                             if (m_finishing)
                                 return;
                             if (!ok) {
                                 m_scanning = false;
                                 if (!std::exchange(m_failing, true))
                                     Q_EMIT recordingFailed(error);
                                 QTimer::singleShot(m_retry.interval(), this, &DocumentRecorder::start);
                                 settleWhenIdle();
                                 return;
                             }
                             m_records = records.newest;
                             m_signatures = records.signatures;
                             for (const DocumentRecord& record : m_records)
                                 if (record.intact && record.event != DocumentEvent::Removed)
                                     m_latest.insert(record.fingerprint.path, record.fingerprint);
                             for (auto it = m_records.cbegin(); it != m_records.cend(); ++it)
                                 Q_EMIT stateChanged(it.key());
                             for (auto it = m_signatures.cbegin(); it != m_signatures.cend(); ++it)
                                 if (!m_records.contains(it.key()))
                                     Q_EMIT stateChanged(it.key());
                             scan(Cause::Scan);
                         });
}

void DocumentRecorder::rescan()
{
    if (!m_scanning) {
        m_scanning = true;
        scan(Cause::Scan);
    }
}

void DocumentRecorder::poll()
{
    if (!m_scanning) {
        m_scanning = true;
        scan(Cause::Notice);
    }
}

void DocumentRecorder::scan(Cause cause)
{
    m_readers.start([this, folders = m_folders, stop = m_stop, cause] {
        const Scanned result{stop->load() ? QHash<QString, DocumentStat>() : folders.scan()};
        QMetaObject::invokeMethod(
            this, [this, result, cause] { scanned(result, cause); }, Qt::QueuedConnection);
    });
}

void DocumentRecorder::scanned(const Scanned& result, Cause cause)
{
    m_scanning = false;
    if (m_finishing)
        return;
    // Only the comparison of everything with the records shows its progress.
    const bool counted = cause == Cause::Scan;
    if (counted)
        m_total = m_done = 0;
    for (auto it = result.documents.cbegin(); it != result.documents.cend(); ++it) {
        const std::optional<DocumentStat> known =
            m_stats.contains(it.key()) ? std::optional(m_stats.value(it.key())) : std::nullopt;
        const DocumentRecord record = m_records.value(it.key());
        // Unchanged since this run read it, or (first in a run) since it was recorded.
        const bool unchanged = known ? *known == *it
                                     : m_records.contains(it.key()) && record.intact &&
                                           record.fingerprint.size == it->size &&
                                           record.fingerprint.modifiedMs == it->modifiedMs;
        if (unchanged) {
            m_stats.insert(it.key(), *it);
            continue;
        }
        m_total += counted ? 1 : 0;
        hash(it.key(), cause);
    }
    for (auto it = m_records.cbegin(); it != m_records.cend(); ++it)
        if (it->event != DocumentEvent::Removed && !result.documents.contains(it.key()) &&
            m_folders.isDocument(it.key()))
            vanish(it.key());
    if (counted && m_total > 0)
        Q_EMIT progress(0, m_total);
    settleWhenIdle();
}

void DocumentRecorder::hash(const QString& path, Cause cause)
{
    ++m_hashing;
    const std::optional<DocumentStat> known =
        m_stats.contains(path) ? std::optional(m_stats.value(path)) : std::nullopt;
    m_readers.start([this, path, cause, known, stop = m_stop] {
        if (stop->load()) {
            QMetaObject::invokeMethod(
                this,
                [this, path] {
                    hashed({path, 0, std::nullopt, std::nullopt});
                },
                Qt::QueuedConnection);
            return;
        }
        Hashed result{path, int(cause), DocumentFolders::stat(path), std::nullopt};
        if (result.stat && !(known && *known == *result.stat))
            result.fingerprint = DocumentFolders::fingerprint(path, &*result.stat);
        QMetaObject::invokeMethod(
            this, [this, result] { hashed(result); }, Qt::QueuedConnection);
    });
}

void DocumentRecorder::hashed(const Hashed& result)
{
    --m_hashing;
    if (m_finishing)
        return;
    const Cause cause = Cause(result.cause);
    if (cause == Cause::Scan && m_total > 0)
        Q_EMIT progress(++m_done, m_total);
    if (result.fingerprint) {
        m_stats.insert(result.path, *result.stat);
        changed(*result.fingerprint, cause);
    } else if (!result.stat) {
        vanish(result.path);
    }
    settleWhenIdle();
}

void DocumentRecorder::changed(const DocumentFingerprint& fingerprint, Cause cause)
{
    const QString& path = fingerprint.path;
    const auto latest = m_latest.constFind(path);
    // There after all (replaced, which first looked like gone): not removed.
    if (latest != m_latest.cend() && m_vanished.value(latest->sha256) == path)
        m_vanished.remove(latest->sha256);
    // Read twice (two notifications), or the same as recorded: nothing new.
    if (latest != m_latest.cend() && latest->sameContent(fingerprint))
        return;
    const auto newest = m_records.constFind(path);
    if (latest == m_latest.cend() &&
        (newest == m_records.cend() || newest->event == DocumentEvent::Removed)) {
        const QString previous = m_vanished.take(fingerprint.sha256);
        record(previous.isEmpty() ? DocumentChange{DocumentEvent::Recorded, fingerprint, {}, {}, {}}
                                  : DocumentChange{DocumentEvent::Renamed, fingerprint, previous, {}, {}});
        return;
    }
    if (cause == Cause::Scan) {
        record({DocumentEvent::ChangedUnwatched, fingerprint, {}, {}, {}});
        return;
    }
    const QString program = attribution(path);
    record({program.isEmpty() ? DocumentEvent::ChangedOutside : DocumentEvent::ChangedBySuite,
            fingerprint,
            {},
            program,
            {}});
}

QString DocumentRecorder::attribution(const QString& path)
{
    const auto expected = m_expected.constFind(path);
    if (expected != m_expected.cend()) {
        const bool inTime = m_clock() <= *expected;
        m_expected.erase(expected);
        if (inTime)
            return QStringLiteral("Organiser");
    }
    return m_programs ? m_programs->programOn(path) : QString();
}

void DocumentRecorder::vanish(const QString& path)
{
    m_stats.remove(path);
    const auto latest = m_latest.constFind(path);
    const auto record = m_records.constFind(path);
    if (latest != m_latest.cend())
        m_vanished.insert(latest->sha256, path);
    else if (record != m_records.cend() && record->event != DocumentEvent::Removed)
        m_vanished.insert(record->fingerprint.sha256, path);
    else
        return;
    m_grace.start();
}

void DocumentRecorder::finish()
{
    m_finishing = true;
    m_stop->store(true);
    m_retry.stop();
    m_grace.stop();
    blockSignals(true);
    m_readers.clear();
    // A read under way ends soon unless its disk hangs; one that hangs is not waited for.
    if (m_readers.waitForDone(FinishWaitMs)) {
        delete this; // the writer finishes the batch it holds
        return;
    }
    auto* hanging = new QTimer(this);
    connect(hanging, &QTimer::timeout, this, [this] {
        if (m_readers.activeThreadCount() == 0)
            deleteLater();
    });
    hanging->start(FinishWaitMs);
}

void DocumentRecorder::expectWrite(const QString& path)
{
    m_expected.insert(path, m_clock().addSecs(ExpectedWriteSeconds));
}

void DocumentRecorder::noticeChange(const FolderChange& change)
{
    switch (change.event) {
    case ShellEvent::SHCNE_UPDATEITEM:
    case ShellEvent::SHCNE_CREATE:
        if (m_folders.isDocument(change.path1))
            hash(change.path1, Cause::Notice);
        break;
    case ShellEvent::SHCNE_DELETE:
        vanish(change.path1);
        break;
    case ShellEvent::SHCNE_RENAMEITEM:
        vanish(change.path1);
        if (m_folders.isDocument(change.path2))
            hash(change.path2, Cause::Notice);
        break;
    default:
        // Folders made, removed or renamed: the documents below them are read again.
        rescan();
        return;
    }
    settleWhenIdle();
}

void DocumentRecorder::noteAccepted(const DocumentFingerprint& fingerprint, qint64 sequence)
{
    m_records.insert(fingerprint.path, {fingerprint, DocumentEvent::Accepted, sequence, true});
    m_latest.insert(fingerprint.path, fingerprint);
    m_seen.remove(fingerprint.path);
    Q_EMIT stateChanged(fingerprint.path);
}

void DocumentRecorder::noteSigned(const DocumentSignature& signature)
{
    m_signatures[signature.path].append(signature);
    Q_EMIT stateChanged(signature.path);
}

void DocumentRecorder::record(const DocumentChange& change)
{
    m_outbox.append(change);
    if (change.event == DocumentEvent::Removed)
        m_latest.remove(change.fingerprint.path);
    else
        m_latest.insert(change.fingerprint.path, change.fingerprint);
    if (change.event == DocumentEvent::Renamed)
        m_latest.remove(change.previousPath);
    auto& queued = m_queued[change.fingerprint.path];
    queued = {change.event, queued.second + 1};
    if (change.event == DocumentEvent::ChangedOutside || change.event == DocumentEvent::ChangedUnwatched)
        m_seen.insert(change.fingerprint.path, m_clock());
    else
        m_seen.remove(change.fingerprint.path);
    Q_EMIT stateChanged(change.fingerprint.path);
    if (change.event == DocumentEvent::Renamed)
        Q_EMIT stateChanged(change.previousPath);
    write();
}

void DocumentRecorder::write()
{
    if (m_inFlight > 0 || m_outbox.isEmpty() || m_retry.isActive())
        return;
    const QList<DocumentChange> batch = m_outbox.mid(0, WriteBatch);
    m_inFlight = int(batch.size());
    m_writer.write(batch, this, [this](const QList<qint64>& sequences, const QString& error) {
        written(sequences, error);
    });
}

void DocumentRecorder::written(const QList<qint64>& sequences, const QString& error)
{
    m_inFlight = 0;
    if (m_finishing)
        return;
    for (qint64 sequence : sequences) {
        const DocumentChange change = m_outbox.takeFirst();
        const auto queued = m_queued.find(change.fingerprint.path);
        const bool settled = queued != m_queued.end() && --queued->second == 0;
        if (settled)
            m_queued.erase(queued);
        if (change.event == DocumentEvent::Renamed)
            m_records.remove(change.previousPath);
        m_records.insert(change.fingerprint.path, {change.fingerprint, change.event, sequence, true});
        // The state shown is the same; what can be accepted is not.
        if (settled)
            Q_EMIT stateChanged(change.fingerprint.path);
    }
    if (!error.isEmpty()) {
        if (!std::exchange(m_failing, true))
            Q_EMIT recordingFailed(error);
        m_retry.start();
    } else {
        m_failing = false;
    }
    write();
    settleWhenIdle();
}

// Documents that vanished and did not reappear elsewhere were removed.
void DocumentRecorder::settleWhenIdle()
{
    if (m_hashing > 0 || m_scanning || m_grace.isActive())
        return;
    for (auto it = m_vanished.cbegin(); it != m_vanished.cend(); ++it)
        record({DocumentEvent::Removed, {it.value(), {}, -1, 0}, {}, {}, {}});
    m_vanished.clear();
    if (m_outbox.isEmpty() || m_failing)
        Q_EMIT idle();
}

RecordState DocumentRecorder::state(const QString& path) const
{
    // A change waiting to be written shows as what it will record.
    const auto queued = m_queued.constFind(path);
    if (queued != m_queued.cend())
        return DocumentEntries::stateOf(DocumentRecord{{path, {}, 0, 0}, queued->first, 0, true});
    const auto record = m_records.constFind(path);
    return DocumentEntries::stateOf(record == m_records.cend() ? std::nullopt : std::optional(*record));
}

DocumentState DocumentRecorder::shownState(const QString& path) const
{
    DocumentState shown{state(path), {}};
    // A document gone, or not read yet, has no content a signature could match.
    const QByteArray current = m_latest.value(path).sha256;
    for (const DocumentSignature& signature : m_signatures.value(path))
        shown.signatures.append(
            {signature, signature.intact && !current.isEmpty() && signature.sha256 == current});
    return shown;
}

std::optional<DocumentFingerprint> DocumentRecorder::acceptable(const QString& path) const
{
    const auto record = m_records.constFind(path);
    if (record == m_records.cend() || m_queued.contains(path) || !record->intact)
        return std::nullopt;
    const RecordState shown = DocumentEntries::stateOf(*record);
    if (shown != RecordState::ChangedOutside && shown != RecordState::ChangedUnwatched)
        return std::nullopt;
    return record->fingerprint;
}

QDateTime DocumentRecorder::changeSeen(const QString& path) const
{
    return m_seen.value(path);
}

} // namespace nebra
