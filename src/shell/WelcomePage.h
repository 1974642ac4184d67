#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QObject;
class QUrl;

namespace nebra {

class SuitePaths;
class SuiteSettings;

// What the welcome page's links do, given as hooks.
struct WelcomeActions
{
    std::function<int()> readyState;            // the browser's ready state, 0 to 4
    std::function<void()> selectProtocolsNode;  // makes the tree's protocols node the selected node
    std::function<void()> selectResultsNode;    // makes the tree's Results node the selected node
    std::function<void()> createProtocol;       // the create-new-protocol operation
    std::function<void()> createLayoutTemplate; // the create-new-layout-template operation
    std::function<void()> exit;                 // unloads the main window
    std::function<void(int)> openRecent;        // shows the recent document of that 0-based index
    QObject* owner = nullptr;                   // owner of the message box
};

// The welcome page on the Organiser root: the choice of the page file and
// the handling of its links. The browser never follows a link of the page:
// every navigation the page starts is cancelled, and the link's command name,
// the decoded target's text after its last "\" (links are written
// "organiser:\Run a protocol"), is compared exactly with the names below.
//
//   "Run a protocol"         pending: select the protocols node
//   "Create a new protocol"  at once: create a new protocol
//   "Create a new template"  pending: create a new layout template
//   "Analyse data"           pending: select the Results node
//   "Instrument setup"       at once: ShowOrganiserSelectionError
//   "Exit"                   pending: unload the main window
//   "Recent <n>"             at once: show the n-th recent document (only
//                            with the openRecent hook; the Organiser adds
//                            these links to the page itself)
//
// Pending commands are performed once the page is complete, in the order
// run-protocol, analyse-data, create-template, exit.
class WelcomePage
{
public:
    explicit WelcomePage(WelcomeActions actions);

    // The page file: PageFolder (or the suite's data folder) + "/" +
    // OrganiserFile when that setting is not empty; otherwise "Organiser2.mht"
    // or "Organiser.mht" in the suite's data folder, as UseAlternativeWelcomePage says.
    static QString PageFile(const SuiteSettings& settings, const SuitePaths& paths);

    static QStringList linkNames();
    // The decoded target's text after its last backslash; the whole target when it has none.
    static QString CommandName(const QUrl& target);

    // The page started a navigation (a link, a form, a script): always
    // cancelled. It is not the user's activity: the click on a link is,
    // and the program's input watch sees that.
    void WebBrowser1_BeforeNavigate2(const QUrl& target, bool& cancel);
    // Performs the pending commands when the page is complete.
    void WebBrowser1_CommandStateChange();

    void ShowOrganiserSelectionError() const;

    bool runProtocolPending() const { return m_runProtocol; }
    bool analyseDataPending() const { return m_analyseData; }
    bool createTemplatePending() const { return m_createTemplate; }
    bool exitPending() const { return m_exit; }

private:
    static void call(const std::function<void()>& action);
    void openRecent(const QString& number);

    WelcomeActions m_actions;
    bool m_runProtocol = false;
    bool m_analyseData = false;
    bool m_createTemplate = false;
    bool m_exit = false;
};

} // namespace nebra
