#include "ShellNotifications.h"

#include "DiagnosticLog.h"
#include "Messages.h"

#include "FileSystemKind.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace nebra {

namespace {

template <typename Hook, typename... Args> bool ask(const Hook& hook, const Args&... args)
{
    return hook && hook(args...);
}

template <typename Hook> void call(const Hook& hook)
{
    if (hook)
        hook();
}

} // namespace

ShellNotifications::ShellNotifications(QObject* parent) : QObject(parent)
{
    const auto receive = [this](const FolderChange& change) {
        const auto item = [](const QString& path) {
            return path.isEmpty() ? std::nullopt : std::optional(path);
        };
        NotificationReceipt(item(change.path1), item(change.path2), change.event);
    };
    connect(&m_source, &FolderChangeSource::changed, this, receive);
    connect(&m_poller, &FolderPoller::changed, this, receive);
    connect(&m_poller, &FolderPoller::listedFolderChanged, this, [this] { call(m_targets.refreshFileList); });
    connect(&m_source, &FolderChangeSource::watchLimitReached, this,
            &ShellNotifications::showWatchLimitWarning);
    connect(&m_source, &FolderChangeSource::watched, this, [this](bool allRoots) {
        if (std::exchange(m_activating, false) && !allRoots)
            m_active = false;
    });
}

void ShellNotifications::ActivateSHCNENotification()
{
    LogTraceBlock();
    if (m_active)
        return;
    if (SubclassForNotifications() && RegisterShellNotifications()) {
        m_active = true;
        m_activating = m_source.isWalking();
    }
}

void ShellNotifications::TerminateSHCNENotification()
{
    if (!m_active)
        return;
    m_poller.unwatchAll();
    m_source.unwatchAll();
    m_source.close();
    m_active = false;
    m_activating = false;
}

void ShellNotifications::setWatchMode(FolderWatchMode mode, int listSeconds, int treeSeconds)
{
    m_watchMode = mode;
    m_poller.setIntervals(listSeconds, treeSeconds);
}

void ShellNotifications::setListedFolder(const QString& folder, const QString& filter)
{
    m_poller.setListedFolder(folder, filter);
}

void ShellNotifications::rewatch()
{
    if (!m_active)
        return;
    m_poller.unwatchAll();
    m_source.unwatchAll();
    m_activating = false;
    RegisterShellNotifications();
}

// Opening the kernel's source stands where the main window's messages were
// taken over: it fails when a source is open already (a registration that
// failed earlier leaves it open) or the system refuses one.
bool ShellNotifications::SubclassForNotifications()
{
    if (m_source.open())
        return true;
    const quintptr id = m_windowId ? m_windowId() : 0;
    MessageRequest request;
    request.text = QStringLiteral("Unable to successfully subclass &H") + QString::number(id, 16).toUpper();
    request.icon = MessageIcon::Critical;
    Messages::show(request);
    return false;
}

bool ShellNotifications::RegisterShellNotifications()
{
    const QStringList roots = m_roots ? m_roots() : QStringList();
    if (roots.isEmpty())
        return false;
    if (m_watchMode == FolderWatchMode::Notify)
        return m_source.watch(roots);
    // Auto judges each root by the mount table's file system type, which
    // touches no file system, so that local disks are watched at once as ever.
    QStringList notified;
    QStringList polled;
    for (const QString& root : roots) {
        const bool kernel = m_watchMode == FolderWatchMode::Auto &&
                            FileSystemKind::isNotifiedType(m_mounts.mountOf(QFile::encodeName(root)).type);
        (kernel ? notified : polled) << root;
    }
    if (m_watchMode == FolderWatchMode::Auto)
        polled << sharesBelow(notified);
    if (!polled.isEmpty())
        m_poller.watch(polled, FolderWatchMode::Poll);
    return notified.isEmpty() || m_source.watch(notified);
}

// The kernel's source does not look into a share mounted below a local
// root (FolderChangeSource): it is polled as a root of its own.
QStringList ShellNotifications::sharesBelow(const QStringList& roots)
{
    QStringList shares;
    for (const MountTable::Mount& mount : m_mounts.mounts()) {
        if (FileSystemKind::isNotifiedType(mount.type))
            continue;
        const QString point = QFile::decodeName(mount.point);
        for (const QString& root : roots)
            if (point.startsWith(QDir::cleanPath(root) + QLatin1Char('/')))
                shares << point;
    }
    return shares;
}

void ShellNotifications::showWatchLimitWarning(int limit)
{
    MessageRequest request;
    request.text =
        QStringLiteral("The Organiser cannot follow every data folder for changes: the system's limit "
                       "of %1 folder watches (fs.inotify.max_user_watches) is reached. Folders beyond "
                       "it are checked every 30 seconds instead.\n\nTo raise the limit, run as "
                       "administrator:\n    sysctl fs.inotify.max_user_watches=524288\nand, to keep "
                       "it, put the line fs.inotify.max_user_watches=524288 in a file in "
                       "/etc/sysctl.d/.")
            .arg(limit);
    request.icon = MessageIcon::Warning;
    Messages::show(request);
}

