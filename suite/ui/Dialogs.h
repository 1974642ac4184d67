#pragma once

#include <functional>

class QDialog;
class QDialogButtonBox;
class QWidget;

namespace nebra {

// The seam through which every modal dialog of the suite is run, and the
// installer of real message boxes behind nebra::Messages. Tests replace the
// dialog handler to fill in and answer a dialog without a user.
class Dialogs
{
public:
    using Handler = std::function<int(QDialog&)>;

    // Places the dialog (see place()), runs it modally and returns its result
    // (QDialog::Accepted or Rejected).
    static int exec(QDialog& dialog);

    // Sizes a window to its content (a window given a size keeps it, grown to
    // what its content needs), never beyond the available area of its screen,
    // and centres it on the window it belongs to (its parent's window, else
    // the active window, else the screen), kept wholly on the screen.
    static void place(QWidget& window);

    // Names each of the box's buttons by its caption ("OK", "Cancel"), as a
    // screen reader is to say it; call once the buttons are added.
    static void nameButtons(QDialogButtonBox& box);

    // Installs a handler and returns the one it replaces; an empty handler runs dialogs for real.
    static Handler setHandler(Handler handler);

    // Makes nebra::Messages show real QMessageBox windows, owned by the
    // request's owner or the active window.
    static void installMessageBoxes();
};

} // namespace nebra
