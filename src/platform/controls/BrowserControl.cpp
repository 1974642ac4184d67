#include "BrowserControl.h"

#include "BrowserPage.h"
#include "OrganiserSchemeHandler.h"

#include <QEventLoop>
#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>
#include <QWebEngineLoadingInfo>
#include <QWebEngineProfile>
#include <QWebEngineSettings>
#include <QWebEngineUrlScheme>
#include <QWebEngineView>

namespace nebra {

void BrowserControl::RegisterOrganiserScheme()
{
    const QByteArray name(OrganiserScheme);
    if (!QWebEngineUrlScheme::schemeByName(name).name().isEmpty())
        return;
    QWebEngineUrlScheme scheme(name);
    // No authority: everything after the colon is the command's path, backslash included.
    scheme.setSyntax(QWebEngineUrlScheme::Syntax::Path);
    // Deliberately no LocalScheme flag: a page loaded from a file may link to it.
    QWebEngineUrlScheme::registerScheme(scheme);
}

BrowserControl::BrowserControl(QWidget* parent, EngineStart start) : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    setAcceptDrops(false);
    setAccessibleName(QStringLiteral("Preview pane"));
    if (start == EngineStart::Immediately)
        StartEngine();
}

void BrowserControl::StartEngine()
{
    if (m_view)
        return;
    m_view = new QWebEngineView(this);
    layout()->addWidget(m_view);
    m_view->setPage(new BrowserPage(
        [this](const QUrl& url, QWebEnginePage::NavigationType type) { return acceptNavigation(url, type); },
        m_view));
    m_view->setAcceptDrops(false);
    m_view->setAccessibleName(QStringLiteral("Preview"));
    // No page runs a script of its own: none of the suite's pages needs one,
    // and a page from elsewhere (a welcome page of the user's choosing, a
    // document's preview) must not act by itself. Scripts of the program run
    // in a world of their own, which this leaves alone.
    m_view->page()->settings()->setAttribute(QWebEngineSettings::JavascriptEnabled, false);
    installSchemeHandler();
    connect(m_view->page(), &QWebEnginePage::loadingChanged, this, &BrowserControl::onLoadingChanged);
    connect(m_view, &QWebEngineView::loadProgress, this, [this](int progress) {
        if (m_readyState != Complete && progress > 0 && progress < 100)
            advanceReadyState(Interactive);
    });
    connect(m_view, &QWebEngineView::urlChanged, this, [this](const QUrl&) {
        if (m_readyState == Loading)
            advanceReadyState(Loaded);
    });
    if (!m_pending.isEmpty())
        m_view->load(std::exchange(m_pending, QUrl()));
}

QWebEngineView* BrowserControl::view()
{
    StartEngine();
    return m_view;
}

void BrowserControl::installSchemeHandler()
{
    // Without a handler the engine blocks links to the scheme before the
    // control hears of them; the handler itself is never asked for a page.
    QWebEngineProfile* profile = m_view->page()->profile();
    const QByteArray name(OrganiserScheme);
    if (QWebEngineUrlScheme::schemeByName(name).name().isEmpty()) {
        qWarning("The \"%s:\" link scheme was not registered before the application started; "
                 "links to commands will not work.",
                 OrganiserScheme);
        return;
    }
    if (!profile->urlSchemeHandler(name))
        profile->installUrlSchemeHandler(name, new OrganiserSchemeHandler(profile));
}

void BrowserControl::Navigate(const QUrl& url)
{
    m_expected = url;
    m_refreshing = false;
    setReadyState(Loading);
    if (m_view)
        m_view->load(url);
    else
        m_pending = url;
}

void BrowserControl::Refresh()
{
    // Nothing loaded yet: nothing to refresh, and no load to wait for (a
    // navigation waiting for the engine loads the newest page anyway).
    if (!m_view || m_view->url().isEmpty())
        return;
    m_expected = m_view->url();
    m_refreshing = true;
    setReadyState(Loading);
    m_view->triggerPageAction(QWebEnginePage::Reload);
}

QUrl BrowserControl::LocationURL() const
{
    return m_view ? m_view->url() : QUrl();
}

bool BrowserControl::acceptNavigation(const QUrl& url, int type)
{
    // Typed and reload navigations are the program's own (Navigate, Refresh).
    if (type == QWebEnginePage::NavigationTypeTyped || type == QWebEnginePage::NavigationTypeReload)
        return true;
    // Counted as cancelled while the handler decides: a handler that shows a
    // modal box lets the engine report this navigation's start meanwhile, and
    // that start must not make the page look as if it were loading again
    // (what waits for a complete page would then wait for ever).
    m_cancelled.append(url);
    bool cancel = false;
    Q_EMIT BeforeNavigate2(url, cancel);
    if (!cancel) {
        m_cancelled.removeOne(url);
        m_expected = url;
        m_refreshing = false;
        return true;
    }
    // After the handler has returned, as the page's command state may have changed.
    QMetaObject::invokeMethod(this, &BrowserControl::CommandStateChange, Qt::QueuedConnection);
    return false;
}

void BrowserControl::onLoadingChanged(const QWebEngineLoadingInfo& info)
{
    const bool finished = info.status() != QWebEngineLoadingInfo::LoadStartedStatus;
    if (const qsizetype i = m_cancelled.indexOf(info.url()); i >= 0) {
        // The engine reports a cancelled navigation as a load that failed; it changed nothing.
        if (finished)
            m_cancelled.removeAt(i);
        return;
    }
    if (!finished) {
        if (m_readyState == Complete || m_readyState == Uninitialised)
            setReadyState(Loading);
        return;
    }
    // A load overtaken by a newer navigation ends while the newer one is still on its way.
    if (info.url() != m_expected && m_view->page()->isLoading())
        return;
    const bool wasRefresh = m_refreshing;
    m_refreshing = false;
    setReadyState(Complete);
    if (!wasRefresh)
        Q_EMIT NavigateComplete2(info.url());
    Q_EMIT DocumentComplete(info.url());
}

void BrowserControl::advanceReadyState(int state)
{
    if (state > m_readyState)
        setReadyState(state);
}

void BrowserControl::setReadyState(int state)
{
    if (state == m_readyState)
        return;
    m_readyState = state;
    Q_EMIT CommandStateChange();
}

bool BrowserControl::WaitUntilComplete(int limitMs)
{
    if (m_readyState == Complete)
        return true;
    StartEngine();
    QPointer<BrowserControl> self(this);
    QEventLoop loop;
    QTimer limit;
    limit.setSingleShot(true);
    connect(&limit, &QTimer::timeout, &loop, &QEventLoop::quit);
    connect(this, &BrowserControl::CommandStateChange, &loop, [this, &loop] {
        if (m_readyState == Complete)
            loop.quit();
    });
    connect(this, &QObject::destroyed, &loop, &QEventLoop::quit);
    limit.start(limitMs);
    loop.exec();
    return self && m_readyState == Complete;
}

} // namespace nebra
