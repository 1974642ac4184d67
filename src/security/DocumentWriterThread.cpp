#include "DocumentWriterThread.h"

#include <QMetaObject>

#include <optional>

namespace nebra {

struct DocumentWriterThread::State
{
    DocumentWriterFactory factory;
    std::optional<DocumentWriter> writer;

    bool open(QString* error)
    {
        if (!writer)
            writer = factory(error);
        return writer.has_value();
    }
};

DocumentWriterThread::DocumentWriterThread(DocumentWriterFactory factory)
    : m_state(std::make_shared<State>(State{std::move(factory), std::nullopt}))
{
    // One thread that never expires: a store connection belongs to the thread that opened it.
    m_thread.setMaxThreadCount(1);
    m_thread.setExpiryTimeout(-1);
}

DocumentWriterThread::~DocumentWriterThread()
{
    m_thread.start([state = m_state] { state->writer.reset(); });
    m_thread.waitForDone();
}

void DocumentWriterThread::readRecords(QObject* receiver,
                                       std::function<void(bool, const Records&, const QString&)> done)
{
    m_thread.start([state = m_state, receiver, done = std::move(done)] {
        Records records;
        QString error;
        const bool ok =
            state->open(&error) && state->writer->records(&records.newest, &error) &&
            (!state->writer->signatures || state->writer->signatures(&records.signatures, &error));
        if (!ok)
            state->writer.reset();
        QMetaObject::invokeMethod(
            receiver, [done, ok, records, error] { done(ok, records, error); }, Qt::QueuedConnection);
    });
}

void DocumentWriterThread::write(const QList<DocumentChange>& changes, QObject* receiver,
                                 std::function<void(const QList<qint64>&, const QString&)> done)
{
    m_thread.start([state = m_state, changes, receiver, done = std::move(done)] {
        QList<qint64> sequences;
        QString error;
        if (state->open(&error) && !state->writer->record(changes, &sequences, &error))
            state->writer.reset(); // a lost connection is opened anew next time
        QMetaObject::invokeMethod(
            receiver, [done, sequences, error] { done(sequences, error); }, Qt::QueuedConnection);
    });
}

} // namespace nebra
