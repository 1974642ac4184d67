#pragma once

#include <QList>
#include <QUrl>
#include <QWidget>

class QWebEngineLoadingInfo;
class QWebEngineView;

namespace nebra {

// The embedded browser: an HTML view with the operations the Organiser uses.
// Dropped files are never accepted, and pages run no script of their own
// (the program's own scripts run in the application's world).
//
// Navigations the program asks for (Navigate, Refresh) always proceed. A
// navigation that the page starts itself (a link click, a form, a script) is
// first announced by BeforeNavigate2, whose handler may cancel it; a
// cancelled navigation changes nothing on screen and is followed by a
// CommandStateChange, so that a handler can act on the page's ready state.
class BrowserControl : public QWidget
{
    Q_OBJECT
public:
    // Ready states, as the Organiser polls them.
    enum ReadyState
    {
        Uninitialised = 0,
        Loading = 1,
        Loaded = 2,
        Interactive = 3,
        Complete = 4
    };

    // The program's own link scheme: pages link to commands as "organiser:\Run a protocol".
    static constexpr const char* OrganiserScheme = "organiser";
    // Registers OrganiserScheme with the web engine. Must run before the QApplication is created.
    static void RegisterOrganiserScheme();

    // Upper bound of WaitUntilComplete, so that no wait can hang the program.
    static constexpr int DefaultWaitLimitMs = 10000;

    // When the web engine starts: at once, or at StartEngine() (or the first
    // call that needs a page), so that a window can be painted before the
    // engine's processes are started.
    enum class EngineStart
    {
        Immediately,
        Deferred
    };

    explicit BrowserControl(QWidget* parent = nullptr, EngineStart start = EngineStart::Immediately);

    // Creates the web view; a navigation asked for before then is loaded now.
    // Does nothing once the engine has started.
    void StartEngine();
    bool engineStarted() const { return m_view != nullptr; }

    // Before the engine has started, the address is kept and loaded when it
    // starts; the ready state is Loading meanwhile.
    void Navigate(const QUrl& url);
    // Reloads the page shown; does nothing before the first navigation.
    void Refresh();
    int ReadyState() const { return m_readyState; }
    QUrl LocationURL() const;

    // Lets the event loop run until the ready state is Complete or the limit
    // has passed; true when the page is complete. Returns at once when it
    // already is. Starts the engine if it has not started yet.
    bool WaitUntilComplete(int limitMs = DefaultWaitLimitMs);

    // The web view (the engine is started for it if it has not been).
    QWebEngineView* view();

Q_SIGNALS:
    // A navigation started by the page; set cancel to stop it. Connect directly.
    void BeforeNavigate2(const QUrl& url, bool& cancel);
    // A navigation (not a refresh) has finished, successfully or with the engine's error page.
    void NavigateComplete2(const QUrl& url);
    // A navigation or a refresh has finished.
    void DocumentComplete(const QUrl& url);
    // The ready state changed, or a navigation was cancelled.
    void CommandStateChange();

private:
    bool acceptNavigation(const QUrl& url, int type);
    void onLoadingChanged(const QWebEngineLoadingInfo& info);
    void advanceReadyState(int state);
    void setReadyState(int state);
    void installSchemeHandler();

    QWebEngineView* m_view = nullptr;
    QUrl m_pending; // navigated to before the engine started
    int m_readyState = Uninitialised;
    QUrl m_expected;           // the address of the load the control is waiting for
    bool m_refreshing = false; // the load in progress is a refresh
    QList<QUrl> m_cancelled;   // cancelled navigations whose start and end the engine still reports
};

} // namespace nebra
