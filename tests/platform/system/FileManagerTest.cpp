#include "FileManager.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <QThread>

using namespace nebra;

namespace {

// Stands in for the desktop's file manager on a private session bus.
class FakeFileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    QStringList shown;

public Q_SLOTS:
    void ShowItems(const QStringList& uris, const QString& /*startupId*/) { shown = uris; }
};

} // namespace

class FileManagerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The session bus of this process is a private one, started before the
    // first use of the bus.
    void initTestCase()
    {
        const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        if (daemon.isEmpty())
            QSKIP("dbus-daemon is not installed");
        m_bus.start(daemon, {QStringLiteral("--session"), QStringLiteral("--nofork"),
                             QStringLiteral("--print-address=1")});
        QVERIFY(m_bus.waitForReadyRead(10000));
        const QByteArray address = m_bus.readLine().trimmed();
        QVERIFY(!address.isEmpty());
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        QVERIFY(QDBusConnection::sessionBus().isConnected());
    }

    void theFileManagerOnTheBusIsAskedToSelectTheDocumentsOrTheFolderIsOpened()
    {
        QUrl opened;
        FileManager manager([&](const QUrl& url) {
            opened = url;
            return true;
        });
        QVERIFY(manager.showItems({QStringLiteral("/data/My Assays/Results/run 1.ars")}));
        QCOMPARE(opened, QUrl::fromLocalFile(QStringLiteral("/data/My Assays/Results")));
        QDBusConnection other = QDBusConnection::connectToBus(
            QString::fromLocal8Bit(qgetenv("DBUS_SESSION_BUS_ADDRESS")), QStringLiteral("file manager"));
        // The call blocks this thread, so the fake answers from a thread of its own.
        QThread thread;
        thread.start();
        FakeFileManager fake;
        fake.moveToThread(&thread);
        QVERIFY(other.registerObject(QLatin1String(FileManager::ObjectPath), &fake,
                                     QDBusConnection::ExportAllSlots));
        QVERIFY(other.registerService(QLatin1String(FileManager::Service)));
        opened.clear();
        QVERIFY(manager.showItems({QStringLiteral("/data/run #1.ars"), QStringLiteral("/data/b.ars")}));
        QVERIFY(opened.isEmpty()); // no fall-back
        QCOMPARE(fake.shown, (QStringList{QStringLiteral("file:///data/run%20%231.ars"),
                                          QStringLiteral("file:///data/b.ars")}));
        other.unregisterObject(QLatin1String(FileManager::ObjectPath));
        QDBusConnection::disconnectFromBus(QStringLiteral("file manager"));
        thread.quit();
        QVERIFY(thread.wait(5000));
    }

private:
    QProcess m_bus; // killed when the test ends
};

QTEST_GUILESS_MAIN(FileManagerTest)
#include "FileManagerTest.moc"
