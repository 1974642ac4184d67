#include "OrganiserTree.h"

#include "DiagnosticLog.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"
#include "Globals.h"
#include "HLDCollection.h"
#include "Resources.h"
#include "ShortcutsBar.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "TreePathRules.h"

#include <QApplication>
#include <QStyle>

namespace nebra {

namespace {
const QString RootPath = QStringLiteral("Organiser");
const QString InstrumentKey = QStringLiteral("1");
constexpr int FoldersGroup = 1;
} // namespace

OrganiserTree::OrganiserTree(FolderTreeControl& tree, FileListControl& list, ShortcutsBar& shortcuts,
                             Globals& globals)
    : m_tree(tree), m_list(list), m_shortcuts(shortcuts), m_globals(globals),
      m_branches(tree.nodes(), [&list] { return list.colour(); })
{
}

void OrganiserTree::InitialiseOrganiserTree()
{
    LogTraceBlock();
    m_tree.setCaption(m_globals.resources->LoadResString(Resources::TreeCaption));
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
    m_root = m_tree.addNode(m_globals.resources->LoadResString(Resources::OrganiserCaption));
    m_root.setFolderPath(RootPath);
    m_root.setData(0);
    m_root.setDisplayFlagA(true);
    m_root.setDisplayStyle(RootStyle);
    LogTrace();
    m_root.setPage(welcomePageFile());
    LogTrace();
}

void OrganiserTree::addBranchNodes()
{
    const Resources& res = *m_globals.resources;
    const SuitePaths& paths = *m_globals.paths;
    if (m_globals.InstrumentDriversInUse) {
        const QString driver = selectedDriverName();
        if (!driver.isEmpty())
            m_instrument = addBranchNode(instrumentCaption(driver),
                                         paths.ReadConfigurationsFolder() + QLatin1Char('/') + driver, 1);
    }
    LogTrace();
    m_layouts = addBranchNode(res.LoadResString(Resources::LayoutsCaption), paths.LayoutsFolder(), 2);
    m_protocols = addBranchNode(res.LoadResString(Resources::ProtocolsCaption), paths.ProtocolsFolder(), 3);
    LogTrace();
    AddResultsNode();
    LogTrace();
    m_reports = addBranchNode(QStringLiteral("Reports"), paths.ReportsFolder(), 5);
    LogTrace();
}

void OrganiserTree::fillBranches()
{
    const SuitePaths& paths = *m_globals.paths;
    if (!m_globals.settings->SuppressLayoutsBranch())
        AddSubFolderNodes(paths.LayoutsFolder(), m_layouts, 2);
    if (m_instrument.isValid())
        AddSubFolderNodes(m_instrument.folderPath(), m_instrument, 1);
    LogTrace();
    AddSubFolderNodes(paths.ResultsFolder(), m_results, 4);
    AddSubFolderNodes(paths.ProtocolsFolder(), m_protocols, 3);
    AddSubFolderNodes(paths.ReportsFolder(), m_reports, 5);
    LogTrace();
}

FolderNode OrganiserTree::addBranchNode(const QString& caption, const QString& path, int kind, int position)
{
    FolderTreeModel& nodes = m_tree.nodes();
    const FolderNode node =
        position < 0 ? nodes.addNode(m_root, caption) : nodes.insertNode(m_root, position, caption);
    node.setFolderPath(path);
    node.setData(kind);
    node.setDisplayFlagA(true);
    node.setDisplayStyle(BranchStyle);
    node.setDisplayFlagB(true);
    node.setColour(m_list.colour());
    return node;
}

void OrganiserTree::AddResultsNode()
{
    m_results = addBranchNode(m_globals.resources->LoadResString(Resources::ResultsCaption),
                              m_globals.paths->ResultsFolder(), 4);
}

// The stored driver index is put right when it names no installed driver.
QString OrganiserTree::selectedDriverName() const
{
    const HLDCollection& drivers = m_globals.drivers();
    if (drivers.Count() == 0)
        return {};
    SuiteSettings& settings = *m_globals.settings;
    int index = settings.CurrentHLD();
    if (index < 1 || index > drivers.Count()) {
        index = 1;
        settings.SetCurrentHLD(index);
    }
    return drivers.Item(index).FullName;
}

QString OrganiserTree::instrumentCaption(const QString& driverName) const
{
    if (m_globals.settings->InstrumentFlags() & InstrumentCaptionFlag)
        return m_globals.resources->LoadResString(Resources::InstrumentDataCaption);
    return driverName;
}

QString OrganiserTree::welcomePageFile() const
{
    if (m_welcomePage)
        return m_welcomePage();
    const SuiteSettings& settings = *m_globals.settings;
    const QString programFolder = m_globals.paths->SuiteDataFolder();
    if (!settings.OrganiserFile().isEmpty()) {
        const QString folder = settings.PageFolder().isEmpty() ? programFolder : settings.PageFolder();
        return folder + QLatin1Char('/') + settings.OrganiserFile();
    }
    return programFolder + (settings.UseAlternativeWelcomePage() ? QStringLiteral("/Organiser2.mht")
                                                                 : QStringLiteral("/Organiser.mht"));
}

void OrganiserTree::AddSubFolderNodes(const QString& folderPath, const FolderNode& parentNode, int kind)
{
    m_branches.AddSubFolderNodes(folderPath, parentNode, kind);
}

void OrganiserTree::RecreateResultsNode()
{
    if (!m_results.isValid())
        return;
    m_tree.beginUpdate();
    m_tree.nodes().removeChildren(m_results);
    AddSubFolderNodes(m_globals.paths->ResultsFolder(), m_results, 4);
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
    return TreePathRules::IsThisFolderANebraFolder(path, m_globals.paths->ParentDirectory());
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
    m_instrument = addBranchNode(
        caption, m_globals.paths->ReadConfigurationsFolder() + QLatin1Char('/') + driver, 1, position);
    AddSubFolderNodes(m_instrument.folderPath(), m_instrument, 1);
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
    m_shortcuts.setItemIcon(FoldersGroup, m_instrumentShortcut,
                            QApplication::style()->standardIcon(QStyle::SP_DriveHDIcon));
}

FolderNode OrganiserTree::nodeForKind(int kind) const
{
    switch (kind) {
    case 0:
        return m_root;
    case 1:
        return m_instrument;
    case 2:
        return m_layouts;
    case 3:
        return m_protocols;
    case 4:
        return m_results;
    case 5:
        return m_reports;
    default:
        return {};
    }
}

} // namespace nebra
