#include "OrganiserTree.h"

#include "DiagnosticLog.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"
#include "HLDCollection.h"
#include "InstalledDrivers.h"
#include "Resources.h"
#include "ShortcutsBar.h"
#include "StyleIcons.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "TreePathRules.h"

namespace nebra {

namespace {
const QString RootPath = QStringLiteral("Organiser");
constexpr int FoldersGroup = 1;

const DocumentTypeDescription& instrumentType()
{
    return DocumentTypes::of(DocumentType::ReadConfigurations);
}
} // namespace

OrganiserTree::OrganiserTree(FolderTreeControl& tree, FileListControl& list, ShortcutsBar& shortcuts,
                             OrganiserTreeSources sources)
    : m_tree(tree), m_list(list), m_shortcuts(shortcuts), m_sources(std::move(sources)),
      m_branches(tree.nodes(), [&list] { return list.colour(); })
{
}

void OrganiserTree::InitialiseOrganiserTree()
{
    LogTraceBlock();
    m_tree.setCaption(m_sources.resources.LoadResString(Resources::TreeCaption));
    m_tree.clear();
    m_nodes = {};
    m_places = {};
    LogTrace();
    // The whole build reaches the view in one go.
    m_tree.beginUpdate();
    addRootNode();
    addBranchNodes();
    if (m_foldersAnswer)
        fillBranches();
    m_tree.endUpdate();
    m_tree.node(0).setDisplayFlagB(true);
    m_tree.setButtonEnabled(FolderTreeControl::BackButton, false);
    m_tree.setButtonEnabled(FolderTreeControl::ForwardButton, false);
    m_tree.setButtonEnabled(FolderTreeControl::UpButton, false);
    LogTrace();
}

QString OrganiserTree::unavailableCaption(const QString& caption)
{
    return QStringLiteral("%1 (unavailable)").arg(caption);
}

QString OrganiserTree::waitingCaption(const QString& caption)
{
    return QStringLiteral("%1 (waiting for the folder to answer)").arg(caption);
}

QString OrganiserTree::shownCaption(DocumentType type) const
{
    const QString& caption = m_places[std::size_t(toData(type))].caption;
    return m_foldersAnswer ? caption : unavailableCaption(caption);
}

// The reading keeps its order on the folder's lane; the nodes are made here,
// under the branch as it is then: gone, nothing is made; a notification that
// added a folder meanwhile keeps its node.
void OrganiserTree::fillLater(const FolderNode& branch, DocumentType type, bool replace)
{
    const QString folder = branch.folderPath();
    m_readers.read(
        folder, FolderReaders::Lane::User, nullptr, [folder] { return FolderBranches::sketch(folder); },
        [this, branch, type, replace](const FolderSketch& sketch) {
            if (branch.isValid()) {
                branch.setText(shownCaption(type));
                m_tree.beginUpdate();
                if (replace)
                    m_tree.nodes().removeChildren(branch);
                m_branches.addSketch(sketch, branch, type, branch.childCount() > 0);
                m_tree.endUpdate();
            }
            m_tree.setBusy(isFilling());
        },
        [this, branch, type] {
            if (branch.isValid())
                branch.setText(waitingCaption(shownCaption(type)));
        });
    m_tree.setBusy(true);
}

void OrganiserTree::addRootNode()
{
    const FolderNode root = m_tree.addNode(caption(DocumentType::None));
    slot(DocumentType::None) = root;
    root.setFolderPath(RootPath);
    root.setData(toData(DocumentType::None));
    root.setDisplayFlagA(true);
    root.setDisplayStyle(RootStyle);
    LogTrace();
    root.setPage(m_sources.welcomePage ? m_sources.welcomePage() : QString());
    LogTrace();
}

QString OrganiserTree::caption(DocumentType type) const
{
    const DocumentTypeDescription& row = DocumentTypes::of(type);
    return row.captionResource ? m_sources.resources.LoadResString(row.captionResource)
                               : QLatin1String(row.captionText);
}

QString OrganiserTree::folder(DocumentType type) const
{
    return (m_sources.paths.*DocumentTypes::of(type).folder)();
}

void OrganiserTree::addBranch(DocumentType type)
{
    slot(type) = addBranchNode(caption(type), folder(type), type);
}

// The branches in the tree's order, with the milestones where they have always been.
void OrganiserTree::addBranchNodes()
{
    if (m_sources.instrumentDriversInUse) {
        const QString driver = selectedDriverName();
        if (!driver.isEmpty())
            slot(DocumentType::ReadConfigurations) =
                addBranchNode(instrumentCaption(driver),
                              folder(DocumentType::ReadConfigurations) + QLatin1Char('/') + driver,
                              DocumentType::ReadConfigurations);
    }
    LogTrace();
    addBranch(DocumentType::Layouts);
    addBranch(DocumentType::Protocols);
    LogTrace();
    AddResultsNode();
    LogTrace();
    addBranch(DocumentType::Reports);
    LogTrace();
}

void OrganiserTree::fillBranches()
{
    auto fill = [this](DocumentType type) {
        if (const FolderNode branch = node(type); branch.isValid())
            fillLater(branch, type);
    };
    if (!m_sources.settings.SuppressLayoutsBranch())
        fill(DocumentType::Layouts);
    fill(DocumentType::ReadConfigurations);
    LogTrace();
    fill(DocumentType::Results);
    fill(DocumentType::Protocols);
    fill(DocumentType::Reports);
    LogTrace();
}

FolderNode OrganiserTree::addBranchNode(const QString& caption, const QString& path, DocumentType type,
                                        int position)
{
    FolderTreeModel& nodes = m_tree.nodes();
    const QString shown = m_foldersAnswer ? caption : unavailableCaption(caption);
    const FolderNode node =
        position < 0 ? nodes.addNode(rootNode(), shown) : nodes.insertNode(rootNode(), position, shown);
    node.setFolderPath(path);
    node.setData(toData(type));
    node.setDisplayFlagA(true);
    node.setDisplayStyle(BranchStyle);
    node.setDisplayFlagB(true);
    node.setColour(m_list.colour());
    m_places[std::size_t(toData(type))] = {caption, path};
    return node;
}

void OrganiserTree::AddResultsNode()
{
    addBranch(DocumentType::Results);
}

// The stored driver index is put right when it names no installed driver.
QString OrganiserTree::selectedDriverName() const
{
    const HLDCollection& drivers = m_sources.drivers.collection();
    if (drivers.Count() == 0)
        return {};
    SuiteSettings& settings = m_sources.settings;
    int index = settings.CurrentHLD();
    if (index < 1 || index > drivers.Count()) {
        index = 1;
        settings.SetCurrentHLD(index);
    }
    return drivers.Item(index).FullName;
}

QString OrganiserTree::instrumentCaption(const QString& driverName) const
{
    if (m_sources.settings.InstrumentFlags() & InstrumentCaptionFlag)
        return caption(DocumentType::ReadConfigurations);
    return driverName;
}

void OrganiserTree::AddSubFolderNodes(const QString& folderPath, const FolderNode& parentNode,
                                      DocumentType type)
{
    m_branches.AddSubFolderNodes(folderPath, parentNode, type);
}

void OrganiserTree::RecreateResultsNode()
{
    const FolderNode results = node(DocumentType::Results);
    if (results.isValid())
        fillLater(results, DocumentType::Results, true);
}

bool OrganiserTree::DoesPathAlreadyExistInTree(const QString& path) const
{
    return m_branches.DoesPathAlreadyExistInTree(path);
}

bool OrganiserTree::AddExplorerBranch(const QString& path)
{
    return m_branches.AddExplorerBranch(path) || restoreBranch(path);
}

// A branch's own folder that was removed or moved away and comes back has
// no parent node to be found under: the branch is made again in its place,
// with its sub-folders, so that its shortcut finds it again.
bool OrganiserTree::restoreBranch(const QString& path)
{
    int position = 0; // below the root, after the branches before it that are there
    for (int data = toData(DocumentType::ReadConfigurations); data < int(m_nodes.size()); ++data) {
        FolderNode& branch = m_nodes[std::size_t(data)];
        const BranchPlace& place = m_places[std::size_t(data)];
        if (!branch.isValid() && !place.folder.isEmpty() && TreePathRules::SamePath(place.folder, path)) {
            const DocumentType type = documentTypeFromData(data);
            branch = addBranchNode(place.caption, place.folder, type, position);
            fillLater(branch, type);
            return true;
        }
        position += branch.isValid() ? 1 : 0;
    }
    return false;
}

bool OrganiserTree::RemoveExplorerBranch(const QString& path)
{
    return m_branches.RemoveExplorerBranch(path);
}

bool OrganiserTree::RenameExplorerBranch(const QString& oldPath, const QString& newPath)
{
    return m_branches.RenameExplorerBranch(oldPath, newPath) || restoreBranch(newPath);
}

bool OrganiserTree::IsThisFolderANebraFolder(const QString& path) const
{
    return TreePathRules::IsThisFolderANebraFolder(path, m_sources.paths.ParentDirectory());
}

bool OrganiserTree::IsThisCurrentFolder(const QString& path) const
{
    return TreePathRules::IsThisCurrentFolder(path, m_list.folder());
}

bool OrganiserTree::IsThisFileInCurrentFolder(const QString& path) const
{
    return TreePathRules::IsThisFileInCurrentFolder(path, m_list.folder());
}

bool OrganiserTree::IsFileInFileView(const QString& fileName) const
{
    const int count = m_list.itemCount();
    for (int i = 1; i <= count; ++i)
        if (m_list.item(i).name() == fileName)
            return true;
    return false;
}

void OrganiserTree::SetupHLDNode(const QString& caption)
{
    if (!rootNode().isValid())
        return;
    const QString driver = selectedDriverName();
    FolderNode& instrument = slot(DocumentType::ReadConfigurations);
    const bool wasCurrent = instrument.isValid() && m_tree.currentNode() == instrument;
    // First below the root, where the start-up puts it, when there was none.
    int position = 0;
    if (instrument.isValid()) {
        position = m_tree.nodes().indexOf(instrument).row();
        m_tree.removeNode(instrument);
    }
    instrument = addBranchNode(caption, folder(DocumentType::ReadConfigurations) + QLatin1Char('/') + driver,
                               DocumentType::ReadConfigurations, position);
    fillLater(instrument, DocumentType::ReadConfigurations);
    addInstrumentShortcut(caption);
    if (wasCurrent)
        m_tree.setCurrentNode(instrument);
}

void OrganiserTree::HandleChangedHLD()
{
    // The instrument node exists only while the suite runs with instrument drivers.
    if (!m_sources.instrumentDriversInUse)
        return;
    // A fresh collection: the catalogue may have changed since it was last read.
    const HLDCollection& drivers = m_sources.drivers.fresh();
    const int index = m_sources.settings.CurrentHLD();
    if (index < 1 || index > drivers.Count())
        return;
    SetupHLDNode(instrumentCaption(drivers.Item(index).FullName));
}

void OrganiserTree::addInstrumentShortcut(const QString& caption)
{
    if (m_shortcuts.groupCount() <= FoldersGroup)
        return;
    const QString key = instrumentType().shortcutKey();
    m_instrumentShortcut = m_shortcuts.itemIndex(FoldersGroup, key);
    if (m_instrumentShortcut >= 0) {
        m_shortcuts.setItemCaption(FoldersGroup, m_instrumentShortcut, caption);
        return;
    }
    // After the Organiser item, where start-up puts it.
    m_instrumentShortcut = m_shortcuts.insertItem(FoldersGroup, 1, caption, key);
    m_shortcuts.setItemIcon(FoldersGroup, m_instrumentShortcut,
                            StyleIcons::named(QLatin1String(instrumentType().icon)));
}

FolderNode OrganiserTree::node(DocumentType type) const
{
    const int index = toData(type);
    if (index < 0 || index >= int(m_nodes.size()))
        return {};
    return m_nodes[std::size_t(index)];
}

} // namespace nebra
