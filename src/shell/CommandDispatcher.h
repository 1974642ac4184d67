#pragma once

#include "CommandId.h"

#include <QList>
#include <QObject>

#include <array>
#include <functional>
#include <optional>

namespace nebra {

class ToolBarsControl;
class UserActivity;

// The one way a command runs, whether from a menu, the tool bar, a key or
// the tree's buttons: run() notes the user's activity (which restarts the
// security session's inactivity period), runs the command, and notes it
// again once the command has returned, so that a command that shows a modal
// dialog counts the dialog's closing as activity. A click on a tool or tree
// button that has no command still counts as activity.
//
// A tool of commandIds() is enabled exactly when it has a command: the
// dispatcher disables them all when it is made, and setCommand enables its
// tool. The drop-down menus and ID_HelpHelp are not commands and are left alone.
class CommandDispatcher : public QObject
{
    Q_OBJECT
public:
    using Command = std::function<void()>;

    CommandDispatcher(ToolBarsControl& tools, UserActivity& activity, QObject* parent = nullptr);

    // The commands, in the order they are tested.
    static QList<CommandId> commandIds();

    // Sets the command behind one of commandIds() and enables its tool; an
    // empty command disables the tool again.
    void setCommand(CommandId id, Command command);
    bool hasCommand(CommandId id) const;

    void run(CommandId id);
    // A click on a tool by its ID (the tool-bar control's click), or on one of
    // the tree's buttons by its key.
    void ToolClick(const QString& toolId);
    void TreeButtonClick(int key);

private:
    void perform(std::optional<CommandId> id);

    ToolBarsControl& m_tools;
    UserActivity& m_activity;
    std::array<Command, std::size_t(CommandId::HelpMenu) + 1> m_commands;
};

} // namespace nebra
