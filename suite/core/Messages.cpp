#include "Messages.h"

#include <QCoreApplication>

#include <cstdio>

namespace nebra {

namespace {
Messages::Handler& handlerSlot()
{
    static Messages::Handler handler;
    return handler;
}

QString& titleSlot()
{
    static QString title;
    return title;
}
} // namespace

int Messages::show(MessageRequest request)
{
    if (request.title.isEmpty())
        request.title = applicationTitle();
    if (const Handler& handler = handlerSlot())
        return handler(request);
    std::fprintf(stderr, "%s: %s\n", qPrintable(request.title), qPrintable(request.text));
    if (!request.details.isEmpty())
        std::fprintf(stderr, "%s\n", qPrintable(request.details));
    return request.defaultButton != MessageButton::NoButton ? request.defaultButton : MessageButton::Ok;
}

Messages::Handler Messages::setHandler(Handler handler)
{
    Handler previous = std::move(handlerSlot());
    handlerSlot() = std::move(handler);
    return previous;
}

void Messages::setApplicationTitle(const QString& title)
{
    titleSlot() = title;
}

QString Messages::applicationTitle()
{
    return titleSlot().isEmpty() ? QCoreApplication::applicationName() : titleSlot();
}

} // namespace nebra
