#pragma once

#include <QObject>
#include <QString>

#include <functional>

class QEventLoop;

namespace nebra {

class FolderReaders;

// Asks, on a reader thread, whether the parent folder of the data folders
// answers, making it when it is missing, and makes the data folders there,
// so that the start-up never waits on a file server that stopped answering
// for longer than it chooses to.
class DataFolderProbe : public QObject
{
    Q_OBJECT
public:
    static constexpr int StartUpWaitMs = 5000;

    explicit DataFolderProbe(QObject* parent = nullptr);

    // Runs the event loop until folder has answered or waitMs have passed;
    // true when it answered in time. Otherwise answeredLate() follows when
    // it answers.
    bool waitFor(const QString& folder, int waitMs = StartUpWaitMs);
    // The same for any work on the disk where folder lives.
    bool run(const QString& folder, std::function<void()> work, int waitMs = StartUpWaitMs);

    // The readers of the data folders, for work that nobody waits for.
    FolderReaders& readers() { return *m_readers; }

    // The message shown once when the data folders did not answer in time.
    static QString notAnsweringText(const QString& folder);

Q_SIGNALS:
    void answeredLate();

private:
    FolderReaders* m_readers;
    QEventLoop* m_loop = nullptr;
    bool m_answered = false;
};

} // namespace nebra
