#include "BrowserControl.h"

#include <QVBoxLayout>
#include <QWebEngineView>

namespace nebra {

BrowserControl::BrowserControl(QWidget* parent) : QWidget(parent), m_view(new QWebEngineView(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    setAcceptDrops(false);
    m_view->setAcceptDrops(false);
    m_view->setAccessibleName(QStringLiteral("Preview"));
    setAccessibleName(QStringLiteral("Preview pane"));
    connect(m_view, &QWebEngineView::loadStarted, this, [this] {
        m_readyState = Loading;
        Q_EMIT CommandStateChange();
    });
    connect(m_view, &QWebEngineView::loadFinished, this, [this](bool) {
        m_readyState = Complete;
        Q_EMIT CommandStateChange();
    });
}

void BrowserControl::Navigate(const QUrl& url)
{
    m_readyState = Loading;
    m_view->load(url);
}

void BrowserControl::Refresh()
{
    m_readyState = Loading;
    m_view->reload();
}

QUrl BrowserControl::LocationURL() const
{
    return m_view->url();
}

} // namespace nebra
