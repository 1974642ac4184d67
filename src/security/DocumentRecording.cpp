#include "DocumentRecording.h"

#include "DocumentRecorder.h"

namespace nebra {

DocumentRecording::DocumentRecording(QObject* parent) : QObject(parent) {}

DocumentRecording::~DocumentRecording()
{
    end();
}

void DocumentRecording::begin(const DocumentFolders& folders, DocumentWriterFactory writers)
{
    end();
    // No parent: a recorder that ends while a read hangs outlives the session (finish).
    m_recorder = new DocumentRecorder(folders, std::move(writers), &m_programs);
    connect(m_recorder, &DocumentRecorder::stateChanged, this, &DocumentRecording::stateChanged);
    connect(m_recorder, &DocumentRecorder::progress, this, &DocumentRecording::progress);
    connect(m_recorder, &DocumentRecorder::recordingFailed, this, &DocumentRecording::recordingFailed);
    m_recorder->start();
}

void DocumentRecording::end()
{
    if (DocumentRecorder* recorder = m_recorder) {
        m_recorder = nullptr;
        recorder->finish();
    }
}

void DocumentRecording::noticeChange(const FolderChange& change)
{
    if (m_recorder)
        m_recorder->noticeChange(change);
}

void DocumentRecording::polled()
{
    if (m_recorder)
        m_recorder->poll();
}

void DocumentRecording::expectWrite(const QString& path)
{
    if (m_recorder)
        m_recorder->expectWrite(path);
}

void DocumentRecording::programStarted(qint64 processId, const QString& program, const QString& target)
{
    if (m_recorder)
        m_programs.started(processId, program, target);
}

void DocumentRecording::organiserWriting(const QString& folder, bool writing)
{
    if (!m_recorder)
        return;
    if (writing)
        m_programs.startedHere(QStringLiteral("Organiser"), folder);
    else
        m_programs.endedHere(folder);
}

void DocumentRecording::noteAccepted(const DocumentFingerprint& fingerprint, qint64 sequence)
{
    if (m_recorder)
        m_recorder->noteAccepted(fingerprint, sequence);
}

void DocumentRecording::noteSigned(const DocumentSignature& signature)
{
    if (m_recorder)
        m_recorder->noteSigned(signature);
}

DocumentState DocumentRecording::shownState(const QString& path) const
{
    return m_recorder ? m_recorder->shownState(path) : DocumentState();
}

bool DocumentRecording::isDocument(const QString& path) const
{
    return m_recorder && m_recorder->isDocument(path);
}

RecordState DocumentRecording::state(const QString& path) const
{
    return m_recorder ? m_recorder->state(path) : RecordState::NotRecorded;
}

std::optional<DocumentFingerprint> DocumentRecording::acceptable(const QString& path) const
{
    return m_recorder ? m_recorder->acceptable(path) : std::nullopt;
}

QDateTime DocumentRecording::changeSeen(const QString& path) const
{
    return m_recorder ? m_recorder->changeSeen(path) : QDateTime();
}

QString DocumentRecording::progressText(int done, int total)
{
    return QStringLiteral("Recording documents: %1 of %2").arg(done).arg(total);
}

} // namespace nebra
