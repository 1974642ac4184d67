#pragma once

#include <QUrl>

namespace nebra {

// What shows the user guide: the help window. HelpSystem talks to it through
// this interface so that it needs no widgets itself.
class HelpViewer
{
public:
    virtual ~HelpViewer() = default;

    // Shows the window with its table of contents and the page; true when the
    // page could be shown.
    virtual bool showContents(const QUrl& page) = 0;
    // Shows the window at the page, its navigation pane as the user left it;
    // true when the page could be shown.
    virtual bool showPage(const QUrl& page) = 0;
    // True while the window is on the screen.
    virtual bool isShown() const = 0;
    virtual void closeWindow() = 0;
};

} // namespace nebra
