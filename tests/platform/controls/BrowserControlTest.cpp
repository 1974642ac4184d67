#include "BrowserControl.h"
#include "TestFiles.h"
#include "WebEngineTestMain.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWebEngineLoadingInfo>
#include <QWebEnginePage>
#include <QWebEngineScript>
#include <QWebEngineView>
#include <QtTest>

#include <functional>

using namespace nebra;

class BrowserControlTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    // A page whose whole surface is a link to the other page.
    QUrl page(const QString& name, const QString& other)
    {
        test::writeFile(
            m_dir.filePath(name),
            "<html><body><a href=\"" + other.toUtf8() +
                "\" style=\"position:fixed;left:0;top:0;right:0;bottom:0\">link</a></body></html>");
        return QUrl::fromLocalFile(m_dir.filePath(name));
    }

    // Clicks the page until done() says a click was taken: a new page takes
    // clicks only after a moment, and quick repeats would make a double click.
    static bool clickUntil(BrowserControl& browser, const std::function<bool()>& done)
    {
        QElapsedTimer sinceClick;
        return QTest::qWaitFor(
            [&] {
                if (!done() && (!sinceClick.isValid() || sinceClick.elapsed() > 200)) {
                    QTest::mouseClick(browser.view()->focusProxy(), Qt::LeftButton, {}, QPoint(30, 30));
                    sinceClick.start();
                }
                return done();
            },
            BrowserControl::DefaultWaitLimitMs);
    }

private Q_SLOTS:
    void onlyTheLinksOfThePageAreAnnouncedAndACancelAfterABoxLeavesItComplete()
    {
        BrowserControl browser;
        browser.resize(400, 300);
        browser.show();
        const QUrl second = page(QStringLiteral("second.htm"), QStringLiteral("first.htm"));
        QSignalSpy announced(&browser, &BrowserControl::BeforeNavigate2);
        QSignalSpy navigated(&browser, &BrowserControl::NavigateComplete2);
        browser.Navigate(page(QStringLiteral("first.htm"), QStringLiteral("second.htm")));
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Loading));
        QVERIFY(browser.WaitUntilComplete());
        browser.Refresh();
        QVERIFY(browser.WaitUntilComplete());
        QCOMPARE(navigated.count(), 1); // neither the program's navigation nor a refresh is announced
        QCOMPARE(announced.count(), 0);
        QVERIFY(clickUntil(browser, [&] { return !announced.isEmpty(); }));
        QCOMPARE(announced.first().first().toUrl(), second);
        QVERIFY(navigated.wait(BrowserControl::DefaultWaitLimitMs)); // not cancelled: followed
        QCOMPARE(browser.LocationURL(), second);
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Complete));

        // A handler that shows a modal box before it cancels lets the engine run
        // on meanwhile; the page stays complete, so what waits for that acts.
        browser.Navigate(page(QStringLiteral("box.htm"), QStringLiteral("organiser:\\Box")));
        QVERIFY(browser.WaitUntilComplete());
        QStringList heard;
        connect(browser.view()->page(), &QWebEnginePage::loadingChanged, &browser,
                [&](const QWebEngineLoadingInfo& info) { heard << info.url().toString(); });
        connect(&browser, &BrowserControl::BeforeNavigate2, &browser, [&](const QUrl&, bool& cancel) {
            cancel = true;
            // The box's own event loop, up until the engine has reported the navigation.
            const qsizetype before = heard.size();
            static_cast<void>(QTest::qWaitFor([&] { return heard.size() > before; }, 2000));
        });
        announced.clear();
        QVERIFY(clickUntil(browser, [&] { return !announced.isEmpty(); }));
        QTRY_VERIFY2_WITH_TIMEOUT(heard.size() == 2, qPrintable(heard.join(' ')), 5000); // started, failed
        QCOMPARE(browser.ReadyState(), int(BrowserControl::Complete));
    }

    // A page runs no script of its own; the program's scripts run in a world of their own.
    void pagesRunNoScriptButTheProgramsDo()
    {
        BrowserControl browser;
        test::writeFile(m_dir.filePath("script.htm"),
                        "<html><head><title>quiet</title></head>"
                        "<body><script>document.title = 'ran';</script></body></html>");
        browser.Navigate(QUrl::fromLocalFile(m_dir.filePath("script.htm")));
        QVERIFY(browser.WaitUntilComplete());
        QWebEngineView& view = *browser.view();
        QCOMPARE(view.title(), QStringLiteral("quiet"));
        view.page()->runJavaScript(QStringLiteral("document.title = 'the program'"),
                                   QWebEngineScript::ApplicationWorld);
        QTRY_COMPARE_WITH_TIMEOUT(view.title(), QStringLiteral("the program"),
                                  BrowserControl::DefaultWaitLimitMs);
    }

    // A deferred engine keeps the newest navigation until it starts; a wait starts it.
    void aDeferredEngineLoadsTheNewestNavigationWhenStarted()
    {
        const QUrl first = page(QStringLiteral("first.htm"), QStringLiteral("second.htm"));
        const QUrl second = page(QStringLiteral("second.htm"), QStringLiteral("first.htm"));
        for (const bool startedByWaiting : {false, true}) {
            BrowserControl browser(nullptr, BrowserControl::EngineStart::Deferred);
            browser.resize(400, 300);
            browser.show();
            browser.Refresh(); // nothing to refresh yet
            browser.Navigate(first);
            browser.Navigate(second);
            QVERIFY(!browser.engineStarted());
            QCOMPARE(browser.ReadyState(), int(BrowserControl::Loading));
            QCOMPARE(browser.LocationURL(), QUrl());
            QSignalSpy navigated(&browser, &BrowserControl::NavigateComplete2);
            if (!startedByWaiting)
                browser.StartEngine();
            QVERIFY(browser.WaitUntilComplete());
            QVERIFY(browser.engineStarted());
            QCOMPARE(navigated.count(), 1);
            QCOMPARE(navigated.first().first().toUrl(), second);
            QCOMPARE(browser.LocationURL(), second);
        }
    }
};

NEBRA_WEBENGINE_TEST_MAIN(BrowserControlTest)
#include "BrowserControlTest.moc"
