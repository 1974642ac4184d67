#pragma once

#include "ToolBarsControl.h"

#include <QList>

namespace nebra {

// The main window's tools, menus and tool bar.
namespace ToolDefinitions {

// Every tool, in definition order, with category and tip text.
QList<ToolDefinition> tools();

// The menu bar: each menu tool with the IDs of its items (ToolBarsControl::Separator between groups).
QList<QPair<ToolDefinition, QStringList>> menus();

// The items of the tool bar.
QStringList toolBarItems();

} // namespace ToolDefinitions
} // namespace nebra
