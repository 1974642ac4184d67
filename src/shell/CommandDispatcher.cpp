#include "CommandDispatcher.h"

#include "ToolBarsControl.h"
#include "ToolDefinitions.h"
#include "UserActivity.h"

namespace nebra {

CommandDispatcher::CommandDispatcher(ToolBarsControl& tools, UserActivity& activity, QObject* parent)
    : QObject(parent), m_tools(tools), m_activity(activity)
{
    for (const CommandId id : commandIds())
        m_tools.setToolEnabled(ToolDefinitions::toolId(id), false);
}

QList<CommandId> CommandDispatcher::commandIds()
{
    using enum CommandId;
    return {New,        Open,         Run,         Options,       ChangePassword, LogOut,
            Exit,       About,        HelpContext, ContentsIndex, GettingStarted, Quorvix,
            AuditTrail, AcceptChange, Sign};
}

void CommandDispatcher::setCommand(CommandId id, Command command)
{
    Q_ASSERT_X(commandIds().contains(id), "CommandDispatcher::setCommand", "not a command");
    const bool enabled = bool(command);
    m_commands[std::size_t(id)] = std::move(command);
    m_tools.setToolEnabled(ToolDefinitions::toolId(id), enabled);
}

bool CommandDispatcher::hasCommand(CommandId id) const
{
    return bool(m_commands[std::size_t(id)]);
}

void CommandDispatcher::perform(std::optional<CommandId> id)
{
    m_activity.note();
    // A copy: a command may change the commands (a log-out takes the audit trail's away).
    if (const Command command = id ? m_commands[std::size_t(*id)] : Command(); command)
        command();
    m_activity.note();
}

void CommandDispatcher::run(CommandId id)
{
    perform(id);
}

void CommandDispatcher::ToolClick(const QString& toolId)
{
    perform(ToolDefinitions::commandOfTool(toolId));
}

void CommandDispatcher::TreeButtonClick(int key)
{
    perform(ToolDefinitions::commandOfTreeButton(key));
}

} // namespace nebra
