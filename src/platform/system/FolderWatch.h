#pragma once

#include <QObject>
#include <QString>

#include <memory>

class QSocketNotifier;

namespace nebra {

class FolderReaders;

// Watches the entries of one folder with the kernel's notifications
// (inotify), as a file list does to follow its folder.
//
// Adding a watch looks the folder up, which waits for the server when the
// folder is on a file server that does not answer; so the watch is added on
// a reader thread (FolderReaders) and is in force once that has answered.
// Removing one never touches the disk. changed() says the folder's entries
// or their files changed, as often as the kernel reports it.
class FolderWatch : public QObject
{
    Q_OBJECT
public:
    explicit FolderWatch(FolderReaders& readers, QObject* parent = nullptr);
    ~FolderWatch() override;

    // Watches folder in place of the folder watched before; nothing when it
    // is that folder already, watched or being added. A folder that cannot be
    // watched (missing, unreadable) is tried again by the next call.
    void watch(const QString& folder);
    // Stops watching.
    void clear();
    // The folder watched or being added; empty after clear().
    QString folder() const { return m_folder; }

Q_SIGNALS:
    void changed();

private:
    struct Instance;

    void readEvents();

    FolderReaders& m_readers;
    std::shared_ptr<Instance> m_instance;  // of m_folder; shared with its add while on its way
    QSocketNotifier* m_notifier = nullptr; // once the watch is in force
    QString m_folder;
};

} // namespace nebra
