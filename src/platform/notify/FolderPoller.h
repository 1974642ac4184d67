#pragma once

#include "FolderChange.h"
#include "SuiteSettings.h"

#include <QObject>
#include <QStringList>

#include <memory>
#include <vector>

class QTimer;

namespace nebra {

class FolderEntries;
class FolderReaders;
class FolderSnapshot;

// Follows, by polling, the data folders whose changes the kernel's
// notifications cannot see: folders on file servers and FUSE mounts, which
// other workstations (or the mount's own daemon) change.
//
// Each root is first judged on a reader thread (FileSystemKind): with
// FolderWatchMode::Auto a root on a local disk is left to the kernel's
// notifications and one on a share is polled; Notify and Poll decide for
// every root. rootChosen() says which. A polled root's folders are compared
// with the last poll's every tree interval (default 10 s), and the folder
// the file list shows, when it is on a polled root, every list interval
// (default 2 s). Each interval counts from the end of the poll before, so a
// slow server is never asked twice at once.
//
// Every poll runs on the Background lane of FolderReaders: the thread that
// owns this object never touches the disk. The differences arrive here as
// the changes FolderChangeSource delivers (SnapshotDiff), in an order the
// tree can apply; a folder of the list that changed in any way the list
// shows also gives listedFolderChanged(), which is what a list re-reads on;
// so does the first poll of a newly listed folder, which sees what changed
// between the list's own reading and that first look.
// A poll that has not answered within two seconds gives waiting(); the
// server's answer, whenever it comes, is compared as usual.
//
// The readers must outlive the poller.
class FolderPoller : public QObject
{
    Q_OBJECT
public:
    // Every how many tree polls the folders are all read again, however
    // unchanged their times (for servers that keep times in whole seconds).
    static constexpr int FullReadEvery = 30;

    explicit FolderPoller(FolderReaders& readers, QObject* parent = nullptr);
    ~FolderPoller() override;

    // Seconds between polls of the listed folder and of the tree; 0 stops that poll.
    void setIntervals(int listSeconds, int treeSeconds);

    // Starts following roots (folders below them included).
    void watch(const QStringList& roots, FolderWatchMode mode);
    // Forgets every root; no change of them is delivered any more.
    void unwatchAll();
    QStringList polledRoots() const;

    // The folder the file list shows and its filter ("*.apr"); an empty folder for none.
    void setListedFolder(const QString& folder, const QString& filter);

    // Polls the tree of every polled root and the listed folder now, each
    // unless a poll of it is still running; the intervals start again after.
    void pollNow();

Q_SIGNALS:
    // Whether root is polled, or left to the kernel's notifications.
    void rootChosen(const QString& root, bool polled);
    void changed(const nebra::FolderChange& change);
    void listedFolderChanged(const QString& folder);
    // A poll of folder (a root or the listed folder) ended, with changes or without.
    void polled(const QString& folder);
    // A read of folder has not answered within two seconds.
    void waiting(const QString& folder);

private:
    struct Root;
    struct Listed;

    void choose(Root& root, bool polled);
    void pollTree(Root& root);
    void treePolled(Root& root, std::shared_ptr<const FolderSnapshot> snapshot,
                    const std::vector<FolderChange>& changes);
    void pollList();
    Root* polledRootOf(const QString& folder) const;
    void arm(QTimer& timer, int seconds);
    void cancelReads();

    FolderReaders& m_readers;
    std::vector<std::unique_ptr<Root>> m_roots;
    std::unique_ptr<Listed> m_listed;
    QTimer* m_listTimer;
    int m_listSeconds = 2;
    int m_treeSeconds = 10;
};

} // namespace nebra
