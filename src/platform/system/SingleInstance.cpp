#include "SingleInstance.h"

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>

#include <unistd.h>

namespace nebra {

namespace {

constexpr int ConnectTimeoutMs = 2000;
constexpr int LockTimeoutMs = 10000;
const QByteArray ActivateRequest = "activate\n";

QString runtimeFolder()
{
    QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (folder.isEmpty() || !QDir(folder).exists())
        folder = QDir::tempPath() + QStringLiteral("/nebra-") + QString::number(getuid());
    else
        folder += QStringLiteral("/nebra");
    QDir().mkpath(folder);
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    return folder;
}

} // namespace

SingleInstance::SingleInstance(const QString& name, QObject* parent)
    : QObject(parent), m_socketPath(runtimeFolder() + QLatin1Char('/') + name + QStringLiteral(".socket"))
{
}

SingleInstance::~SingleInstance() = default;

bool SingleInstance::IsAnotherInstanceRunning()
{
    QLockFile lock(m_socketPath + QStringLiteral(".lock"));
    lock.setStaleLockTime(LockTimeoutMs);
    lock.tryLock(LockTimeoutMs); // without the lock the check still works, only less strictly

    auto socket = std::make_unique<QLocalSocket>();
    socket->connectToServer(m_socketPath);
    if (socket->waitForConnected(ConnectTimeoutMs)) {
        m_previous = std::move(socket);
        return true;
    }

    // Nobody answers: a socket file left by a crashed instance is stale.
    QLocalServer::removeServer(m_socketPath);
    m_server = std::make_unique<QLocalServer>();
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server.get(), &QLocalServer::newConnection, this, &SingleInstance::onNewConnection);
    m_server->listen(m_socketPath);
    return false;
}

void SingleInstance::ActivatePreviousInstance()
{
    if (!m_previous)
        return;
    m_previous->write(ActivateRequest);
    m_previous->waitForBytesWritten(ConnectTimeoutMs);
    m_previous->disconnectFromServer();
}

void SingleInstance::onNewConnection()
{
    while (QLocalSocket* client = m_server->nextPendingConnection()) {
        connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
        connect(client, &QLocalSocket::readyRead, this, [this, client] {
            if (client->canReadLine() && client->readLine() == ActivateRequest)
                Q_EMIT activationRequested();
        });
    }
}

} // namespace nebra
