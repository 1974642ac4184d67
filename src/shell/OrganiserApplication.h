#pragma once

#include <QApplication>

namespace nebra {

// The Organiser's application object. An error thrown by an event handler
// after start-up (a counter overflow, a log file that cannot be written)
// must not cross Qt's event loop: it is caught where the event is delivered,
// reported once in a "Run-time error: <what>" box, and the program then ends
// in order: every window is closed (the main window runs its shutdown) and
// the event loop ends with exit code 1. Later errors while it ends are
// written to the warning output only.
class OrganiserApplication : public QApplication
{
    Q_OBJECT
public:
    OrganiserApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;

    bool ending() const { return m_ending; }

private:
    void reportAndEnd(const QString& what);

    bool m_ending = false;
};

} // namespace nebra
