#include "WelcomePage.h"
#include "BrowserControl.h"
#include "MessageRecorder.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "UserFolders.h"

#include <QtTest>

using namespace nebra;

class WelcomePageTest : public QObject
{
    Q_OBJECT

private:
    QStringList m_events;
    int m_readyState = BrowserControl::Loading;
    std::unique_ptr<WelcomePage> m_page;

    bool click(const QString& target)
    {
        bool cancel = false;
        m_page->WebBrowser1_BeforeNavigate2(QUrl(target), cancel);
        return cancel;
    }

private Q_SLOTS:
    void init()
    {
        m_events.clear();
        m_readyState = BrowserControl::Loading;
        auto record = [this](const char* what) { return [this, what] { m_events << QLatin1String(what); }; };
        m_page = std::make_unique<WelcomePage>(WelcomeActions{[this] { return m_readyState; },
                                                              record("protocols node"),
                                                              record("results node"),
                                                              record("create protocol"),
                                                              record("create layout template"),
                                                              record("exit"),
                                                              {}});
    }

    void aLinkIsItsLastBackslashSegmentComparedExactly_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QStringList>("atOnce");
        QTest::addColumn<QStringList>("whenComplete");
        const QStringList none;
        // clang-format off
        QTest::newRow("run") << "organiser:\\Run a protocol" << none << QStringList{"protocols node"};
        QTest::newRow("percent-encoded") << "organiser:%5CRun%20a%20protocol" << none << QStringList{"protocols node"};
        QTest::newRow("no backslash") << "file:///C:/Pages/Run a protocol" << none << none;
        QTest::newRow("wrong case") << "organiser:\\run a protocol" << none << none;
        QTest::newRow("unknown") << "organiser:\\Calibrate" << none << none;
        QTest::newRow("new protocol, at once") << "organiser:\\Create a new protocol" << QStringList{"create protocol"} << none;
        // clang-format on
    }

    void aLinkIsItsLastBackslashSegmentComparedExactly()
    {
        QFETCH(QString, target);
        QFETCH(QStringList, atOnce);
        QFETCH(QStringList, whenComplete);
        QVERIFY(click(target));
        m_page->WebBrowser1_CommandStateChange();
        QCOMPARE(m_events, atOnce);
        m_readyState = BrowserControl::Complete;
        m_page->WebBrowser1_CommandStateChange();
        QCOMPARE(m_events, atOnce + whenComplete);
    }

    // Instrument setup is not implemented, and says so at once; the other
    // commands wait for the page and run in their own order.
    void pendingCommandsRunInTheirOwnOrderOnceComplete()
    {
        test::MessageRecorder messages;
        QVERIFY(click(QStringLiteral("organiser:\\Instrument setup")));
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().text + '|' + messages.last().title,
                 "Instrument Setup is not implemented in this version.|Organizer Selection Error");
        QCOMPARE(messages.last().icon, MessageIcon::Information);
        for (const char* name : {"Exit", "Create a new template", "Analyse data", "Run a protocol"})
            QVERIFY(click(QStringLiteral("organiser:\\") + QLatin1String(name)));
        m_readyState = BrowserControl::Interactive;
        m_page->WebBrowser1_CommandStateChange();
        QVERIFY(m_events.isEmpty());
        m_readyState = BrowserControl::Complete;
        m_page->WebBrowser1_CommandStateChange();
        m_page->WebBrowser1_CommandStateChange(); // only the exit stays pending: the window is going
        QCOMPARE(m_events,
                 QStringList({"protocols node", "results node", "create layout template", "exit", "exit"}));
    }

    void thePageFileFollowsTheSettings()
    {
        test::UserFolders folders;
        SettingsStore store(folders.settingsFile());
        const auto page = [&store](const QString& organiserFile, const QString& pageFolder,
                                   bool alternative) {
            store.setValue(QStringLiteral("Settings/OrganiserFile"), organiserFile);
            store.setValue(QStringLiteral("Settings/PageFolder"), pageFolder);
            store.setValue(QStringLiteral("Settings/UseAlternativeWelcomePage"), alternative);
            return WelcomePage::PageFile(SuiteSettings(store), SuitePaths(store));
        };
        const QString data = SuitePaths(store).SuiteDataFolder();
        QCOMPARE(page("", "", false), data + "/Organiser.mht");
        QCOMPARE(page("", "/srv/pages", true), data + "/Organiser2.mht");
        QCOMPARE(page("Lab Start.mht", "", true), data + "/Lab Start.mht"); // chosen, in the data folder
        QCOMPARE(page("Lab Start.mht", "/srv/pages", false), "/srv/pages/Lab Start.mht");
    }

    void theBuiltInPagesCarryEveryLink()
    {
        for (const char* name : {"/Organiser.mht", "/Organiser2.mht"}) {
            QFile page(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") + QLatin1String(name));
            QVERIFY(page.open(QIODevice::ReadOnly));
            const QByteArray text = page.readAll();
            QCOMPARE(text.count('\n'), text.count("\r\n"));
            for (const QString& link : WelcomePage::linkNames())
                QVERIFY2(text.contains("href=\"organiser:\\" + link.toUtf8() + '"'), qPrintable(link));
        }
    }
};

QTEST_MAIN(WelcomePageTest)
#include "WelcomePageTest.moc"
