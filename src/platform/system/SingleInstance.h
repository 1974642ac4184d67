#pragma once

#include <QObject>
#include <QString>

#include <memory>

class QLocalServer;
class QLocalSocket;

namespace nebra {

// One running instance per user. The first instance listens on a local socket
// in the user's runtime folder; a later one finds it there, asks it to
// restore and raise its window, and ends. A lock file makes the check and the
// start of listening one step, so two instances started at the same moment
// still leave exactly one.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    explicit SingleInstance(const QString& name, QObject* parent = nullptr);
    ~SingleInstance() override;

    // True when an earlier instance runs. Otherwise this instance becomes the
    // one that later instances find.
    bool IsAnotherInstanceRunning();

    // Asks the earlier instance to restore and raise its window. Failures are ignored.
    void ActivatePreviousInstance();

    QString socketPath() const { return m_socketPath; }

Q_SIGNALS:
    // A later instance asked this one to show itself.
    void activationRequested();

private:
    void onNewConnection();

    QString m_socketPath;
    std::unique_ptr<QLocalServer> m_server;
    std::unique_ptr<QLocalSocket> m_previous;
};

} // namespace nebra
