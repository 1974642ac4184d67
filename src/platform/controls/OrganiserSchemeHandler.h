#pragma once

#include <QWebEngineUrlSchemeHandler>

namespace nebra {

// Stands behind the program's own link scheme ("organiser:"), whose links
// name commands rather than pages. The browser control cancels every such
// navigation before it is requested, so a request that still arrives here is
// refused: the scheme never yields a page.
class OrganiserSchemeHandler : public QWebEngineUrlSchemeHandler
{
    Q_OBJECT
public:
    using QWebEngineUrlSchemeHandler::QWebEngineUrlSchemeHandler;

    void requestStarted(QWebEngineUrlRequestJob* job) override;
};

} // namespace nebra
