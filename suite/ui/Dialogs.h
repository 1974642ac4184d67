#pragma once

#include <functional>

class QDialog;

namespace nebra {

// The seam through which every modal dialog of the suite is run, and the
// installer of real message boxes behind nebra::Messages. Tests replace the
// dialog handler to fill in and answer a dialog without a user.
class Dialogs
{
public:
    using Handler = std::function<int(QDialog&)>;

    // Runs the dialog modally and returns its result (QDialog::Accepted or Rejected).
    static int exec(QDialog& dialog);

    // Installs a handler and returns the one it replaces; an empty handler runs dialogs for real.
    static Handler setHandler(Handler handler);

    // Makes nebra::Messages show real QMessageBox windows, owned by the
    // request's owner or the active window.
    static void installMessageBoxes();
};

} // namespace nebra
