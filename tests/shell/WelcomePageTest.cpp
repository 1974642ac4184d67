#include "WelcomePage.h"
#include "BrowserControl.h"
#include "MessageRecorder.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "UserFolders.h"
#include "WebEngineTestMain.h"

#include <QSignalSpy>
#include <QWebEngineView>
#include <QtTest>

#include <memory>

using namespace nebra;

class WelcomePageTest : public QObject
{
    Q_OBJECT

private:
    QStringList m_events;
    int m_resets = 0;
    int m_readyState = BrowserControl::Loading;
    std::unique_ptr<WelcomePage> m_page;

    WelcomeActions recordingActions()
    {
        WelcomeActions actions;
        actions.resetTimeOut = [this] { ++m_resets; };
        actions.readyState = [this] { return m_readyState; };
        actions.selectProtocolsNode = [this] { m_events << QStringLiteral("protocols node"); };
        actions.selectResultsNode = [this] { m_events << QStringLiteral("results node"); };
        actions.createProtocol = [this] { m_events << QStringLiteral("create protocol"); };
        actions.createLayoutTemplate = [this] { m_events << QStringLiteral("create layout template"); };
        actions.exit = [this] { m_events << QStringLiteral("exit"); };
        return actions;
    }

    bool click(const QString& target)
    {
        bool cancel = false;
        m_page->WebBrowser1_BeforeNavigate2(QUrl(target), cancel);
        return cancel;
    }

    static QString dataFile(const char* name)
    {
        return qEnvironmentVariable("NEBRA_TEST_DATA_DIR") + QLatin1Char('/') + QLatin1String(name);
    }

private Q_SLOTS:
    void init()
    {
        m_events.clear();
        m_resets = 0;
        m_readyState = BrowserControl::Loading;
        m_page = std::make_unique<WelcomePage>(recordingActions());
    }

