#include "UserActivity.h"

#include <QCoreApplication>
#include <QEvent>

namespace nebra {

UserActivity::UserActivity(QObject* parent) : QObject(parent)
{
    // On the application, so that input to every window is seen, those made
    // later (dialogs, the help window) and the web engine's view included.
    if (QCoreApplication* app = QCoreApplication::instance())
        app->installEventFilter(this);
}

UserActivity::~UserActivity()
{
    if (QCoreApplication* app = QCoreApplication::instance())
        app->removeEventFilter(this);
}

void UserActivity::note()
{
    Q_EMIT activity();
}

bool UserActivity::eventFilter(QObject* watched, QEvent* event)
{
    // Moving the pointer over the window is not using it; a click or a key is.
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        note();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace nebra