void ShellNotifications::NotificationReceipt(const std::optional<QString>& item1,
                                             const std::optional<QString>& item2, quint32 event)
{
    m_eventText = QStringLiteral("\r\n") + GetShellEventName(event);
    readItem(item1, m_item1Name, m_item1Path);
    readItem(item2, m_item2Name, m_item2Path);
    NotificationReceipt2(event);
}

// An absent item leaves its fields as they were.
void ShellNotifications::readItem(const std::optional<QString>& item, QString& name, QString& path)
{
    if (!item)
        return;
    name = QFileInfo(*item).fileName();
    path = name.isEmpty() ? QString() : *item;
}

void ShellNotifications::NotificationReceipt2(quint32 event)
{
    const QString& path1 = m_item1Path;
    const QString& path2 = m_item2Path;
    switch (event) {
    case ShellEvent::SHCNE_UPDATEITEM:
        if (ask(m_targets.IsThisFileInCurrentFolder, path1))
            RefreshCurrentFileList();
        break;
    case ShellEvent::SHCNE_RENAMEFOLDER:
        if (ask(m_targets.IsThisFolderANebraFolder, path1)) {
            if (ask(m_targets.IsThisCurrentFolder, path1))
                call(m_targets.GoToOrganiserNode);
            ask(m_targets.RenameExplorerBranch, path1, path2);
        }
        break;
    case ShellEvent::SHCNE_MKDIR:
        if (ask(m_targets.IsThisFolderANebraFolder, path1))
            ask(m_targets.AddExplorerBranch, path1);
        break;
    case ShellEvent::SHCNE_RMDIR:
        if (ask(m_targets.IsThisFolderANebraFolder, path1)) {
            // Asked before the removal: the tree moves its selection off a
            // removed node, which points the file list elsewhere at once.
            const bool shown = ask(m_targets.IsThisCurrentFolder, path1);
            ask(m_targets.RemoveExplorerBranch, path1);
            if (shown)
                call(m_targets.GoToOrganiserNode);
        }
        break;
    default:
        break;
    }
}

void ShellNotifications::RefreshCurrentFileList()
{
    if (m_refreshGuard)
        return;
    m_refreshGuard = true;
    call(m_targets.refreshFileList);
    if (m_targets.fileListItemCount && m_targets.fileListItemCount() >= 1)
        call(m_targets.previewCurrentItem);
}

QString ShellNotifications::GetShellEventName(quint32 code)
{
    using namespace ShellEvent;
    static const QHash<quint32, QString> names{
        {SHCNE_RENAMEITEM, QStringLiteral("SHCNE_RENAMEITEM")},
        {SHCNE_CREATE, QStringLiteral("SHCNE_CREATE")},
        {SHCNE_DELETE, QStringLiteral("SHCNE_DELETE")},
        {SHCNE_MKDIR, QStringLiteral("SHCNE_MKDIR")},
        {SHCNE_RMDIR, QStringLiteral("SHCNE_RMDIR")},
        {SHCNE_MEDIAINSERTED, QStringLiteral("SHCNE_MEDIAINSERTED")},
        {SHCNE_MEDIAREMOVED, QStringLiteral("SHCNE_MEDIAREMOVED")},
        {SHCNE_DRIVEREMOVED, QStringLiteral("SHCNE_DRIVEREMOVED")},
        {SHCNE_DRIVEADD, QStringLiteral("SHCNE_DRIVEADD")},
        {SHCNE_NETSHARE, QStringLiteral("SHCNE_NETSHARE")},
        {SHCNE_NETUNSHARE, QStringLiteral("SHCNE_NETUNSHARE")},
        {SHCNE_ATTRIBUTES, QStringLiteral("SHCNE_ATTRIBUTES")},
        {SHCNE_UPDATEDIR, QStringLiteral("SHCNE_UPDATEDIR")},
        {SHCNE_UPDATEITEM, QStringLiteral("SHCNE_UPDATEITEM")},
        {SHCNE_SERVERDISCONNECT, QStringLiteral("SHCNE_SERVERDISCONNECT")},
        {SHCNE_UPDATEIMAGE, QStringLiteral("SHCNE_UPDATEIMAGE")},
        {SHCNE_DRIVEADDGUI, QStringLiteral("SHCNE_DRIVEADDGUI")},
        {SHCNE_RENAMEFOLDER, QStringLiteral("SHCNE_RENAMEFOLDER")},
        {SHCNE_FREESPACE, QStringLiteral("SHCNE_FREESPACE")},
        {SHCNE_ASSOCCHANGED, QStringLiteral("SHCNE_ASSOCCHANGED")},
        {SHCNE_DISKEVENTS, QStringLiteral("SHCNE_DISKEVENTS")},
        {SHCNE_GLOBALEVENTS, QStringLiteral("SHCNE_GLOBALEVENTS")},
        {SHCNE_ALLEVENTS, QStringLiteral("SHCNE_ALLEVENTS")},
        {SHCNE_INTERRUPT, QStringLiteral("SHCNE_INTERRUPT")},
    };
    return names.value(code);
}

} // namespace nebra
