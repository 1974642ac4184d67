#pragma once

#include "FolderChange.h"
#include "FolderChangeSource.h"
#include "FolderPoller.h"
#include "FolderReaders.h"
#include "MountTable.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace nebra {

// What the change notifications act on: the folder tree's branch operations
// and path rules, the file list and the preview pane. Each is a hook so that
// the notifications need nothing else of the main window; an empty hook
// answers false (or does nothing).
struct NotificationTargets
{
    std::function<bool(const QString&)> IsThisFolderANebraFolder;
    std::function<bool(const QString&)> IsThisCurrentFolder;
    std::function<bool(const QString&)> IsThisFileInCurrentFolder;
    std::function<bool(const QString&)> AddExplorerBranch;
    std::function<bool(const QString&)> RemoveExplorerBranch;
    std::function<bool(const QString&, const QString&)> RenameExplorerBranch;
    std::function<void()> GoToOrganiserNode;
    std::function<void()> refreshFileList;
    std::function<int()> fileListItemCount;
    std::function<void()> previewCurrentItem; // of the file list
};

// Keeps the folder tree in step with folders made, removed and renamed on
// disk by other programs, and the file list with the files of its folder.
//
// Activation opens the kernel's change source (failure: the critical box
// "Unable to successfully subclass &H" with the main window's id in
// hexadecimal, and the tree then never follows the disk during the run) and
// then watches the folders below the watched roots (failure: silent, the
// source stays open). Only when both succeed are notifications active; the
// watches are added on a reader thread, so a root that cannot be watched
// ends the activation when that walk is done (FolderChangeSource::watched).
// Termination stops watching and closes the source. The changes are handled
// on the main thread, one at a time.
//
// Which roots the kernel follows is the watch mode's choice: with Auto a
// root on a file server (by the mount table's type) is polled instead
// (FolderPoller), and its changes come as the same four kinds of change, so
// that the tree's logic is the same; so is a share mounted below a local
// root, which the kernel's source leaves alone.
// The folder the file list shows is polled on a file server too.
class ShellNotifications : public QObject
{
    Q_OBJECT
public:
    explicit ShellNotifications(QObject* parent = nullptr);

    void setTargets(NotificationTargets targets) { m_targets = std::move(targets); }
    // The folders watched, with their subfolders: the parent folder of the data folders.
    void setWatchedRoots(std::function<QStringList()> roots) { m_roots = std::move(roots); }
    // The main window's id, for the start failure's message.
    void setWindowId(std::function<quintptr()> windowId) { m_windowId = std::move(windowId); }
    // Notify (the default) leaves every root to the kernel.
    void setWatchMode(FolderWatchMode mode, int listSeconds, int treeSeconds);
    // The folder the file list shows and its filter, polled on a file server.
    void setListedFolder(const QString& folder, const QString& filter);
    // Watches the roots again (after the parent folder of the data folders changed).
    void rewatch();

    void ActivateSHCNENotification();
    void TerminateSHCNENotification();
    bool isActive() const { return m_active; }

    // One change: up to two items (a rename has both; an absent item keeps
    // the fields it had) and the event code.
    void NotificationReceipt(const std::optional<QString>& item1, const std::optional<QString>& item2,
                             quint32 event);
    void NotificationReceipt2(quint32 event);
    // Refreshes the file list and previews its current item, only the first
    // time: the flag that guards it is never cleared. The file list follows
    // its own folder besides, so it does not go stale.
    void RefreshCurrentFileList();

    // The name of the event code's constant ("SHCNE_MKDIR"), empty for an unknown code.
    static QString GetShellEventName(quint32 code);

    // The last received items, and the description of the last event (kept for diagnostics).
    QString item1DisplayName() const { return m_item1Name; }
    QString item1Path() const { return m_item1Path; }
    QString item2DisplayName() const { return m_item2Name; }
    QString item2Path() const { return m_item2Path; }
    QString lastEventText() const { return m_eventText; }

    FolderChangeSource& source() { return m_source; }
    FolderPoller& poller() { return m_poller; }

private:
    bool SubclassForNotifications();
    bool RegisterShellNotifications();
    void showWatchLimitWarning(int limit);
    QStringList sharesBelow(const QStringList& roots);
    static void readItem(const std::optional<QString>& item, QString& name, QString& path);

    NotificationTargets m_targets;
    std::function<QStringList()> m_roots;
    std::function<quintptr()> m_windowId;
    FolderChangeSource m_source;
    FolderReaders m_readers;
    MountTable m_mounts;
    FolderPoller m_poller{m_readers};
    FolderWatchMode m_watchMode = FolderWatchMode::Notify;
    bool m_active = false;
    bool m_activating = false; // the activation's walk runs
    bool m_refreshGuard = false;
    QString m_item1Name;
    QString m_item1Path;
    QString m_item2Name;
    QString m_item2Path;
    QString m_eventText;
};

} // namespace nebra
