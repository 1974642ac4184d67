#include "OrganiserSchemeHandler.h"

#include <QWebEngineUrlRequestJob>

namespace nebra {

void OrganiserSchemeHandler::requestStarted(QWebEngineUrlRequestJob* job)
{
    job->fail(QWebEngineUrlRequestJob::RequestDenied);
}

} // namespace nebra