    void linksAreReadByTheirLastBackslashSegment_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QStringList>("atOnce");
        QTest::addColumn<QStringList>("whenComplete");
        const QStringList none;
        QTest::newRow("run") << "organiser:\\Run a protocol" << none << QStringList{"protocols node"};
        QTest::newRow("run, percent-encoded")
            << "organiser:%5CRun%20a%20protocol" << none << QStringList{"protocols node"};
        QTest::newRow("deeper path") << "organiser:\\Pages\\Analyse data" << none
                                     << QStringList{"results node"};
        QTest::newRow("no backslash") << "file:///C:/Pages/Run a protocol" << none << none;
        QTest::newRow("wrong case") << "organiser:\\run a protocol" << none << none;
        QTest::newRow("trailing blank") << "organiser:\\Exit " << none << none;
        QTest::newRow("unknown") << "organiser:\\Calibrate" << none << none;
        QTest::newRow("new protocol acts at once")
            << "organiser:\\Create a new protocol" << QStringList{"create protocol"} << none;
        QTest::newRow("new template waits")
            << "organiser:\\Create a new template" << none << QStringList{"create layout template"};
        QTest::newRow("exit waits") << "organiser:\\Exit" << none << QStringList{"exit"};
    }

    void linksAreReadByTheirLastBackslashSegment()
    {
        QFETCH(QString, target);
        QFETCH(QStringList, atOnce);
        QFETCH(QStringList, whenComplete);
        QVERIFY(click(target));
        QCOMPARE(m_resets, 1);
        QCOMPARE(m_events, atOnce);
        m_page->WebBrowser1_CommandStateChange();
        QCOMPARE(m_events, atOnce);
        m_readyState = BrowserControl::Complete;
        m_page->WebBrowser1_CommandStateChange();
        QCOMPARE(m_events, atOnce + whenComplete);
    }

    void pendingCommandsRunInTheirOwnOrderOnceComplete()
    {
        for (const char* name : {"Exit", "Create a new template", "Analyse data", "Run a protocol"})
            QVERIFY(click(QStringLiteral("organiser:\\") + QLatin1String(name)));
        QCOMPARE(m_resets, 4);
        m_readyState = BrowserControl::Interactive;
        m_page->WebBrowser1_CommandStateChange();
        QVERIFY(m_events.isEmpty());
        m_readyState = BrowserControl::Complete;
        m_page->WebBrowser1_CommandStateChange();
        QCOMPARE(m_events, QStringList({"protocols node", "results node", "create layout template", "exit"}));
        QVERIFY(!m_page->runProtocolPending() && !m_page->analyseDataPending() &&
                !m_page->createTemplatePending());
        QVERIFY(m_page->exitPending());
        m_events.clear();
        m_page->WebBrowser1_CommandStateChange();
        QCOMPARE(m_events, QStringList{"exit"});
    }

    void instrumentSetupIsNotImplemented()
    {
        test::MessageRecorder messages;
        QVERIFY(click(QStringLiteral("organiser:\\Instrument setup")));
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().text,
                 QStringLiteral("Instrument Setup is not implemented in this version."));
        QCOMPARE(messages.last().title, QStringLiteral("Organizer Selection Error"));
        QCOMPARE(messages.last().icon, MessageIcon::Information);
        QCOMPARE(messages.last().buttons, int(MessageButton::Ok));
    }

    void thePageFileFollowsTheSettings_data()
    {
        QTest::addColumn<QString>("organiserFile");
        QTest::addColumn<QString>("pageFolder");
        QTest::addColumn<bool>("alternative");
        QTest::addColumn<QString>("expected");
        QTest::newRow("default") << ""
                                 << "" << false << "DATA/Organiser.mht";
        QTest::newRow("alternative") << ""
                                     << "/srv/pages" << true << "DATA/Organiser2.mht";
        QTest::newRow("chosen, in the data folder") << "Lab Start.mht"
                                                    << "" << true << "DATA/Lab Start.mht";
        QTest::newRow("chosen, in the page folder") << "Lab Start.mht"
                                                    << "/srv/pages" << false << "/srv/pages/Lab Start.mht";
    }

    void thePageFileFollowsTheSettings()
    {
        QFETCH(QString, organiserFile);
        QFETCH(QString, pageFolder);
        QFETCH(bool, alternative);
        QFETCH(QString, expected);
        test::UserFolders folders;
        SettingsStore store(folders.settingsFile());
        store.setValue(QStringLiteral("Settings/OrganiserFile"), organiserFile);
        store.setValue(QStringLiteral("Settings/PageFolder"), pageFolder);
        store.setValue(QStringLiteral("Settings/UseAlternativeWelcomePage"), alternative);
        SuiteSettings settings(store);
        SuitePaths paths(store);
        paths.Initialise();
        expected.replace(QLatin1String("DATA"), paths.SuiteDataFolder());
        QCOMPARE(WelcomePage::PageFile(settings, paths), expected);
    }

    void theBuiltInPagesAreWebArchivesWithEveryLink_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("Organiser.mht") << dataFile("Organiser.mht");
        QTest::newRow("Organiser2.mht") << dataFile("Organiser2.mht");
    }

    void theBuiltInPagesAreWebArchivesWithEveryLink()
    {
        QFETCH(QString, file);
        QFile page(file);
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QByteArray text = page.readAll();
        QCOMPARE(text.count('\n'), text.count("\r\n"));
        QVERIFY(text.contains("\r\nContent-Type: multipart/related; boundary="));
        for (const QString& name : WelcomePage::linkNames())
            QVERIFY2(text.contains("href=\"organiser:\\" + name.toUtf8() + '"'), qPrintable(name));
    }

    void aClickOnTheRealPageSelectsTheProtocolsNode()
    {
        BrowserControl browser;
        browser.resize(900, 560);
        browser.show();
        WelcomeActions actions = recordingActions();
        actions.readyState = [&browser] { return browser.ReadyState(); };
        m_page = std::make_unique<WelcomePage>(actions);
        connect(
            &browser, &BrowserControl::BeforeNavigate2, this,
            [this](const QUrl& url, bool& cancel) { m_page->WebBrowser1_BeforeNavigate2(url, cancel); },
            Qt::DirectConnection);
        connect(&browser, &BrowserControl::CommandStateChange, this,
                [this] { m_page->WebBrowser1_CommandStateChange(); });
        const QUrl welcome = QUrl::fromLocalFile(dataFile("Organiser.mht"));
        browser.Navigate(welcome);
        QVERIFY(browser.WaitUntilComplete());
        // The first task card, "Run a protocol", lies at the top left of the task grid.
        QElapsedTimer sinceClick;
        QVERIFY(QTest::qWaitFor(
            [&] {
                if (m_resets == 0 && (!sinceClick.isValid() || sinceClick.elapsed() > 200)) {
                    QTest::mouseClick(browser.view()->focusProxy(), Qt::LeftButton, {}, QPoint(150, 200));
                    sinceClick.start();
                }
                return !m_events.isEmpty();
            },
            BrowserControl::DefaultWaitLimitMs));
        QCOMPARE(m_events, QStringList{"protocols node"});
        QCOMPARE(m_resets, 1);
        QCOMPARE(browser.LocationURL(), welcome);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(WelcomePageTest)
#include "WelcomePageTest.moc"
