#pragma once

#include <QObject>

namespace nebra {

// The one place that sees the user's activity, which keeps a security
// session from timing out: every key press and mouse click anywhere in the
// program (its windows, dialogs and the pages it shows) and every command the
// dispatcher runs. Nothing else counts: a page that navigates or reloads
// itself, a timer, a change on disk or a selection the program makes is not
// the user.
class UserActivity : public QObject
{
    Q_OBJECT
public:
    // Watches the application's input for as long as it lives.
    explicit UserActivity(QObject* parent = nullptr);
    ~UserActivity() override;

    // A command is being run or has returned.
    void note();

Q_SIGNALS:
    void activity();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace nebra
