#include "FileManager.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>

namespace nebra {

namespace {
// A file manager that is started by the call may take a moment to answer;
// longer than this and the user is better served by the plain folder.
constexpr int BusTimeoutMs = 3000;
} // namespace

FileManager::FileManager(OpenUrl openUrl) : m_openUrl(std::move(openUrl))
{
    if (!m_openUrl)
        m_openUrl = [](const QUrl& url) { return QDesktopServices::openUrl(url); };
}

bool FileManager::showItems(const QStringList& paths) const
{
    if (paths.isEmpty())
        return false;
    if (showOnBus(paths))
        return true;
    return m_openUrl(QUrl::fromLocalFile(QFileInfo(paths.first()).absolutePath()));
}

bool FileManager::showOnBus(const QStringList& paths) const
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    // Activatable services count too: the bus starts the file manager.
    QDBusConnectionInterface* busInterface = bus.interface();
    if (!busInterface)
        return false;
    const QString service = QLatin1String(Service);
    if (!busInterface->isServiceRegistered(service).value() &&
        !busInterface->activatableServiceNames().value().contains(service))
        return false;
    QStringList uris;
    for (const QString& path : paths)
        uris.append(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toString(QUrl::FullyEncoded));
    QDBusMessage call = QDBusMessage::createMethodCall(service, QLatin1String(ObjectPath), service,
                                                       QStringLiteral("ShowItems"));
    call << uris << QString(); // no start-up notification id
    const QDBusMessage reply = bus.call(call, QDBus::Block, BusTimeoutMs);
    return reply.type() == QDBusMessage::ReplyMessage;
}

} // namespace nebra
