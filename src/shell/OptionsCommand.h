#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace nebra {

class OptionsDialog;
class SuitePaths;
class SuiteSettings;

// What the Options command changes in the main window.
struct OptionsCommandHooks
{
    // Makes the dialog, on the command's first use.
    std::function<std::unique_ptr<OptionsDialog>()> createDialog;
    std::function<void(bool shown)> showShortcutsBar;
    std::function<void(bool shown)> showPreviewPane;
    // Shows the selected node's page or document in the preview pane again.
    std::function<void()> refreshPreview;
    // The selected tree node's folder kind and folder path.
    std::function<int()> selectedKind;
    std::function<QString()> selectedFolder;
    std::function<void()> rebuildTree;
    // Selects the node of the folder; a folder not in the tree selects nothing.
    std::function<void(const QString& folder)> selectFolder;
};

// The main window's Options command: shows the Options dialog (made once,
// kept hidden between showings) and, after OK, applies the view options and
// follows a changed parent directory with the tree.
class OptionsCommand
{
public:
    OptionsCommand(SuiteSettings& settings, SuitePaths& paths, OptionsCommandHooks hooks);
    ~OptionsCommand();

    void ShowOptions();
    // Destroys the dialog (the window's shutdown, a forced log-out).
    void Unload();
    OptionsDialog* dialog() const { return m_dialog.get(); }

    // The kinds whose preview and selection follow the options: the root,
    // layouts, protocols and results.
    static bool FollowsOptions(int kind);

private:
    void applyPreview(int kind);
    void applyShortcuts();
    void followParentDirectory(const QString& oldParent, int kind, const QString& oldFolder);

    SuiteSettings& m_settings;
    SuitePaths& m_paths;
    OptionsCommandHooks m_hooks;
    std::unique_ptr<OptionsDialog> m_dialog;
};

} // namespace nebra
