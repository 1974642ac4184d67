#include "OptionsCommand.h"

#include "OptionsDialog.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

namespace nebra {

OptionsCommand::OptionsCommand(SuiteSettings& settings, SuitePaths& paths, OptionsCommandHooks hooks)
    : m_settings(settings), m_paths(paths), m_hooks(std::move(hooks))
{
}

OptionsCommand::~OptionsCommand() = default;

bool OptionsCommand::FollowsOptions(int kind)
{
    return kind <= 0 || kind == 2 || kind == 3 || kind == 4;
}

void OptionsCommand::ShowOptions()
{
    const QString oldParent = m_paths.ParentDirectory();
    const int kind = m_hooks.selectedKind ? m_hooks.selectedKind() : 0;
    const QString oldFolder = m_hooks.selectedFolder ? m_hooks.selectedFolder() : QString();
    if (!m_dialog && m_hooks.createDialog)
        m_dialog = m_hooks.createDialog();
    if (!m_dialog || !m_dialog->run())
        return;
    applyPreview(kind);
    applyShortcuts();
    followParentDirectory(oldParent, kind, oldFolder);
}

void OptionsCommand::applyPreview(int kind)
{
    const bool shown = m_dialog->ShowPreviewChecked();
    if (shown == m_settings.ShowPreviewPane())
        return;
    m_settings.SetShowPreviewPane(shown);
    if (m_hooks.showPreviewPane)
        m_hooks.showPreviewPane(shown);
    if (FollowsOptions(kind) && m_hooks.refreshPreview)
        m_hooks.refreshPreview();
}

void OptionsCommand::applyShortcuts()
{
    const bool shown = m_dialog->ShowShortcutsChecked();
    if (shown == m_settings.ShowShortcuts())
        return;
    m_settings.SetShowShortcuts(shown);
    if (m_hooks.showShortcutsBar)
        m_hooks.showShortcutsBar(shown);
}

void OptionsCommand::followParentDirectory(const QString& oldParent, int kind, const QString& oldFolder)
{
    const QString newParent = m_paths.ParentDirectory();
    if (newParent == oldParent)
        return;
    if (m_hooks.rebuildTree)
        m_hooks.rebuildTree();
    // The same place under the new parent: a folder outside the old parent
    // (the root's "Organiser") has no counterpart there.
    if (FollowsOptions(kind) && oldFolder.startsWith(oldParent) && m_hooks.selectFolder)
        m_hooks.selectFolder(newParent + oldFolder.mid(oldParent.size()));
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
