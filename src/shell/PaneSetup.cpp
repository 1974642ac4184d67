#include "PaneSetup.h"

#include "DiagnosticLog.h"
#include "DocumentCommand.h"
#include "FileListControl.h"
#include "FolderKind.h"
#include "FolderTreeControl.h"
#include "MainWindow.h"
#include "PlateLayoutViewer.h"
#include "Resources.h"
#include "ShortcutsBar.h"
#include "StyleIcons.h"
#include "SuiteSettings.h"

#include <QStyle>

namespace nebra {

namespace {
constexpr int SpacedButtonsFlag = 32;

// Keys of the shortcuts-bar items: the folder kind of the tree node each leads to.
QString keyOf(FolderKind kind)
{
    return QString::number(toData(kind));
}
const QString OrganiserKey = keyOf(FolderKind::None);
const QString InstrumentKey = keyOf(FolderKind::ReadConfigurations);
const QString LayoutsKey = keyOf(FolderKind::Layouts);
const QString ProtocolsKey = keyOf(FolderKind::Protocols);
const QString ResultsKey = keyOf(FolderKind::Results);
const QString ReportsKey = keyOf(FolderKind::Reports);

void addDocumentButtons(FolderTreeControl& tree)
{
    tree.addButton(buttonKey(DocumentCommand::New), QStringLiteral("New"));
    tree.addButton(buttonKey(DocumentCommand::Open), QStringLiteral("Open"));
    tree.addButton(buttonKey(DocumentCommand::Run), QStringLiteral("Run"));
}

QStyle::StandardPixmap pictureForKey(const QString& key)
{
    if (key == OrganiserKey)
        return QStyle::SP_DirHomeIcon;
    if (key == InstrumentKey)
        return QStyle::SP_DriveHDIcon;
    if (key == ReportsKey)
        return QStyle::SP_FileDialogDetailedView;
    return QStyle::SP_DirIcon;
}
} // namespace

PaneSetup::PaneSetup(MainWindow& window) : m_window(window) {}

void PaneSetup::ApplyShortcutsBarSetting() const
{
    LogTraceBlock();
    m_window.shortcutsBar().setMode(m_window.suite().settings->ShowShortcutsBar() ? 0 : 2);
}

void PaneSetup::applyTreeDisplayMode() const
{
    FolderTreeControl& tree = m_window.folderTree();
    tree.setDisplayMode(1);
    if (m_window.suite().settings->ExplorerModeFlag())
        tree.setDisplayMode(2);
}

void PaneSetup::configureTreeAndFileList() const
{
    m_window.fileList().addColumn(QStringLiteral("Comment"));
}

void PaneSetup::addTreeButtons() const
{
    FolderTreeControl& tree = m_window.folderTree();
    tree.addButton(Back, QStringLiteral("Back"));
    tree.addButton(Forward, QStringLiteral("Forward"));
    tree.addButton(Up, QStringLiteral("Up"));
    if (m_window.suite().settings->ToolbarFlags() & SpacedButtonsFlag) {
        for (int key = FirstSpacer; key <= LastSpacer; ++key)
            tree.addButton(key, QStringLiteral(" "));
        addDocumentButtons(tree);
    } else {
        tree.addSeparator(Separator);
        addDocumentButtons(tree);
        tree.addSeparator(Separator);
        tree.addButton(buttonKey(DocumentCommand::Help), QStringLiteral("Help"));
        tree.addSeparator(Separator);
    }
    tree.setButtonEnabled(Back, false);
    tree.setButtonEnabled(Forward, false);
    tree.setButtonEnabled(Up, false);
}

void PaneSetup::buildShortcutsBar() const
{
    const Resources& res = *m_window.suite().resources;
    ShortcutsBar& bar = m_window.shortcutsBar();
    const int tasks = bar.addGroup(res.LoadResString(Resources::TasksGroupCaption));
    bar.addItem(tasks, res.LoadResString(Resources::OrganiserCaption), OrganiserKey);
    bar.addItem(tasks, res.LoadResString(Resources::ProtocolsCaption), ProtocolsKey);
    bar.addItem(tasks, res.LoadResString(Resources::ResultsCaption), ResultsKey);
    bar.addItem(tasks, QStringLiteral("Reports"), ReportsKey);

    const int folders = bar.addGroup(res.LoadResString(Resources::FoldersGroupCaption));
    bar.addItem(folders, res.LoadResString(Resources::OrganiserCaption), OrganiserKey);
    if (m_window.suite().instrumentDriversInUse)
        bar.addItem(folders, res.LoadResString(Resources::InstrumentDataCaption), InstrumentKey);
    bar.addItem(folders, res.LoadResString(Resources::LayoutsCaption), LayoutsKey);
    bar.addItem(folders, res.LoadResString(Resources::ProtocolsCaption), ProtocolsKey);
    bar.addItem(folders, res.LoadResString(Resources::ResultsCaption), ResultsKey);
    bar.addItem(folders, QStringLiteral("Reports"), ReportsKey);
}

void PaneSetup::SetShortcutBarIcons() const
{
    LogTraceBlock();
    ShortcutsBar& bar = m_window.shortcutsBar();
    for (int group = 0; group < bar.groupCount(); ++group)
        for (int item = 0; item < bar.itemCaptions(group).size(); ++item)
            bar.setItemIcon(group, item, StyleIcons::icon(pictureForKey(bar.itemKey(group, item))));
}

void PaneSetup::showPanes() const
{
    m_window.plateLayoutViewer().setBkColour(QColor(0xf4, 0xf6, 0xf8));
    const SuiteSettings& settings = *m_window.suite().settings;
    m_window.setShortcutsBarShown(settings.ShowShortcutsBar());
    m_window.setPreviewPaneShown(settings.ShowPreviewPane());
    m_window.folderTree().show();
    m_window.fileList().show();
}

} // namespace nebra
