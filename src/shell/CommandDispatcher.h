#pragma once

#include <QHash>
#include <QObject>
#include <QStringList>

#include <functional>

namespace nebra {

// The one handler of every menu and tool-bar click: it restarts the security
// session's inactivity period, runs the command of the tool's ID (compared
// exactly) and restarts the period again once the command has returned, so
// that a command that shows a modal dialog counts the dialog's closing as
// activity. IDs without a command do nothing but the two restarts.
class CommandDispatcher : public QObject
{
    Q_OBJECT
public:
    using Command = std::function<void()>;

    explicit CommandDispatcher(std::function<void()> resetTimeOut, QObject* parent = nullptr);

    // The IDs that lead to a command, in the order they are tested.
    static QStringList commandIds();

    // Sets the command behind one of commandIds(); other IDs are refused.
    bool setCommand(const QString& id, Command command);

    void ToolClick(const QString& id);

private:
    std::function<void()> m_resetTimeOut;
    QHash<QString, Command> m_commands;
};

} // namespace nebra
