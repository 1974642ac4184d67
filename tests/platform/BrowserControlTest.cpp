#include "BrowserControl.h"
#include "WebEngineTestMain.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWebEngineView>
#include <QtTest>

using namespace nebra;

class BrowserControlTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    // A page whose whole surface is one link, so that any click follows it.
    QString pageLinkingTo(const QString& name, const QByteArray& target)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return {};
        file.write("<!DOCTYPE html><html><body style=\"margin:0\"><a href=\"" + target +
                   "\" style=\"position:fixed;left:0;top:0;right:0;bottom:0;display:block\">link</a>"
                   "</body></html>");
        return path;
    }

    // Clicks into the page until it reacts: a freshly loaded page takes a moment
    // before it takes clicks, and clicks in quick succession would be a double click.
    static bool clickUntil(BrowserControl& browser, const QSignalSpy& spy)
    {
        QElapsedTimer sinceClick;
        return QTest::qWaitFor(
            [&] {
                if (spy.isEmpty() && (!sinceClick.isValid() || sinceClick.elapsed() > 200)) {
                    QTest::mouseClick(browser.view()->focusProxy(), Qt::LeftButton, {}, QPoint(30, 30));
                    sinceClick.start();
                }
                return !spy.isEmpty();
            },
            BrowserControl::DefaultWaitLimitMs);
    }

private Q_SLOTS:
    void programNavigationsRunToCompleteUnannounced()
    {
        BrowserControl browser;
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Uninitialised));
        QSignalSpy announced(&browser, &BrowserControl::BeforeNavigate2);
        QSignalSpy navigated(&browser, &BrowserControl::NavigateComplete2);
        const QUrl page = QUrl::fromLocalFile(pageLinkingTo(QStringLiteral("a.htm"), "b.htm"));
        browser.Navigate(page);
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Loading));
        QVERIFY(!browser.WaitUntilComplete(0) || browser.ReadyState() == BrowserControl::Complete);
        QVERIFY(browser.WaitUntilComplete());
        QCOMPARE(navigated.count(), 1);
        QCOMPARE(navigated.first().first().toUrl(), page);
        browser.Refresh();
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Loading));
        QVERIFY(browser.WaitUntilComplete());
        QCOMPARE(navigated.count(), 1); // a refresh is not a navigation
        QCOMPARE(announced.count(), 0);
    }

    void aCancelledLinkLeavesThePageAndReportsTheState()
    {
        BrowserControl browser;
        browser.resize(400, 300);
        browser.show();
        const QUrl page =
            QUrl::fromLocalFile(pageLinkingTo(QStringLiteral("welcome.htm"), "organiser:\\Run a protocol"));
        browser.Navigate(page);
        QVERIFY(browser.WaitUntilComplete());
        QList<int> statesAfterCancel;
        bool cancelled = false;
        connect(&browser, &BrowserControl::BeforeNavigate2, this, [&](const QUrl&, bool& cancel) {
            cancel = true;
            cancelled = true;
        });
        connect(&browser, &BrowserControl::CommandStateChange, this, [&] {
            if (cancelled)
                statesAfterCancel << browser.ReadyState();
        });
        QSignalSpy announced(&browser, &BrowserControl::BeforeNavigate2);
        QVERIFY(clickUntil(browser, announced));
        const QUrl target = announced.first().first().toUrl();
        QCOMPARE(target.scheme(), QStringLiteral("organiser"));
        QCOMPARE(QUrl::fromPercentEncoding(target.toEncoded()), QStringLiteral("organiser:\\Run a protocol"));
        QTRY_VERIFY_WITH_TIMEOUT(!statesAfterCancel.isEmpty(), 5000);
        QCOMPARE(statesAfterCancel.first(), int(BrowserControl::Complete));
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Complete));
        QCOMPARE(browser.LocationURL(), page);
    }

    void aLinkNotCancelledIsFollowed()
    {
        BrowserControl browser;
        browser.resize(400, 300);
        browser.show();
        const QUrl second = QUrl::fromLocalFile(pageLinkingTo(QStringLiteral("second.htm"), "first.htm"));
        browser.Navigate(QUrl::fromLocalFile(pageLinkingTo(QStringLiteral("first.htm"), "second.htm")));
        QVERIFY(browser.WaitUntilComplete());
        QSignalSpy announced(&browser, &BrowserControl::BeforeNavigate2);
        QSignalSpy navigated(&browser, &BrowserControl::NavigateComplete2);
        QVERIFY(clickUntil(browser, announced));
        QVERIFY(navigated.wait(BrowserControl::DefaultWaitLimitMs));
        QCOMPARE(navigated.last().first().toUrl(), second);
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Complete));
    }
};

NEBRA_WEBENGINE_TEST_MAIN(BrowserControlTest)
#include "BrowserControlTest.moc"
