#include "OrganiserApplication.h"

#include "Messages.h"

#include <QTimer>

#include <exception>

namespace nebra {

OrganiserApplication::OrganiserApplication(int& argc, char** argv) : QApplication(argc, argv) {}

bool OrganiserApplication::notify(QObject* receiver, QEvent* event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& error) {
        reportAndEnd(QString::fromLocal8Bit(error.what()));
    } catch (...) {
        reportAndEnd(QStringLiteral("Unknown error"));
    }
    return false;
}

// The report and the shutdown run from the event loop, after the handler that
// failed has been left, so that no half-finished handler runs on beneath a box.
void OrganiserApplication::reportAndEnd(const QString& what)
{
    qWarning("Run-time error: %s", qUtf8Printable(what));
    if (m_ending)
        return;
    m_ending = true;
    QTimer::singleShot(0, this, [what] {
        Messages::show(
            {QStringLiteral("Run-time error: %1").arg(what), {}, MessageIcon::Critical, MessageButton::Ok});
        closeAllWindows();
        exit(1);
    });
}

} // namespace nebra
