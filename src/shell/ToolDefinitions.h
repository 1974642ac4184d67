#pragma once

#include "CommandId.h"
#include "ToolBarsControl.h"

#include <QList>

#include <optional>
#include <span>

namespace nebra {

// The command table: every tool of the main window with its tool ID, caption,
// category, tip text and, for the commands the tree's buttons offer, the
// button's key; the menus and the tool bar that show them. Tool IDs appear
// here and nowhere else; code names a tool by its CommandId.
namespace ToolDefinitions {

struct Command
{
    CommandId id;
    const char* toolId;
    const char* caption; // "&" marks the access key
    const char* category;
    const char* tipText;
    int treeButton; // the key of the tree's button for it; 0: none
};

// Keys of the tree's buttons that are not commands (Back, Forward and Up
// are the tree control's own, FolderTreeControl::NavigationButton).
enum TreeButtonKey : int
{
    FirstSpacer = 600,
    LastSpacer = 604,
    Separator = 609,
};

// Every tool and menu, tools in definition order, then the menus.
std::span<const Command> commands();
const Command& command(CommandId id);
QString toolId(CommandId id);
// The command of a tool ID or a tree button's key; none for anything else.
std::optional<CommandId> commandOfTool(const QString& toolId);
std::optional<CommandId> commandOfTreeButton(int key);

// The tools as the tool-bar control takes them, in definition order.
QList<ToolDefinition> tools();
// The menu bar: each menu tool with the IDs of its items (ToolBarsControl::Separator between groups).
QList<QPair<ToolDefinition, QStringList>> menus();
// The items of the tool bar.
QStringList toolBarItems();

} // namespace ToolDefinitions
} // namespace nebra
