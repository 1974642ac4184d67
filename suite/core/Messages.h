#pragma once

#include <QObject>
#include <QString>

#include <functional>

namespace nebra {

// Icons and buttons of a modal message box. The values equal those of
// QMessageBox so that the widget layer converts them with a cast.
enum class MessageIcon
{
    NoIcon = 0,
    Information = 1,
    Warning = 2,
    Critical = 3,
    Question = 4
};

namespace MessageButton {
enum : int
{
    NoButton = 0,
    Ok = 0x00000400,
    Yes = 0x00004000,
    No = 0x00010000,
    Cancel = 0x00400000
};
}

struct MessageRequest
{
    QString text;
    QString title; // empty: the application's title
    MessageIcon icon = MessageIcon::NoIcon;
    int buttons = MessageButton::Ok;
    int defaultButton = MessageButton::NoButton;
    QObject* owner = nullptr; // the window the box belongs to, if any
    QString details = {};     // shown on request below the text ("Show Details..."); empty: none
};

// The one seam through which every modal message box of the suite is shown.
// The widget layer installs a handler that shows a real QMessageBox; tests
// install one that records the request and answers it. Code that needs no
// widgets can ask the user through this class all the same.
class Messages
{
public:
    using Handler = std::function<int(const MessageRequest&)>;

    // Shows the box and returns the button pressed. An empty title is
    // replaced by the application title before the handler sees it. Without
    // a handler the text goes to standard error and the default button (or
    // Ok) is the answer.
    static int show(MessageRequest request);

    // Installs a handler and returns the one it replaces.
    static Handler setHandler(Handler handler);

    // The title used for boxes that give none ("the application's title").
    static void setApplicationTitle(const QString& title);
    static QString applicationTitle();
};

} // namespace nebra
