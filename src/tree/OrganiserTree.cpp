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

#include <QStyle>

namespace nebra {

namespace {
const QString RootPath = QStringLiteral("Organiser");
const QString InstrumentKey = QString::number(toData(FolderKind::ReadConfigurations));
constexpr int FoldersGroup = 1;
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
    m_instrument = {};
    LogTrace();
    // The whole build reaches the view in one go.
    m_tree.beginUpdate();
    addRootNode();
    addBranchNodes();
    fillBranches();
    m_tree.endUpdate();
    m_tree.node(0).setDisplayFlagB(true);
    m_tree.setButtonEnabled(FolderTreeControl::BackButton, false);
    m_tree.setButtonEnabled(FolderTreeControl::ForwardButton, false);
    m_tree.setButtonEnabled(FolderTreeControl::UpButton, false);
    LogTrace();
}

void OrganiserTree::addRootNode()
{
    m_root = m_tree.addNode(m_sources.resources.LoadResString(Resources::OrganiserCaption));
    m_root.setFolderPath(RootPath);
    m_root.setData(toData(FolderKind::None));
    m_root.setDisplayFlagA(true);
    m_root.setDisplayStyle(RootStyle);
    LogTrace();
    m_root.setPage(m_sources.welcomePage ? m_sources.welcomePage() : QString());
    LogTrace();
}

void OrganiserTree::addBranchNodes()
{
    const Resources& res = m_sources.resources;
    const SuitePaths& paths = m_sources.paths;
    if (m_sources.instrumentDriversInUse) {
        const QString driver = selectedDriverName();
        if (!driver.isEmpty())
            m_instrument = addBranchNode(instrumentCaption(driver),
                                         paths.ReadConfigurationsFolder() + QLatin1Char('/') + driver,
                                         FolderKind::ReadConfigurations);
    }
    LogTrace();
    m_layouts = addBranchNode(res.LoadResString(Resources::LayoutsCaption), paths.LayoutsFolder(),
                              FolderKind::Layouts);
    m_protocols = addBranchNode(res.LoadResString(Resources::ProtocolsCaption), paths.ProtocolsFolder(),
                                FolderKind::Protocols);
    LogTrace();
    AddResultsNode();
    LogTrace();
    m_reports = addBranchNode(QStringLiteral("Reports"), paths.ReportsFolder(), FolderKind::Reports);
    LogTrace();
}

void OrganiserTree::fillBranches()
{
    const SuitePaths& paths = m_sources.paths;
    if (!m_sources.settings.SuppressLayoutsBranch())
        AddSubFolderNodes(paths.LayoutsFolder(), m_layouts, FolderKind::Layouts);
    if (m_instrument.isValid())
        AddSubFolderNodes(m_instrument.folderPath(), m_instrument, FolderKind::ReadConfigurations);
    LogTrace();
    AddSubFolderNodes(paths.ResultsFolder(), m_results, FolderKind::Results);
    AddSubFolderNodes(paths.ProtocolsFolder(), m_protocols, FolderKind::Protocols);
    AddSubFolderNodes(paths.ReportsFolder(), m_reports, FolderKind::Reports);
    LogTrace();
}

FolderNode OrganiserTree::addBranchNode(const QString& caption, const QString& path, FolderKind kind,
                                        int position)
{
    FolderTreeModel& nodes = m_tree.nodes();
    const FolderNode node =
        position < 0 ? nodes.addNode(m_root, caption) : nodes.insertNode(m_root, position, caption);
    node.setFolderPath(path);
    node.setData(toData(kind));
    node.setDisplayFlagA(true);
    node.setDisplayStyle(BranchStyle);
    node.setDisplayFlagB(true);
    node.setColour(m_list.colour());
    return node;
}

void OrganiserTree::AddResultsNode()
{
    m_results = addBranchNode(m_sources.resources.LoadResString(Resources::ResultsCaption),
                              m_sources.paths.ResultsFolder(), FolderKind::Results);
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
        return m_sources.resources.LoadResString(Resources::InstrumentDataCaption);
    return driverName;
}

void OrganiserTree::AddSubFolderNodes(const QString& folderPath, const FolderNode& parentNode,
                                      FolderKind kind)
{
    m_branches.AddSubFolderNodes(folderPath, parentNode, kind);
}

void OrganiserTree::RecreateResultsNode()
{
    if (!m_results.isValid())
        return;
    m_tree.beginUpdate();
    m_tree.nodes().removeChildren(m_results);
    AddSubFolderNodes(m_sources.paths.ResultsFolder(), m_results, FolderKind::Results);
    m_tree.endUpdate();
}

bool OrganiserTree::DoesPathAlreadyExistInTree(const QString& path) const
{
    return m_branches.DoesPathAlreadyExistInTree(path);
}

bool OrganiserTree::AddExplorerBranch(const QString& path)
{
    return m_branches.AddExplorerBranch(path);
}

bool OrganiserTree::RemoveExplorerBranch(const QString& path)
{
    return m_branches.RemoveExplorerBranch(path);
}

bool OrganiserTree::RenameExplorerBranch(const QString& oldPath, const QString& newPath)
{
    return m_branches.RenameExplorerBranch(oldPath, newPath);
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
    if (!m_root.isValid())
        return;
    const QString driver = selectedDriverName();
    const bool wasCurrent = m_instrument.isValid() && m_tree.currentNode() == m_instrument;
    int position = 0;
    if (m_instrument.isValid()) {
        position = m_tree.nodes().indexOf(m_instrument).row();
        m_tree.removeNode(m_instrument);
    }
    m_instrument =
        addBranchNode(caption, m_sources.paths.ReadConfigurationsFolder() + QLatin1Char('/') + driver,
                      FolderKind::ReadConfigurations, position);
    AddSubFolderNodes(m_instrument.folderPath(), m_instrument, FolderKind::ReadConfigurations);
    addInstrumentShortcut(caption);
    if (wasCurrent)
        m_tree.setCurrentNode(m_instrument);
}

void OrganiserTree::addInstrumentShortcut(const QString& caption)
{
    if (m_shortcuts.groupCount() <= FoldersGroup)
        return;
    m_instrumentShortcut = m_shortcuts.itemIndex(FoldersGroup, InstrumentKey);
    if (m_instrumentShortcut >= 0) {
        m_shortcuts.setItemCaption(FoldersGroup, m_instrumentShortcut, caption);
        return;
    }
    // After the Organiser item, where start-up puts it.
    m_instrumentShortcut = m_shortcuts.insertItem(FoldersGroup, 1, caption, InstrumentKey);
    m_shortcuts.setItemIcon(FoldersGroup, m_instrumentShortcut, StyleIcons::icon(QStyle::SP_DriveHDIcon));
}

FolderNode OrganiserTree::nodeForKind(FolderKind kind) const
{
    switch (kind) {
    case FolderKind::None:
        return m_root;
    case FolderKind::ReadConfigurations:
        return m_instrument;
    case FolderKind::Layouts:
        return m_layouts;
    case FolderKind::Protocols:
        return m_protocols;
    case FolderKind::Results:
        return m_results;
    case FolderKind::Reports:
        return m_reports;
    }
    return {};
}

} // namespace nebra
