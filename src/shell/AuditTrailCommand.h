#pragma once

#include <QObject>
#include <QPointer>

class QWidget;

namespace nebra {

class AuditTrailWindow;
class Authorisation;
class CommandDispatcher;
class CommandSwitches;
class SecuritySession;
class ToolBarsControl;

// Tools > Audit Trail...: opens the audit trail viewer for a user with the
// right "Security"/"ViewAuditTrail", recording the opening. The command
// belongs to a security session: it is hidden without one, offered to every
// user of a session (whether they may use it is asked when they do), and
// taken away again when the session ends.
class AuditTrailCommand : public QObject
{
    Q_OBJECT
public:
    struct Parts
    {
        CommandDispatcher& commands;
        CommandSwitches& switches;
        ToolBarsControl& tools; // for the Tools menu
        SecuritySession& session;
        Authorisation& authorisation;
        QWidget& owner; // of the viewer
    };

    // Hides the command.
    explicit AuditTrailCommand(Parts parts, QObject* parent = nullptr);

    void hide();
    void offer();
    void ShowAuditTrail();
    // Closes the open viewer, if any.
    void close();

private:
    void setMenuShown(bool shown);

    Parts m_parts;
    QPointer<AuditTrailWindow> m_viewer;
};

} // namespace nebra
