#pragma once

#include <QWebEnginePage>

#include <functional>

namespace nebra {

// The page of the browser control: every main-frame navigation is put to a
// filter first, which decides whether it may proceed.
class BrowserPage : public QWebEnginePage
{
    Q_OBJECT
public:
    using Filter = std::function<bool(const QUrl& url, NavigationType type)>;

    BrowserPage(Filter filter, QObject* parent);

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override;

private:
    Filter m_filter;
};

} // namespace nebra
