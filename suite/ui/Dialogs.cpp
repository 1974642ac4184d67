#include "Dialogs.h"

#include "Messages.h"

#include <QApplication>
#include <QDialog>
#include <QMessageBox>

namespace nebra {

namespace {
Dialogs::Handler& handlerSlot()
{
    static Dialogs::Handler handler;
    return handler;
}

int showMessageBox(const MessageRequest& request)
{
    QWidget* owner = qobject_cast<QWidget*>(request.owner);
    if (!owner)
        owner = QApplication::activeWindow();
    QMessageBox box(static_cast<QMessageBox::Icon>(request.icon), request.title, request.text,
                    QMessageBox::StandardButtons(request.buttons), owner);
    if (request.defaultButton != MessageButton::NoButton)
        box.setDefaultButton(static_cast<QMessageBox::StandardButton>(request.defaultButton));
    box.setDetailedText(request.details);
    box.setAccessibleName(request.title);
    return box.exec();
}
} // namespace

int Dialogs::exec(QDialog& dialog)
{
    if (const Handler& handler = handlerSlot())
        return handler(dialog);
    return dialog.exec();
}

Dialogs::Handler Dialogs::setHandler(Handler handler)
{
    Handler previous = std::move(handlerSlot());
    handlerSlot() = std::move(handler);
    return previous;
}

void Dialogs::installMessageBoxes()
{
    Messages::setHandler(&showMessageBox);
}

} // namespace nebra
