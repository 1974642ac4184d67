#include "PreviewPane.h"
#include "BrowserControl.h"
#include "PlateLayoutViewer.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "UserFolders.h"
#include "WebEngineTestMain.h"

#include <QGridLayout>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace nebra;

class PreviewPaneTest : public QObject
{
    Q_OBJECT

private:
    test::UserFolders m_folders;
    std::unique_ptr<SettingsStore> m_store;
    std::unique_ptr<SuitePaths> m_paths;
    std::unique_ptr<QWidget> m_host;
    BrowserControl* m_browser = nullptr;
    PlateLayoutViewer* m_viewer = nullptr;
    std::unique_ptr<PreviewPane> m_pane;
    int m_type = 3;
    QStringList m_nodePages;

    static QString exampleFile(const QString& relative)
    {
        return qEnvironmentVariable("NEBRA_TEST_DATA_DIR") + QStringLiteral("/Example Assays/") + relative;
    }

    // A document and its preview page in a fresh folder, the preview offset in seconds from the document.
    QString documentWithPreview(const QString& name, int previewOffsetSeconds, bool withPreview = true)
    {
        const QString folder = m_folders.root() + QStringLiteral("/My Assays/Protocols");
        QDir().mkpath(folder);
        const QString document = folder + '/' + name + QStringLiteral(".apr");
        const QString preview = folder + '/' + name + QStringLiteral(".mht");
        QFile::remove(document);
        QFile::remove(preview);
        QFile::copy(exampleFile(QStringLiteral("Protocols/BCA Protein Assay.apr")), document);
        const QDateTime time = QDateTime::currentDateTimeUtc().addSecs(-3600);
        setTime(document, time);
        if (withPreview) {
            QFile::copy(exampleFile(QStringLiteral("Protocols/BCA Protein Assay.mht")), preview);
            setTime(preview, time.addSecs(previewOffsetSeconds));
        }
        return document;
    }

    static void setTime(const QString& path, const QDateTime& time)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
    }

    void showAndWait(const QString& address)
    {
        m_pane->ShowPage(address);
        QVERIFY(m_browser->WaitUntilComplete());
    }

