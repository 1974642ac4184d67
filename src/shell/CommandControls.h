#pragma once

#include "CommandSwitches.h"

namespace nebra {

class FolderTreeControl;
class ToolBarsControl;

// Commands switched on and off where the user reaches them: the tree's
// button for a command that has one first, then its tool in the menus and on
// the tool bar. Visibility concerns the tool only.
class CommandControls : public CommandSwitches
{
public:
    CommandControls(ToolBarsControl& tools, FolderTreeControl& tree);

    void setCommandEnabled(CommandId command, bool enabled) override;
    void setCommandVisible(CommandId command, bool visible) override;
    bool isCommandEnabled(CommandId command) const;
    bool isCommandVisible(CommandId command) const;

private:
    ToolBarsControl& m_tools;
    FolderTreeControl& m_tree;
};

} // namespace nebra
