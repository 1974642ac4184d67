#pragma once

#include "OptionsDialog.h"

#include <QString>

#include <functional>
#include <memory>

class QWidget;

namespace nebra {

class Authorisation;
class DataFolders;
class FileView;
class FolderTreeControl;
class HelpSystem;
class InstalledDrivers;
class OrganiserTree;
class PaneSetup;
class PreviewPane;
class SuitePaths;
class SuiteSettings;

// What the Options command reads and changes.
struct OptionsCommandParts
{
    SuiteSettings& settings;
    SuitePaths& paths;
    DataFolders& folders;
    InstalledDrivers& drivers;
    const Authorisation& authorisation;
    HelpSystem& help;
    FolderTreeControl& tree;
    OrganiserTree& organiser;
    FileView& fileView;
    PreviewPane& preview;
    const PaneSetup& panes;
    QWidget& owner; // of the dialog
    // Moves the change notifications' watches to a new parent directory.
    std::function<void()> watchParentDirectory;
};

// The main window's Options command: shows the Options dialog (made once,
// kept hidden between showings) and, after OK, applies the view options and
// follows a changed parent directory with the tree. The preview is refreshed
// and the folder followed only for a node whose document type follows the
// options (the document type table's followsOptions).
class OptionsCommand
{
public:
    explicit OptionsCommand(OptionsCommandParts parts);
    ~OptionsCommand();

    void ShowOptions();
    // Destroys the dialog (the window's shutdown, a forced log-out).
    void Unload();

private:
    std::unique_ptr<OptionsDialog> createDialog();
    void applyPreview(bool follows);
    void applyShortcuts();
    void followParentDirectory(const QString& oldParent, bool follows, const QString& oldFolder);
    void refreshPreview();

    OptionsCommandParts m_parts;
    std::unique_ptr<OptionsDialog> m_dialog;
};

} // namespace nebra
