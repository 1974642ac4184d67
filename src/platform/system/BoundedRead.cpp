#include "BoundedRead.h"

#include "FolderReaders.h"

#include <QEventLoop>
#include <QTimer>

namespace nebra {

BoundedRead::BoundedRead(int waitMs) : m_readers(std::make_unique<FolderReaders>()), m_waitMs(waitMs) {}

BoundedRead::~BoundedRead() = default;

bool BoundedRead::wait(const QString& folder, std::function<void()> work)
{
    QEventLoop loop;
    bool answered = false;
    // The loop is the read's context: an answer after it has gone is not delivered.
    const quint64 id = m_readers->read(
        folder, FolderReaders::Lane::User, &loop,
        [work = std::move(work)] {
            work();
            return true;
        },
        [&answered, &loop](bool) {
            answered = true;
            loop.quit();
        });
    QTimer::singleShot(m_waitMs, &loop, &QEventLoop::quit);
    loop.exec();
    if (!answered)
        m_readers->cancel(id);
    return answered;
}

} // namespace nebra