private Q_SLOTS:
    void init()
    {
        m_store = std::make_unique<SettingsStore>(m_folders.settingsFile());
        m_store->setValue(QStringLiteral("Paths/SuiteDataFolder"),
                          qEnvironmentVariable("NEBRA_TEST_DATA_DIR"));
        m_paths = std::make_unique<SuitePaths>(*m_store);
        m_paths->Initialise();
        m_host = std::make_unique<QWidget>();
        auto* grid = new QGridLayout(m_host.get());
        m_browser = new BrowserControl(m_host.get());
        m_viewer = new PlateLayoutViewer(m_host.get());
        grid->addWidget(m_browser, 0, 0);
        grid->addWidget(m_viewer, 0, 0);
        m_viewer->hide();
        m_host->resize(640, 480);
        m_host->show();
        m_type = 3;
        m_nodePages.clear();
        PreviewPane::Hooks hooks;
        hooks.documentType = [this] { return m_type; };
        hooks.setNodePage = [this](const QString& page) { m_nodePages << page; };
        m_pane = std::make_unique<PreviewPane>(*m_browser, *m_viewer, *m_paths, hooks);
    }

    void cleanup()
    {
        m_pane.reset();
        m_host.reset();
    }

    void documentPageOrNotAvailable_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("previewOffset");
        QTest::addColumn<bool>("withPreview");
        QTest::addColumn<bool>("showsPreview");
        QTest::newRow("protocol, newer preview") << 3 << 30 << true << true;
        QTest::newRow("protocol, preview 59 s older") << 3 << -59 << true << true;
        QTest::newRow("protocol, preview 60 s older") << 3 << -60 << true << false;
        QTest::newRow("protocol, no preview") << 3 << 0 << false << false;
        QTest::newRow("results, newer preview") << 4 << 0 << true << true;
        QTest::newRow("read configuration, old preview") << 1 << -3600 << true << false;
    }

    void documentPageOrNotAvailable()
    {
        QFETCH(int, type);
        QFETCH(int, previewOffset);
        QFETCH(bool, withPreview);
        QFETCH(bool, showsPreview);
        m_type = type;
        const QString document = documentWithPreview(QStringLiteral("Assay"), previewOffset, withPreview);
        const PreviewItem item{document, false};
        m_pane->ShowPreview(&item);
        const QString expected =
            showsPreview ? m_paths->PreviewFileFor(document) : m_pane->PreviewNotAvailablePage();
        QCOMPARE(m_pane->CurrentPage(), expected);
        QCOMPARE(m_nodePages, QStringList{expected});
        QVERIFY(m_browser->WaitUntilComplete());
        QCOMPARE(m_browser->LocationURL(), QUrl::fromLocalFile(expected));
    }

    void theSameAddressIsRefreshedNotNavigated()
    {
        const QString page = m_pane->PreviewNotAvailablePage();
        showAndWait(page);
        QSignalSpy navigated(m_browser, &BrowserControl::NavigateComplete2);
        QSignalSpy completed(m_browser, &BrowserControl::DocumentComplete);
        m_pane->ShowPage(page);
        QVERIFY(completed.wait(BrowserControl::DefaultWaitLimitMs));
        QCOMPARE(navigated.count(), 0);
        QCOMPARE(m_nodePages.size(), 1);
    }

    void aFolderItemClearsThePane()
    {
        m_type = 2;
        const PreviewItem layout{exampleFile(QStringLiteral("Microplate Layouts/Kinetic 384.mlo")), false};
        m_pane->ShowPreview(&layout);
        QVERIFY(m_viewer->isVisible());
        const PreviewItem folder{m_folders.root(), true};
        m_pane->ShowPreview(&folder);
        QCOMPARE(m_pane->CurrentPage(), QStringLiteral("about:blank"));
        QCOMPARE(m_nodePages.last(), QStringLiteral("about:blank"));
        QVERIFY(m_viewer->isHidden());
        QVERIFY(m_browser->WaitUntilComplete());
        QCOMPARE(m_browser->LocationURL(), QUrl(QStringLiteral("about:blank")));
    }

    void aLayoutIsDrawnAndTheBrowserLeftAlone_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("wells");
        QTest::newRow("384 wells") << exampleFile(QStringLiteral("Microplate Layouts/Kinetic 384.mlo"))
                                   << 384;
        QTest::newRow("missing file") << m_folders.root() + QStringLiteral("/gone.mlo") << 0;
        QTest::newRow("not a layout") << exampleFile(QStringLiteral("Protocols/BCA Protein Assay.mht")) << 0;
    }

    void aLayoutIsDrawnAndTheBrowserLeftAlone()
    {
        QFETCH(QString, file);
        QFETCH(int, wells);
        showAndWait(m_pane->PreviewNotAvailablePage());
        QSignalSpy states(m_browser, &BrowserControl::CommandStateChange);
        m_type = 2;
        const PreviewItem item{file, false};
        m_pane->ShowPreview(&item);
        QVERIFY(m_viewer->isVisible());
        QCOMPARE(m_viewer->hasPlateLayout(), wells > 0);
        QCOMPARE(m_viewer->errorText().isEmpty(), wells > 0);
        if (wells > 0)
            QCOMPARE(m_viewer->plateLayout()->wellCount(), wells);
        QCOMPARE(m_pane->CurrentPage(), m_pane->PreviewNotAvailablePage());
        QCOMPARE(m_nodePages.size(), 1);
        QCOMPARE(states.count(), 0);
    }

    void aReportLeavesThePaneAsItWas()
    {
        m_type = 2;
        const PreviewItem layout{exampleFile(QStringLiteral("Microplate Layouts/BCA Protein 96.mlo")), false};
        m_pane->ShowPreview(&layout);
        m_type = 5;
        const PreviewItem report{exampleFile(QStringLiteral("Reports/ELISA IgG Summary Report.mht")), false};
        m_pane->ShowPreview(&report);
        m_pane->ShowPreview(nullptr);
        QVERIFY(m_viewer->isVisible());
        QCOMPARE(m_viewer->plateLayout()->name(), QStringLiteral("BCA Protein 96"));
        QVERIFY(m_pane->CurrentPage().isEmpty());
        QVERIFY(m_nodePages.isEmpty());
        QCOMPARE(m_browser->ReadyState(), int(BrowserControl::Uninitialised));
    }

    void aCorruptPreviewCompletesWithoutHanging()
    {
        const QString document = documentWithPreview(QStringLiteral("Corrupt"), 10);
        QFile preview(m_paths->PreviewFileFor(document));
        QVERIFY(preview.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QByteArray junk(256 * 1024, '\0');
        for (int i = 0; i < junk.size(); ++i)
            junk[i] = char((i * 7919) % 251);
        preview.write(junk);
        preview.close();
        const PreviewItem item{document, false};
        m_pane->ShowPreview(&item);
        QCOMPARE(m_pane->CurrentPage(), preview.fileName());
        QVERIFY(m_browser->WaitUntilComplete());
    }

    void waitingIsBounded()
    {
        m_pane->setWaitUntilLoaded(true);
        QSignalSpy completed(m_browser, &BrowserControl::DocumentComplete);
        m_pane->ShowPage(m_pane->PreviewNotAvailablePage());
        QVERIFY(completed.count() >= 1);

        m_pane->setWaitLimitMs(1);
        QElapsedTimer clock;
        clock.start();
        m_pane->ShowPage(exampleFile(QStringLiteral("Protocols/Kinetic Enzyme Activity.mht")));
        QVERIFY(clock.elapsed() < BrowserControl::DefaultWaitLimitMs);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(PreviewPaneTest)
#include "PreviewPaneTest.moc"
