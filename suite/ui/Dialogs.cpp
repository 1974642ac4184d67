#include "Dialogs.h"

#include "Messages.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>

#include <algorithm>

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
    place(dialog);
    if (const Handler& handler = handlerSlot())
        return handler(dialog);
    return dialog.exec();
}

void Dialogs::place(QWidget& window)
{
    QWidget* owner = window.parentWidget() ? window.parentWidget()->window() : QApplication::activeWindow();
    if (owner == &window || (owner && !owner->isVisible()))
        owner = nullptr;
    QScreen* screen = owner ? owner->screen() : window.screen();
    if (!screen)
        return;
    const QRect available = screen->availableGeometry();
    window.ensurePolished();
    // A window never shown and never resized takes its size hint when shown; one resized keeps its size.
    const QSize wanted = window.testAttribute(Qt::WA_Resized)
                             ? window.size().expandedTo(window.minimumSizeHint())
                             : window.sizeHint();
    // Room for the frame the window manager adds.
    const QSize size = wanted.boundedTo(available.size() - QSize(16, 48));
    window.resize(size);
    QRect frame(QPoint(), size + QSize(0, 32));
    frame.moveCenter(owner ? owner->frameGeometry().center() : available.center());
    const int x = std::clamp(frame.left(), available.left(),
                             std::max(available.left(), available.right() - frame.width()));
    const int y = std::clamp(frame.top(), available.top(),
                             std::max(available.top(), available.bottom() - frame.height()));
    window.move(x, y);
}

void Dialogs::nameButtons(QDialogButtonBox& box)
{
    for (QAbstractButton* button : box.buttons())
        button->setAccessibleName(button->text().remove(QLatin1Char('&')));
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
