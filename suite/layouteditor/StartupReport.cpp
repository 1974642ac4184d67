#include "StartupReport.h"

#include "LayoutDocument.h"
#include "LayoutEditorWindow.h"
#include "Messages.h"

#include <QCoreApplication>
#include <QSaveFile>

namespace nebra {

StartupReport::StartupReport(const QString& path) : m_path(path)
{
    if (!isActive())
        return;
    m_previous = Messages::setHandler([this](const MessageRequest& request) {
        m_messages.append(request.text.simplified());
        return request.defaultButton != MessageButton::NoButton ? request.defaultButton
                                                                : int(MessageButton::Ok);
    });
}

StartupReport::~StartupReport()
{
    if (isActive())
        Messages::setHandler(std::move(m_previous));
}

void StartupReport::write(const LayoutEditorWindow& window, const LayoutDocument& document)
{
    // The messages scheduled at start-up run before this; those still queued are taken along.
    QCoreApplication::processEvents();
    QStringList lines{QStringLiteral("title=") + window.windowTitle(),
                      QStringLiteral("path=") + document.path(),
                      QStringLiteral("wells=%1").arg(document.layout().wellCount()),
                      QStringLiteral("name=") + document.layout().name(),
                      QStringLiteral("folder=") + document.folderRestriction(),
                      QStringLiteral("saveas=") + window.saveAsFolder()};
    for (const QString& message : std::as_const(m_messages))
        lines.append(QStringLiteral("message=") + message);
    QSaveFile file(m_path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write((lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8());
        file.commit();
    }
    QCoreApplication::quit();
}

} // namespace nebra
