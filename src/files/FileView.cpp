#include "FileView.h"

#include "CommandSwitches.h"
#include "FileListControl.h"
#include "FolderReaders.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"
#include "Messages.h"
#include "RenameExtensionRule.h"
#include "StyleIcons.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace nebra {

namespace {
const QString DateModifiedColumn = QStringLiteral("Date Modified");
} // namespace

FileView::FileView(FolderTreeControl& tree, FileListControl& list, CommandSwitches& commands,
                   const SuiteSettings& settings, const SuitePaths& paths, bool instrumentDriversInUse,
                   SortByColumnTimer::Clock clock, QObject* parent)
    : QObject(parent), m_tree(tree), m_list(list), m_commands(commands), m_settings(settings), m_paths(paths),
      m_instrumentDriversInUse(instrumentDriversInUse),
      m_sortTimer([this] { showSelectionAfterSort(); }, std::move(clock)), m_readers(new FolderReaders(this))
{
}

void FileView::connectEvents()
{
    connect(&m_tree, &FolderTreeControl::nodeSelected, this, &FileView::ShowFolder);
    connect(&m_list, &FileListControl::columnAboutToBeShown, this, &FileView::OnColumnAboutToBeShown);
    connect(&m_list, &FileListControl::columnHeaderClicked, this, &FileView::OnColumnHeaderClicked);
    connect(&m_list, &FileListControl::selectionChanged, this, &FileView::OnSelectionChanged);
    connect(&m_list, &FileListControl::itemActivated, this, &FileView::OnItemActivated);
    connect(&m_list, &FileListControl::beforeItemRenamed, this, &FileView::OnBeforeItemRenamed);
    connect(&m_list, &FileListControl::itemRenamed, this, &FileView::OnItemRenamed);
    connect(&m_list, &FileListControl::itemAdded, this, &FileView::OnItemAdded);
    connect(&m_list, &FileListControl::itemRemoved, this, &FileView::OnItemRemoved);
    connect(&m_list, &FileListControl::listed, this, &FileView::onListed);
    connect(&m_list, &FileListControl::waiting, this, [this] {
        if (m_clearPreview)
            m_clearPreview(false);
    });
}

void FileView::setPreviewHandlers(ShowPreview show, ClearPreview clear)
{
    m_showPreview = std::move(show);
    m_clearPreview = std::move(clear);
}

const DocumentTypeDescription& FileView::selectedType() const
{
    return DocumentTypes::of(m_tree.currentNode().data());
}

void FileView::ShowFolder(const FolderNode& node)
{
    const DocumentTypeDescription& type = DocumentTypes::of(node.data());
    const QString filter = QLatin1String(type.filter);
    if (!filter.isEmpty() && !type.filterAfterListing)
        m_list.setFilter(filter);
    if (*type.typeCaption)
        m_currentDocumentTypeName = QLatin1String(type.typeCaption);
    if (type.listsFolder) {
        m_list.setDocumentIcon(StyleIcons::document(QLatin1String(type.documentIcon)));
        m_listingComplete = false;
        m_pendingDocument.clear();
        m_list.setFolder(node.folderPath());
        if (type.filterAfterListing)
            m_list.setFilter(filter);
    }
    UpdateDocumentCommands();
}

// The rest of ShowFolder, once the listing it asked for has arrived (later
// listings of the same folder keep their selection and take no step here),
// then the document ShowDocument waits for.
void FileView::onListed()
{
    if (!m_listingComplete) {
        m_listingComplete = true;
        m_list.sortByColumn(DateModifiedColumn);
        if (const int count = m_list.itemCount(); count >= 1) {
            const FileListItem newest = m_list.item(count);
            newest.ensureVisible();
            newest.setSelected(true);
        } else if (m_clearPreview) {
            m_clearPreview(false);
        }
        UpdateDocumentCommands();
    }
    if (!m_pendingDocument.isEmpty())
        selectDocument(std::exchange(m_pendingDocument, QString()));
}

