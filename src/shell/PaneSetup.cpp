#include "PaneSetup.h"

#include "DiagnosticLog.h"
#include "DocumentTypes.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "MainWindowControls.h"
#include "PlateLayoutViewer.h"
#include "Resources.h"
#include "ShortcutsBar.h"
#include "StyleIcons.h"
#include "SuiteComponents.h"
#include "SuiteSettings.h"
#include "ToolDefinitions.h"

namespace nebra {

namespace {
constexpr int SpacedButtonsFlag = 32;

void addButton(FolderTreeControl& tree, CommandId command)
{
    const ToolDefinitions::Command& row = ToolDefinitions::command(command);
    tree.addButton(row.treeButton, QString::fromLatin1(row.caption).remove(QLatin1Char('&')));
}

void addDocumentButtons(FolderTreeControl& tree)
{
    addButton(tree, CommandId::New);
    addButton(tree, CommandId::Open);
    addButton(tree, CommandId::Run);
}

QString captionOf(const Resources& resources, const DocumentTypeDescription& type)
{
    return type.captionResource ? resources.LoadResString(type.captionResource)
                                : QLatin1String(type.captionText);
}
} // namespace

PaneSetup::PaneSetup(const MainWindowControls& controls, const SuiteComponents& suite)
    : m_controls(controls), m_suite(suite)
{
}

void PaneSetup::ApplyShortcutsBarSetting() const
{
    LogTraceBlock();
    m_controls.shortcuts.setMode(m_suite.settings->ShowShortcutsBar() ? ShortcutsBar::Mode::Shown
                                                                      : ShortcutsBar::Mode::Collapsed);
}

void PaneSetup::applyTreeDisplayMode() const
{
    FolderTreeControl& tree = m_controls.tree;
    tree.setDisplayMode(FolderTreeControl::DisplayMode::Compact);
    if (m_suite.settings->ExplorerModeFlag())
        tree.setDisplayMode(FolderTreeControl::DisplayMode::Explorer);
}

void PaneSetup::configureTreeAndFileList() const
{
    m_controls.list.addColumn(QStringLiteral("Comment"));
}

void PaneSetup::addTreeButtons() const
{
    using ToolDefinitions::Separator;
    FolderTreeControl& tree = m_controls.tree;
    tree.addButton(FolderTreeControl::BackButton, QStringLiteral("Back"));
    tree.addButton(FolderTreeControl::ForwardButton, QStringLiteral("Forward"));
    tree.addButton(FolderTreeControl::UpButton, QStringLiteral("Up"));
    if (m_suite.settings->ToolbarFlags() & SpacedButtonsFlag) {
        for (int key = ToolDefinitions::FirstSpacer; key <= ToolDefinitions::LastSpacer; ++key)
            tree.addButton(key, QStringLiteral(" "));
        addDocumentButtons(tree);
    } else {
        tree.addSeparator(Separator);
        addDocumentButtons(tree);
        tree.addSeparator(Separator);
        addButton(tree, CommandId::HelpContext);
        tree.addSeparator(Separator);
    }
    tree.setButtonEnabled(FolderTreeControl::BackButton, false);
    tree.setButtonEnabled(FolderTreeControl::ForwardButton, false);
    tree.setButtonEnabled(FolderTreeControl::UpButton, false);
}

void PaneSetup::buildShortcutsBar() const
{
    const Resources& res = *m_suite.resources;
    ShortcutsBar& bar = m_controls.shortcuts;
    const int tasks = bar.addGroup(res.LoadResString(Resources::TasksGroupCaption));
    for (const DocumentTypeDescription& type : DocumentTypes::all())
        if (type.inTasksGroup)
            bar.addItem(tasks, captionOf(res, type), type.shortcutKey());
    const int folders = bar.addGroup(res.LoadResString(Resources::FoldersGroupCaption));
    for (const DocumentTypeDescription& type : DocumentTypes::all())
        if (type.inFoldersGroup && (!type.perDriver || m_suite.instrumentDriversInUse))
            bar.addItem(folders, captionOf(res, type), type.shortcutKey());
}

void PaneSetup::SetShortcutBarIcons() const
{
    LogTraceBlock();
    ShortcutsBar& bar = m_controls.shortcuts;
    for (int group = 0; group < bar.groupCount(); ++group)
        for (int item = 0; item < bar.itemCaptions(group).size(); ++item)
            bar.setItemIcon(
                group, item,
                StyleIcons::named(QLatin1String(DocumentTypes::of(bar.itemKey(group, item).toInt()).icon)));
}

void PaneSetup::showPanes() const
{
    m_controls.plateViewer.setBkColour(QColor(0xf4, 0xf6, 0xf8));
    const SuiteSettings& settings = *m_suite.settings;
    setShortcutsBarShown(settings.ShowShortcutsBar());
    setPreviewPaneShown(settings.ShowPreviewPane());
    m_controls.tree.show();
    m_controls.list.show();
}

void PaneSetup::setShortcutsBarShown(bool shown) const
{
    m_controls.shortcuts.setMode(shown ? ShortcutsBar::Mode::Shown : ShortcutsBar::Mode::Collapsed);
    m_controls.shortcuts.setVisible(shown);
}

void PaneSetup::setPreviewPaneShown(bool shown) const
{
    m_controls.previewArea.setVisible(shown);
}

} // namespace nebra
