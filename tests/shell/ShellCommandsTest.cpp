#include "ShellCommands.h"
#include "CommandDispatcher.h"
#include "MainWindow.h"
#include "MessageRecorder.h"
#include "ToolBarsControl.h"
#include "UserFolders.h"

#include <QDesktopServices>
#include <QMenu>
#include <QSignalSpy>
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
    void aboutAndTheMakersPage()
    {
        test::UserFolders folders;
        test::MessageRecorder messages;
        MainWindow window;
        window.commands().ToolClick(QStringLiteral("ID_About"));
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().title, QStringLiteral("About Tallyo Organiser"));
        for (const QString& part :
             {QStringLiteral("Tallyo Organiser"), QStringLiteral("Version " NEBRA_VERSION),
              QString::fromLatin1(qVersion())})
            QVERIFY2(messages.last().text.contains(part), qPrintable(messages.last().text));
        QCOMPARE(messages.last().owner, &window);

        UrlReceiver receiver;
        QDesktopServices::setUrlHandler(QStringLiteral("https"), &receiver, "open");
        window.commands().ToolClick(QStringLiteral("ID_Quorvix"));
        QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
        QCOMPARE(receiver.urls, QList<QUrl>{QUrl(QLatin1String(ShellCommands::MakerPageAddress))});
    }

    void theMenusAnswerTheirAccessKeys_data()
    {
        QTest::addColumn<int>("menuKey");
        QTest::addColumn<QString>("menu");
        QTest::addColumn<int>("itemKey");
        QTest::addColumn<QString>("tool");
        QTest::newRow("Alt+F, X") << int(Qt::Key_F) << "ID_File" << int(Qt::Key_X) << "ID_Exit";
        QTest::newRow("Alt+H, A") << int(Qt::Key_H) << "ID_Help" << int(Qt::Key_A) << "ID_About";
    }

    void theMenusAnswerTheirAccessKeys()
    {
        QFETCH(int, menuKey);
        QFETCH(QString, menu);
        QFETCH(int, itemKey);
        QFETCH(QString, tool);
        test::UserFolders folders;
        test::MessageRecorder messages;
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QSignalSpy clicks(&window.toolBars(), &ToolBarsControl::toolClick);
        QTest::keyClick(&window, Qt::Key(menuKey), Qt::AltModifier);
        QTRY_VERIFY_WITH_TIMEOUT(window.toolBars().menu(menu)->isVisible(), 5000);
        QTest::keyClick(window.toolBars().menu(menu), Qt::Key(itemKey));
        QTRY_COMPARE_WITH_TIMEOUT(clicks.count(), 2, 5000);
        QCOMPARE(clicks.at(0).first().toString(), menu);
        QCOMPARE(clicks.at(1).first().toString(), tool);
    }
};

QTEST_MAIN(ShellCommandsTest)
#include "ShellCommandsTest.moc"
