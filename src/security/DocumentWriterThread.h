#pragma once

#include "DocumentRecord.h"

#include <QObject>
#include <QThreadPool>

#include <functional>
#include <memory>

namespace nebra {

// One thread that owns a document writer (a connection to the security
// store of its own) and runs its calls in the order they were made. The
// writer is opened at the first call and opened anew after a failure, so a
// store that was out of reach is reached again by the next call. Results go
// back to the receiver's thread, as queued calls: the receiver must outlive
// this object (a call still queued when it is deleted is dropped with it).
class DocumentWriterThread
{
public:
    explicit DocumentWriterThread(DocumentWriterFactory factory);
    // Closes the writer on its own thread and waits for it.
    ~DocumentWriterThread();
    DocumentWriterThread(const DocumentWriterThread&) = delete;
    DocumentWriterThread& operator=(const DocumentWriterThread&) = delete;

    // Every path's newest record and its signatures, read together.
    struct Records
    {
        QHash<QString, DocumentRecord> newest;
        QHash<QString, QList<DocumentSignature>> signatures;
    };
    void readRecords(QObject* receiver,
                     std::function<void(bool ok, const Records&, const QString& error)> done);
    // Writes the changes in order up to the first that fails; done gets the
    // sequence numbers of those written and, when one failed, why.
    void write(const QList<DocumentChange>& changes, QObject* receiver,
               std::function<void(const QList<qint64>& sequences, const QString& error)> done);

private:
    struct State;
    std::shared_ptr<State> m_state;
    QThreadPool m_thread;
};

} // namespace nebra
