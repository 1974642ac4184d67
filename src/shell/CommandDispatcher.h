#pragma once

#include <QHash>
#include <QObject>
#include <QStringList>

#include <functional>

namespace nebra {

class ToolBarsControl;

// The one handler of every menu and tool-bar click: it restarts the security
// session's inactivity period, runs the command of the tool's ID (compared
// exactly) and restarts the period again once the command has returned, so
// that a command that shows a modal dialog counts the dialog's closing as
// activity.
//
// A tool of commandIds() is enabled exactly when it has a command: the
// dispatcher disables them all when it is made, and setCommand enables its
// tool. The drop-down menus' own IDs are not commands and are left alone.
class CommandDispatcher : public QObject
{
    Q_OBJECT
public:
    using Command = std::function<void()>;

    CommandDispatcher(ToolBarsControl& tools, std::function<void()> resetTimeOut, QObject* parent = nullptr);

    // The IDs that lead to a command, in the order they are tested.
    static QStringList commandIds();

    // Sets the command behind one of commandIds() and enables its tool;
    // other IDs are refused. An empty command disables the tool again.
    bool setCommand(const QString& id, Command command);
    bool hasCommand(const QString& id) const;

    void ToolClick(const QString& id);

private:
    ToolBarsControl& m_tools;
    std::function<void()> m_resetTimeOut;
    QHash<QString, Command> m_commands;
};

} // namespace nebra