void FileView::UpdateDocumentCommands()
{
    bool singleFile = false;
    if (m_list.selectedCount() == 1)
        singleFile = m_list.firstSelectedItem().attributes(FileListItem::FolderAttribute) == 0;
    const DocumentTypeDescription& type = selectedType();
    for (const CommandId id : {CommandId::New, CommandId::Open, CommandId::Run}) {
        const DocumentCommandEntry& entry = *type.command(id);
        bool enabled = entry.availability == CommandAvailability::On;
        if (entry.availability == CommandAvailability::SingleFile)
            enabled = singleFile;
        else if (entry.availability == CommandAvailability::Unchanged)
            continue;
        // Without a wizard to start, New cannot make a protocol.
        if (entry.launch.starts == DocumentLaunch::Starts::NewProtocolWizard && !m_canCreateProtocol)
            enabled = false;
        m_commands.setCommandEnabled(id, enabled);
    }
}

// A folder the tree has no node for yet may be among the branches it is
// still reading: asked again once they have arrived.
bool FileView::waitForTree(const QString& folder, const std::function<void()>& again)
{
    if (!m_tree.isBusy() || m_tree.nodes().findFolderPath(folder).isValid())
        return false;
    connect(&m_tree, &FolderTreeControl::idle, this, again, Qt::SingleShotConnection);
    return true;
}

void FileView::selectFolder(const QString& folder)
{
    if (waitForTree(folder, [this, folder] { selectFolder(folder); }))
        return;
    const FolderNode node = m_tree.nodes().findFolderPath(folder);
    if (node.isValid())
        m_tree.setCurrentNode(node);
}

void FileView::ShowDocument(const QString& path)
{
    const QString folder = QFileInfo(path).absolutePath();
    if (waitForTree(folder, [this, path] { ShowDocument(path); }))
        return;
    selectFolder(folder);
    if (QDir::cleanPath(m_tree.currentNode().folderPath()).compare(folder, Qt::CaseInsensitive) != 0) {
        documentGone(path);
        return;
    }
    // Whether the document is still there is the listing's to say, not the disk's.
    if (!m_listingComplete || m_list.isListing())
        m_pendingDocument = path;
    else
        selectDocument(path);
}

void FileView::selectDocument(const QString& path)
{
    const QString wanted = QDir::cleanPath(path);
    for (int i = 1; i <= m_list.itemCount(); ++i) {
        const FileListItem item = m_list.item(i);
        if (!item.isFolder() && QDir::cleanPath(item.path()) == wanted) {
            for (const FileListItem& selected : m_list.selectedItems())
                selected.setSelected(false);
            item.ensureVisible();
            item.setSelected(true);
            return;
        }
    }
    documentGone(path);
}

void FileView::documentGone(const QString& path)
{
    Messages::show({tr("The document cannot be shown: it is no longer in a folder of the Organiser.\n\n%1")
                        .arg(QDir::toNativeSeparators(path)),
                    tr("Recent Documents"), MessageIcon::Information, MessageButton::Ok, MessageButton::Ok,
                    &m_list});
}

void FileView::OnColumnAboutToBeShown(const QString& name, bool& show)
{
    if (name == QLatin1String("Size") || name == QLatin1String("Type"))
        show = false;
}

void FileView::OnColumnHeaderClicked(const QString&)
{
    m_sortTimer.Arm();
}

void FileView::showSelectionAfterSort()
{
    const int count = m_list.itemCount();
    for (int i = 1; i <= count; ++i) {
        const FileListItem item = m_list.item(i);
        if (item.isSelected())
            item.ensureVisible();
    }
}

void FileView::OnSelectionChanged(const FileListItem&)
{
    const DocumentTypeDescription& type = selectedType();
    if (!type.listsFolder)
        return;
    // Read afresh: the Options dialog may have changed it.
    const bool previewOn = m_settings.ShowPreviewPane();
    if (previewOn && (type.previewedWithoutDrivers || m_instrumentDriversInUse)) {
        if (m_list.selectedCount() == 1) {
            if (m_showPreview)
                m_showPreview(m_list.firstSelectedItem());
        } else if (m_clearPreview) {
            m_clearPreview(false);
        }
    }
    UpdateDocumentCommands();
}

