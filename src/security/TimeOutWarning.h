#pragma once

#include <QDialog>

#include <functional>

class QLabel;
class QPushButton;
class QTimer;

namespace nebra {

// The warning a security session gives before it times out: a window that
// does not block the program, counting the seconds down, with "Stay logged
// in" (which counts as activity and restarts the time-out) and "Log out
// now". It only ever warns: when the countdown ends the session's own
// time-out ends the session, and any activity elsewhere that restarts the
// time-out closes the warning.
class TimeOutWarning : public QDialog
{
    Q_OBJECT
public:
    struct Hooks
    {
        std::function<qint64()> remainingMs; // time left before the time-out
        std::function<void()> stay;          // restarts the time-out, as any command does
        std::function<void()> logOut;        // the session's log-out
    };

    TimeOutWarning(Hooks hooks, qint64 warningMs, QWidget* parent = nullptr);

    // Shows the warning with the time left now.
    void warn();
    QString countdownText() const;
    QPushButton* stayButton() const { return m_stay; }
    QPushButton* logOutButton() const { return m_logOut; }

    static QString title() { return QStringLiteral("Session Time-Out"); }

private:
    void update();

    Hooks m_hooks;
    qint64 m_warningMs;
    QLabel* m_text;
    QPushButton* m_stay;
    QPushButton* m_logOut;
    QTimer* m_tick;
};

} // namespace nebra
