#include "ShellCommands.h"
#include "MessageRecorder.h"

#include <QDesktopServices>
#include <QtTest>

using namespace nebra;

// Receives the addresses the desktop would open.
class UrlReceiver : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> urls;
public Q_SLOTS:
    void open(const QUrl& url) { urls << url; }
};

class ShellCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aboutAndTheMakersPageWithAndWithoutABrowser()
    {
        test::MessageRecorder messages;
        QWidget window;
        ShellCommands::ShowAbout(&window, QStringLiteral("Tallyo Organiser"));
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().title, QStringLiteral("About Tallyo Organiser"));
        for (const QString& part : QStringList{"Tallyo Organiser", "Version " NEBRA_VERSION, qVersion()})
            QVERIFY2(messages.last().text.contains(part), qPrintable(messages.last().text));
        QCOMPARE(messages.last().owner, &window);

        UrlReceiver receiver;
        QDesktopServices::setUrlHandler(QStringLiteral("https"), &receiver, "open");
        ShellCommands::OpenMakerPage();
        QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
        // The maker's page opens in the desktop's browser, once.
        QCOMPARE(receiver.urls.size(), 1);
        QCOMPARE(receiver.urls.first().scheme(), QStringLiteral("https"));
        QCOMPARE(messages.count(), 1);

        // With no browser to start, the command says so and gives the address.
        QTemporaryDir empty;
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(empty.path()));
        ShellCommands::OpenMakerPage();
        qputenv("PATH", path);
        QCOMPARE(messages.count(), 2);
        QCOMPARE(messages.last().title, QStringLiteral("Quorvix on the Web"));
        QCOMPARE(messages.last().text, ShellCommands::noBrowserText());
        QVERIFY(messages.last().text.contains(QLatin1String(ShellCommands::MakerPageAddress)));
    }
};

QTEST_MAIN(ShellCommandsTest)
#include "ShellCommandsTest.moc"
