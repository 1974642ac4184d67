#pragma once

#include <QList>
#include <QUrl>
#include <QWidget>

class QWebEngineLoadingInfo;
class QWebEngineView;

namespace nebra {

// The embedded browser: an HTML view with the operations the Organiser uses.
// Dropped files are never accepted.
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

    explicit BrowserControl(QWidget* parent = nullptr);

    void Navigate(const QUrl& url);
    // Reloads the page shown; does nothing before the first navigation.
    void Refresh();
    int ReadyState() const { return m_readyState; }
    QUrl LocationURL() const;

    // Lets the event loop run until the ready state is Complete or the limit
    // has passed; true when the page is complete. Returns at once when it already is.
    bool WaitUntilComplete(int limitMs = DefaultWaitLimitMs);

    QWebEngineView* view() const { return m_view; }

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

    QWebEngineView* m_view;
    int m_readyState = Uninitialised;
    QUrl m_expected;           // the address of the load the control is waiting for
    bool m_refreshing = false; // the load in progress is a refresh
    QList<QUrl> m_cancelled;   // cancelled navigations whose start and end the engine still reports
};

} // namespace nebra
