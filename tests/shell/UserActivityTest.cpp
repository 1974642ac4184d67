#include "UserActivity.h"
#include "BrowserControl.h"
#include "TestFiles.h"
#include "WebEngineTestMain.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>

using namespace nebra;

// What counts as the user's activity, the one thing that keeps a security
// session open: a key or a click anywhere in the program; not the pointer
// passing over a window, and not a page that goes elsewhere by itself.
class UserActivityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keysAndClicksCountAndAPageGoingElsewhereDoesNot()
    {
        QLineEdit field; // a window of the program the watch has never heard of
        field.show();
        UserActivity activity;
        QSignalSpy noted(&activity, &UserActivity::activity);
        QTest::mouseMove(&field, QPoint(5, 5));
        QCOMPARE(noted.count(), 0);
        QTest::keyClick(&field, Qt::Key_A);
        QVERIFY(noted.count() > 0);
        noted.clear();
        QTest::mouseClick(&field, Qt::LeftButton);
        QVERIFY(noted.count() > 0);

        // A page that refreshes itself into another page, with nobody at the keyboard.
        QTemporaryDir dir;
        const QString next = dir.filePath(QStringLiteral("next.htm"));
        test::writeFile(next, "<html><body>next</body></html>");
        const QString first = dir.filePath(QStringLiteral("first.htm"));
        test::writeFile(
            first, "<html><head><meta http-equiv=\"refresh\" content=\"0; url=next.htm\"></head></html>");
        BrowserControl browser;
        noted.clear();
        QSignalSpy announced(&browser, &BrowserControl::BeforeNavigate2);
        browser.Navigate(QUrl::fromLocalFile(first));
        QTRY_COMPARE_WITH_TIMEOUT(browser.LocationURL(), QUrl::fromLocalFile(next),
                                  BrowserControl::DefaultWaitLimitMs);
        QCOMPARE(announced.count(), 1);
        QCOMPARE(noted.count(), 0);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(UserActivityTest)
#include "UserActivityTest.moc"
