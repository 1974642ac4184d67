#pragma once

#include "DocumentFolders.h"
#include "DocumentRecord.h"
#include "DocumentState.h"
#include "FolderChange.h"
#include "RunningPrograms.h"

#include <QDateTime>
#include <QObject>

namespace nebra {

class DocumentRecorder;

// The documents' records of one security session: a DocumentRecorder over
// the data folders from the log-in (begin) to the end of the session (end),
// and the programs the Organiser started for the session's user. Without a
// session it records nothing, reads nothing and knows no state: everything
// here then does nothing, and isRecording() is false.
class DocumentRecording : public QObject
{
    Q_OBJECT
public:
    explicit DocumentRecording(QObject* parent = nullptr);
    // Ends recording, without waiting.
    ~DocumentRecording() override;

    // Starts recording folders through the session's writers: the newest
    // records are read and every document compared with them, on the
    // recorder's threads. A recording under way is ended first.
    void begin(const DocumentFolders& folders, DocumentWriterFactory writers);
    // Ends recording without waiting for a read under way (DocumentRecorder::finish).
    void end();
    bool isRecording() const { return m_recorder != nullptr; }

    // A change the notifications report; a poll of a file server's folder that changed.
    void noticeChange(const FolderChange& change);
    void polled();
    // The Organiser itself is about to write path.
    void expectWrite(const QString& path);
    // A program the Organiser started, by its process id, on a document or folder.
    void programStarted(qint64 processId, const QString& program, const QString& target);
    // The Organiser itself writes documents below folder (a wizard's run):
    // from writing true to a little after writing false, its changes are the Organiser's.
    void organiserWriting(const QString& folder, bool writing);
    // A reviewer accepted the change: the record the manager wrote.
    void noteAccepted(const DocumentFingerprint& fingerprint, qint64 sequence);
    // The user signed: the signature the manager recorded.
    void noteSigned(const DocumentSignature& signature);

    // What the trail says of path; NotRecorded while nothing is recorded.
    RecordState state(const QString& path) const;
    // See DocumentRecorder::shownState; NotRecorded and unsigned while nothing is recorded.
    DocumentState shownState(const QString& path) const;
    // Whether path is a document of the data folders recorded; false while nothing is recorded.
    bool isDocument(const QString& path) const;
    // See DocumentRecorder::acceptable; empty while nothing is recorded.
    std::optional<DocumentFingerprint> acceptable(const QString& path) const;
    // When the change the state shows was seen; invalid for the other states.
    QDateTime changeSeen(const QString& path) const;
    // The recorder of the session, null without one (for a test's waits).
    DocumentRecorder* recorder() const { return m_recorder; }

    // The status bar's text while documents are fingerprinted.
    static QString progressText(int done, int total);

Q_SIGNALS:
    void stateChanged(const QString& path);
    void progress(int done, int total);
    void recordingFailed(const QString& message);

private:
    DocumentRecorder* m_recorder = nullptr; // deletes itself once finished
    RunningPrograms m_programs;
};

} // namespace nebra
