#include "CommandDispatcher.h"

#include "ToolBarsControl.h"

namespace nebra {

CommandDispatcher::CommandDispatcher(ToolBarsControl& tools, std::function<void()> resetTimeOut,
                                     QObject* parent)
    : QObject(parent), m_tools(tools), m_resetTimeOut(std::move(resetTimeOut))
{
    for (const QString& id : commandIds())
        m_tools.setToolEnabled(id, false);
}

QStringList CommandDispatcher::commandIds()
{
    return {QStringLiteral("ID_New"),
            QStringLiteral("ID_Open"),
            QStringLiteral("ID_Run"),
            QStringLiteral("ID_Options"),
            QStringLiteral("ID_ChangePassword"),
            QStringLiteral("ID_LogOut"),
            QStringLiteral("ID_Exit"),
            QStringLiteral("ID_About"),
            QStringLiteral("ID_HelpContext"),
            QStringLiteral("ID_ContentsIndex"),
            QStringLiteral("ID_GettingStarted"),
            QStringLiteral("ID_Quorvix"),
            QStringLiteral("ID_AuditTrail")};
}

bool CommandDispatcher::setCommand(const QString& id, Command command)
{
    if (!commandIds().contains(id))
        return false;
    const bool enabled = bool(command);
    m_commands.insert(id, std::move(command));
    m_tools.setToolEnabled(id, enabled);
    return true;
}

bool CommandDispatcher::hasCommand(const QString& id) const
{
    const auto it = m_commands.constFind(id);
    return it != m_commands.cend() && *it;
}

void CommandDispatcher::ToolClick(const QString& id)
{
    m_resetTimeOut();
    // The IDs are distinct, so the first match of the ordered test is the only match.
    if (const auto it = m_commands.constFind(id); it != m_commands.cend() && *it)
        (*it)();
    m_resetTimeOut();
}

} // namespace nebra
