#include "BrowserPage.h"

namespace nebra {

BrowserPage::BrowserPage(Filter filter, QObject* parent) : QWebEnginePage(parent), m_filter(std::move(filter))
{
}

bool BrowserPage::acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame)
{
    // Frames inside a page load with it; only the page itself is the control's business.
    if (!isMainFrame)
        return true;
    return m_filter(url, type);
}

} // namespace nebra
