#include "CommandControls.h"

#include "FolderTreeControl.h"
#include "ToolBarsControl.h"
#include "ToolDefinitions.h"

namespace nebra {

CommandControls::CommandControls(ToolBarsControl& tools, FolderTreeControl& tree)
    : m_tools(tools), m_tree(tree)
{
}

void CommandControls::setCommandEnabled(CommandId command, bool enabled)
{
    if (const int key = ToolDefinitions::command(command).treeButton; key != 0)
        m_tree.setButtonEnabled(key, enabled);
    m_tools.setToolEnabled(ToolDefinitions::toolId(command), enabled);
}

void CommandControls::setCommandVisible(CommandId command, bool visible)
{
    m_tools.setToolVisible(ToolDefinitions::toolId(command), visible);
}

bool CommandControls::isCommandEnabled(CommandId command) const
{
    return m_tools.isToolEnabled(ToolDefinitions::toolId(command));
}

bool CommandControls::isCommandVisible(CommandId command) const
{
    return m_tools.isToolVisible(ToolDefinitions::toolId(command));
}

} // namespace nebra
