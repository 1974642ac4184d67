// The main window's Options command and the showing, hiding and placing of
// its panes.

#include "MainWindow.h"

#include "Authorisation.h"
#include "DataFolders.h"
#include "FileListControl.h"
#include "FileView.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"
#include "HLDCollection.h"
#include "HelpSystem.h"
#include "InstalledDrivers.h"
#include "OptionsCommand.h"
#include "OptionsDialog.h"
#include "OrganiserTree.h"
#include "PanesGeometry.h"
#include "PreviewPane.h"
#include "ShortcutsBar.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

#include <QResizeEvent>
#include <QStatusBar>

namespace nebra {

void MainWindow::createOptionsCommand()
{
    OptionsCommandHooks hooks;
    hooks.createDialog = [this] {
        if (!m_dataFolders)
            createDataFolders();
        OptionsDialogHooks dialog;
        dialog.freshDrivers = [this] { return m_suite.drivers->fresh(); };
        dialog.isAllowed = [this](const QString& area, const QString& operation) {
            return m_authorisation->CanPerformSecurityOperation(area, operation, false);
        };
        dialog.displayHelpContext = [this](int topic) { m_help->DisplayHelpContext(topic); };
        dialog.handleChangedHLD = [this] { HandleChangedHLD(); };
        return std::make_unique<OptionsDialog>(*m_suite.settings, *m_suite.paths, *m_dataFolders,
                                               std::move(dialog), this);
    };
    hooks.showShortcutsBar = [this](bool shown) { setShortcutsBarShown(shown); };
    hooks.showPreviewPane = [this](bool shown) { setPreviewPaneShown(shown); };
    hooks.refreshPreview = [this] { refreshPreview(); };
    hooks.selectedKind = [this] { return m_folderTree->currentNode().data(); };
    hooks.selectedFolder = [this] { return m_folderTree->currentNode().folderPath(); };
    hooks.rebuildTree = [this] {
        m_organiserTree->InitialiseOrganiserTree();
        m_folderTree->setCurrentNode(m_organiserTree->rootNode());
    };
    hooks.selectFolder = [this](const QString& folder) { selectFolder(folder); };
    m_optionsCommand = std::make_unique<OptionsCommand>(*m_suite.settings, *m_suite.paths, std::move(hooks));
}

void MainWindow::ShowOptions()
{
    resetLogOutTimeOut();
    // Made here: the settings it edits exist once the window has loaded.
    if (!m_optionsCommand)
        createOptionsCommand();
    m_optionsCommand->ShowOptions();
}

void MainWindow::HandleChangedHLD()
{
    // Without instrument drivers in use there is no instrument node to re-point.
    if (!m_organiserTree->instrumentNode().isValid())
        return;
    // A fresh collection: the catalogue may have changed since it was last read.
    const HLDCollection& drivers = m_suite.drivers->fresh();
    const int index = m_suite.settings->CurrentHLD();
    if (index < 1 || index > drivers.Count())
        return;
    m_organiserTree->SetupHLDNode(m_organiserTree->instrumentCaption(drivers.Item(index).FullName));
}

void MainWindow::setShortcutsBarShown(bool shown)
{
    m_shortcutsBar->setMode(shown ? 0 : 2);
    m_shortcutsBar->setVisible(shown);
}

void MainWindow::setPreviewPaneShown(bool shown)
{
    m_previewArea->setVisible(shown);
}

void MainWindow::refreshPreview()
{
    const FolderNode node = m_folderTree->currentNode();
    if (!m_preview || !node.isValid())
        return;
    if (node.level() == 0) {
        if (!node.page().isEmpty())
            m_preview->ShowPage(node.page());
        return;
    }
    m_fileView->OnSelectionChanged(m_fileList->firstSelectedItem());
}

void MainWindow::selectFolder(const QString& folder)
{
    const FolderTreeModel& nodes = m_folderTree->nodes();
    for (int i = 0; i < nodes.count(); ++i)
        if (nodes.node(i).folderPath().compare(folder, Qt::CaseInsensitive) == 0) {
            m_folderTree->setCurrentNode(nodes.node(i));
            return;
        }
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    applyResizeRule();
}

void MainWindow::applyResizeRule()
{
    if (isMinimized())
        return;
    QWidget* client = centralWidget();
    const PanesGeometry geometry(logicalDpiX(), logicalDpiY());
    m_panes->move(0, geometry.topPixels());
    const QStatusBar* status = statusBar();
    const int statusHeight = status->isVisible() ? status->height() : 0;
    const std::optional<QSize> size =
        geometry.panesSizePixels(frameGeometry().size(), client->width(), statusHeight);
    if (!size)
        return;
    // The rule measures the whole window; the client area below the menu and
    // tool bars can be smaller, and the panes never reach under the status bar.
    const int room = std::max(0, client->height() - geometry.topPixels());
    m_panes->resize(size->width(), std::min(size->height(), room));
}

} // namespace nebra
