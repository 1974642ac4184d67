#pragma once

#include "DocumentFolders.h"
#include "DocumentRecord.h"
#include "DocumentState.h"
#include "DocumentWriterThread.h"
#include "FolderChange.h"

#include <QDateTime>
#include <QHash>
#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>

namespace nebra {

class StartedPrograms;

// Keeps the fingerprint of every document of the data folders in the audit
// trail while a session lasts, and knows each document's record state: the
// one place the file list and the preview ask.
//
// start() and rescan() compare every document with its newest record: a
// document never seen is recorded, one that differs was changed while
// nothing recorded it, one that is gone was removed. A change the
// notifications report (noticeChange) is the suite's when the Organiser
// announced the write (expectWrite) or a program it started on the document
// or its folder still runs, and otherwise made outside the suite. A
// document that disappears and reappears elsewhere with the same content
// was renamed.
//
// Files are read and hashed on worker threads, and only when their size,
// modification time or inode changed; entries are written, in order, by a
// writer of their own on one more thread, so the main thread never waits
// for the disk or the store. An entry that cannot be written is reported
// once (recordingFailed) and retried, with every later one behind it.
class DocumentRecorder : public QObject
{
    Q_OBJECT
public:
    // programs may be null (no program is ever running).
    DocumentRecorder(DocumentFolders folders, DocumentWriterFactory writers, const StartedPrograms* programs,
                     QObject* parent = nullptr);
    // Waits for the worker threads.
    ~DocumentRecorder() override;

    // Ends recording without waiting on the disk: nothing more is read, and
    // nothing is written beyond the entries handed to the store already. The
    // recorder deletes itself before returning when the reads under way end
    // within a fifth of a second, and otherwise once they have ended (never,
    // for a read that never returns: its thread is left to the end of the
    // process). Emits nothing after the call. Documents not recorded yet are
    // found at the next start.
    void finish();

    // Reads the newest records and then compares the disk with them.
    void start();
    void rescan();
    // A poll of a folder on a file server saw it change while the session
    // ran: the documents are compared as by rescan(), and what changed counts
    // as seen (noticeChange), not as changed while nothing recorded it.
    void poll();
    // The Organiser itself is about to write path: its next change is the suite's.
    void expectWrite(const QString& path);
    void noticeChange(const FolderChange& change);
    // A change accepted through the security manager: the record it wrote.
    void noteAccepted(const DocumentFingerprint& fingerprint, qint64 sequence);
    // A signature the security manager recorded in this session.
    void noteSigned(const DocumentSignature& signature);

    RecordState state(const QString& path) const;
    // What the list and the preview show: the record state joined by the
    // signatures, each valid while it signed the content last fingerprinted
    // (recorded or waiting to be) and its row is intact.
    DocumentState shownState(const QString& path) const;
    bool isDocument(const QString& path) const { return m_folders.isDocument(path); }
    // The fingerprint a reviewer accepts for path: that of its newest
    // committed record, when it shows a change no suite program made and no
    // newer change waits to be written; empty otherwise.
    std::optional<DocumentFingerprint> acceptable(const QString& path) const;
    // When the change that the state shows was seen; invalid for the other states.
    QDateTime changeSeen(const QString& path) const;
    // How long a failed entry waits before it is written again (default 10 s).
    void setRetryInterval(int milliseconds) { m_retry.setInterval(milliseconds); }
    // Replaces the clock, for the window of an announced write.
    void setClock(std::function<QDateTime()> clock) { m_clock = std::move(clock); }

Q_SIGNALS:
    // The state of path changed, or its newest change is now committed (acceptable()).
    void stateChanged(const QString& path);
    // Fingerprinting after start() or rescan(): done of total documents read.
    void progress(int done, int total);
    // Nothing is being read or written, and nothing waits to be.
    void idle();
    // An entry could not be written; once until entries are written again.
    void recordingFailed(const QString& message);

private:
    enum class Cause
    {
        Scan,   // start-up or rescan: nothing recorded what happened before
        Notice, // seen while the session runs
    };
    struct Hashed;
    struct Scanned;

    void scan(Cause cause);
    void scanned(const Scanned& result, Cause cause);
    void hash(const QString& path, Cause cause);
    void hashed(const Hashed& result);
    void changed(const DocumentFingerprint& fingerprint, Cause cause);
    void vanish(const QString& path);
    void record(const DocumentChange& change);
    void write();
    void written(const QList<qint64>& sequences, const QString& error);
    void settleWhenIdle();
    QString attribution(const QString& path);

    DocumentFolders m_folders;
    const StartedPrograms* m_programs;
    std::function<QDateTime()> m_clock;
    QHash<QString, DocumentRecord> m_records;              // committed: the newest entry of each path
    QHash<QString, QList<DocumentSignature>> m_signatures; // oldest first
    QHash<QString, DocumentFingerprint> m_latest;          // recorded or queued, and vouched for
    QHash<QString, DocumentStat> m_stats;                  // as last hashed or found unchanged
    QHash<QString, QDateTime> m_seen;                      // when a change was seen
    QHash<QString, QDateTime> m_expected;                  // announced writes, until when
    QHash<QByteArray, QString> m_vanished;                 // recorded documents gone, by content
    QList<DocumentChange> m_outbox;                        // to be written, in order
    // Per path with changes in the outbox: the newest one's event, and how many there are.
    QHash<QString, std::pair<DocumentEvent, int>> m_queued;
    int m_inFlight = 0; // entries handed to the writer
    int m_hashing = 0;
    int m_total = 0;
    int m_done = 0;
    bool m_scanning = false;
    bool m_failing = false;
    bool m_finishing = false;
    // Read by the workers: after finish() they read nothing more.
    std::shared_ptr<std::atomic<bool>> m_stop = std::make_shared<std::atomic<bool>>(false);
    QTimer m_retry;
    QTimer m_grace; // a document gone may yet reappear elsewhere: a rename
    QThreadPool m_readers;
    DocumentWriterThread m_writer; // last: it is stopped first
};

} // namespace nebra