void FileView::OnItemActivated(const FileListItem& item, bool& handled)
{
    if (!item.attributes(FileListItem::FolderAttribute))
        return; // a file: the list's own default action applies
    const FolderNode selected = m_tree.currentNode();
    for (int i = 0; i < selected.childCount(); ++i) {
        const FolderNode child = selected.child(i);
        if (child.folderPath().compare(item.path(), Qt::CaseInsensitive) == 0) {
            m_tree.setCurrentNode(child);
            break;
        }
    }
    handled = true;
}

void FileView::OnBeforeItemRenamed(const FileListItem& item, const QString& newName, bool& cancel)
{
    if (newName.isEmpty() || item.attributes(FileListItem::FolderAttribute))
        return;
    if (!RenameExtensionRule::IsRefused(m_list.filter(), newName, item.name(), item.path()))
        return;
    Messages::show({RenameExtensionRule::Message, RenameExtensionRule::Title, MessageIcon::Warning,
                    MessageButton::Ok, MessageButton::Ok, &m_list});
    cancel = true;
}

void FileView::OnItemRenamed(const FileListItem& item, const QString& oldPath)
{
    if (!item.isFolder())
        renamePreviewFile(oldPath, item.path());
}

// The preview page of a renamed document follows it. A protocol's preview
// shows the protocol's name, so it is dropped and made again by the assay
// application; other previews are renamed unless the new name is taken.
// On a reader thread: the preview may be on a server that does not answer.
void FileView::renamePreviewFile(const QString& oldPath, const QString& newPath)
{
    const QString preview = m_paths.PreviewFileFor(oldPath);
    const QString newPreview = m_paths.PreviewFileFor(newPath);
    if (preview == oldPath || newPreview == newPath)
        return;
    const bool drop = oldPath.endsWith(QLatin1String(".apr"), Qt::CaseInsensitive);
    const auto follow = [preview, newPreview, drop] {
        if (!QFileInfo::exists(preview))
            return true;
        if (drop)
            return QFile::remove(preview);
        return QFileInfo::exists(newPreview) || QFile::rename(preview, newPreview);
    };
    m_readers->read(preview, FolderReaders::Lane::User, this, follow, [this, preview](bool done) {
        if (done)
            return;
        Messages::show(
            {QStringLiteral("The file: \r\n%1\r\ndoes not appears to be a valid Assay Protocol file and "
                            "cannot be opened.")
                 .arg(QFileInfo(preview).fileName()),
             {},
             MessageIcon::Critical,
             MessageButton::Ok,
             MessageButton::Ok,
             &m_list});
    });
}

// Subfolders that appear in or vanish from the list keep the tree in step,
// but not while the list is being pointed at another folder, and only while
// it shows the selected node's own folder.
FolderNode FileView::trackedChild(const FileListItem& item, bool& tracked) const
{
    const FolderNode selected = m_tree.currentNode();
    tracked = m_listingComplete && item.isFolder() && selected.folderPath() == m_list.folder();
    if (!tracked)
        return {};
    const QString name = QFileInfo(item.path()).fileName();
    for (int i = 0; i < selected.childCount(); ++i)
        if (selected.child(i).text().compare(name, Qt::CaseInsensitive) == 0)
            return selected.child(i);
    return {};
}

void FileView::OnItemAdded(const FileListItem& item)
{
    bool tracked = false;
    if (!trackedChild(item, tracked).isValid() && tracked)
        Q_EMIT folderAppeared(item.path());
}

void FileView::OnItemRemoved(const FileListItem& item)
{
    bool tracked = false;
    if (const FolderNode child = trackedChild(item, tracked); child.isValid())
        Q_EMIT folderVanished(child.folderPath());
}

} // namespace nebra
