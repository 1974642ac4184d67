#include "OptionsCommand.h"

#include "Authorisation.h"
#include "DocumentTypes.h"
#include "FileListControl.h"
#include "FileView.h"
#include "FolderTreeControl.h"
#include "HelpSystem.h"
#include "InstalledDrivers.h"
#include "OrganiserTree.h"
#include "PaneSetup.h"
#include "PreviewPane.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

namespace nebra {

OptionsCommand::OptionsCommand(OptionsCommandParts parts) : m_parts(parts) {}

OptionsCommand::~OptionsCommand() = default;

// Made on the command's first use: the settings it edits exist once the window has loaded.
std::unique_ptr<OptionsDialog> OptionsCommand::createDialog()
{
    OptionsDialogHooks hooks;
    hooks.freshDrivers = [&drivers = m_parts.drivers] { return drivers.fresh(); };
    hooks.isAllowed = [&authorisation = m_parts.authorisation](const QString& area,
                                                               const QString& operation) {
        return authorisation.CanPerformSecurityOperation(area, operation, false);
    };
    hooks.displayHelpContext = [&help = m_parts.help](int topic) { help.DisplayHelpContext(topic); };
    hooks.handleChangedHLD = [&organiser = m_parts.organiser] { organiser.HandleChangedHLD(); };
    return std::make_unique<OptionsDialog>(m_parts.settings, m_parts.paths, m_parts.folders, std::move(hooks),
                                           &m_parts.owner);
}

void OptionsCommand::ShowOptions()
{
    const QString oldParent = m_parts.paths.ParentDirectory();
    const FolderNode selected = m_parts.tree.currentNode();
    const bool follows = DocumentTypes::of(selected.data()).followsOptions;
    const QString oldFolder = selected.folderPath();
    if (!m_dialog)
        m_dialog = createDialog();
    if (!m_dialog->run())
        return;
    applyPreview(follows);
    applyShortcuts();
    followParentDirectory(oldParent, follows, oldFolder);
}

void OptionsCommand::applyPreview(bool follows)
{
    const bool shown = m_dialog->ShowPreviewChecked();
    if (shown == m_parts.settings.ShowPreviewPane())
        return;
    m_parts.settings.SetShowPreviewPane(shown);
    m_parts.panes.setPreviewPaneShown(shown);
    if (follows)
        refreshPreview();
}

// The selected node's page or document, shown in the preview pane again.
void OptionsCommand::refreshPreview()
{
    const FolderNode node = m_parts.tree.currentNode();
    if (!node.isValid())
        return;
    if (node.level() == 0) {
        if (!node.page().isEmpty())
            m_parts.preview.ShowPage(node.page());
        return;
    }
    m_parts.fileView.OnSelectionChanged({});
}

void OptionsCommand::applyShortcuts()
{
    const bool shown = m_dialog->ShowShortcutsChecked();
    if (shown == m_parts.settings.ShowShortcuts())
        return;
    m_parts.settings.SetShowShortcuts(shown);
    m_parts.panes.setShortcutsBarShown(shown);
}

void OptionsCommand::followParentDirectory(const QString& oldParent, bool follows, const QString& oldFolder)
{
    const QString newParent = m_parts.paths.ParentDirectory();
    if (newParent == oldParent)
        return;
    if (m_parts.watchParentDirectory)
        m_parts.watchParentDirectory();
    m_parts.organiser.InitialiseOrganiserTree();
    m_parts.tree.setCurrentNode(m_parts.organiser.rootNode());
    // The same place under the new parent: a folder outside the old parent
    // (the root's "Organiser") has no counterpart there.
    if (follows && oldFolder.startsWith(oldParent))
        m_parts.fileView.selectFolder(newParent + oldFolder.mid(oldParent.size()));
}

void OptionsCommand::Unload()
{
    if (!m_dialog)
        return;
    if (m_dialog->isVisible()) {
        // Still shown modally (a forced log-out): closed now, deleted once its loop has ended.
        m_dialog->reject();
        m_dialog.release()->deleteLater();
        return;
    }
    m_dialog.reset();
}

} // namespace nebra
