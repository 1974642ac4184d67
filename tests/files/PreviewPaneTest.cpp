#include "PreviewPane.h"
#include "BrowserControl.h"
#include "PlateLayoutViewer.h"
#include "SettingsStore.h"
#include "SpecialFiles.h"
#include "SuitePaths.h"
#include "TestFiles.h"
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

    static QString example(const QString& relative)
    {
        return qEnvironmentVariable("NEBRA_TEST_DATA_DIR") + QStringLiteral("/Example Assays/") + relative;
    }

    // A protocol, an hour old, and, unless the offset is null, its preview that many seconds newer.
    QString protocol(std::optional<int> previewOffset, const QByteArray& previewText = "<p>preview</p>")
    {
        const QString document = m_folders.root() + QStringLiteral("/Assay.apr");
        const qint64 time = QDateTime::currentSecsSinceEpoch() - 3600;
        test::writeFile(document, "<p>protocol</p>", time);
        QFile::remove(m_paths->PreviewFileFor(document));
        if (previewOffset)
            test::writeFile(m_paths->PreviewFileFor(document), previewText, time + *previewOffset);
        return document;
    }

private Q_SLOTS:
    void init()
    {
        m_store = std::make_unique<SettingsStore>(m_folders.settingsFile());
        m_store->setValue(QStringLiteral("Paths/SuiteDataFolder"),
                          qEnvironmentVariable("NEBRA_TEST_DATA_DIR"));
        m_paths = std::make_unique<SuitePaths>(*m_store);
        m_host = std::make_unique<QWidget>();
        auto* grid = new QGridLayout(m_host.get());
        grid->addWidget(m_browser = new BrowserControl(m_host.get()), 0, 0);
        grid->addWidget(m_viewer = new PlateLayoutViewer(m_host.get()), 0, 0);
        m_viewer->hide();
        m_host->show();
        m_type = 3;
        m_nodePages.clear();
        m_pane = std::make_unique<PreviewPane>(
            *m_browser, *m_viewer, *m_paths,
            PreviewPane::Hooks{[this] { return documentTypeFromData(m_type); },
                               [this](const QString& page) { m_nodePages << page; }});
    }

    void cleanup()
    {
        m_pane.reset();
        m_host.reset();
    }

    void showsTheDocumentsPreviewOrTheNotAvailablePage_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<std::optional<int>>("previewOffset");
        QTest::addColumn<bool>("showsPreview");
        QTest::newRow("protocol, newer preview") << 3 << std::optional(30) << true;
        QTest::newRow("protocol, preview 59 s older") << 3 << std::optional(-59) << true;
        QTest::newRow("protocol, preview 60 s older") << 3 << std::optional(-60) << false;
        QTest::newRow("protocol, no preview") << 3 << std::optional<int>() << false;
        QTest::newRow("results, newer preview") << 4 << std::optional(0) << true;
        QTest::newRow("read configuration, old preview") << 1 << std::optional(-3600) << false;
    }

    void showsTheDocumentsPreviewOrTheNotAvailablePage()
    {
        QFETCH(int, type);
        QFETCH(std::optional<int>, previewOffset);
        QFETCH(bool, showsPreview);
        m_type = type;
        const PreviewItem item{protocol(previewOffset), false};
        m_pane->ShowPreview(&item);
        const QString page =
            showsPreview ? m_paths->PreviewFileFor(item.path) : m_pane->PreviewNotAvailablePage();
        QCOMPARE(m_pane->CurrentPage(), page);
        QCOMPARE(m_nodePages, QStringList{page});
        QVERIFY(m_browser->WaitUntilComplete());
        QCOMPARE(m_browser->LocationURL(), QUrl::fromLocalFile(page));
    }

    void theSameAddressIsRefreshedNotNavigated()
    {
        m_pane->ShowPage(m_pane->PreviewNotAvailablePage());
        QVERIFY(m_browser->WaitUntilComplete());
        QSignalSpy navigated(m_browser, &BrowserControl::NavigateComplete2);
        QSignalSpy completed(m_browser, &BrowserControl::DocumentComplete);
        m_pane->ShowPage(m_pane->PreviewNotAvailablePage());
        QVERIFY(completed.wait(BrowserControl::DefaultWaitLimitMs));
        QCOMPARE(navigated.count(), 0);
        QCOMPARE(m_nodePages.size(), 1);
    }

    void layoutsGoToTheViewerFoldersClearReportsChangeNothing()
    {
        m_pane->ShowPage(m_pane->PreviewNotAvailablePage());
        QVERIFY(m_browser->WaitUntilComplete());
        QSignalSpy states(m_browser, &BrowserControl::CommandStateChange);
        m_type = 2;
        const PreviewItem layout{example(QStringLiteral("Microplate Layouts/Kinetic 384.mlo")), false};
        m_pane->ShowPreview(&layout);
        QVERIFY(m_viewer->isVisible());
        QVERIFY2(m_viewer->hasPlateLayout(), qPrintable(m_viewer->errorText()));
        QCOMPARE(m_viewer->plateLayout()->wellCount(), 384);
        QCOMPARE(states.count(), 0); // the browser is left alone

        m_type = 5;
        const PreviewItem report{example(QStringLiteral("Reports/ELISA IgG Summary Report.mht")), false};
        m_pane->ShowPreview(&report);
        m_pane->ShowPreview(nullptr);
        QVERIFY(m_viewer->isVisible());
        QCOMPARE(states.count(), 0);
        QCOMPARE(m_nodePages.size(), 1);

        const PreviewItem folder{m_folders.root(), true};
        m_pane->ShowPreview(&folder);
        QVERIFY(m_viewer->isHidden());
        QCOMPARE(m_pane->CurrentPage(), QStringLiteral("about:blank"));
        QCOMPARE(m_nodePages.last(), QStringLiteral("about:blank"));
        QVERIFY(m_browser->WaitUntilComplete());
        QCOMPARE(m_browser->LocationURL(), QUrl(QStringLiteral("about:blank")));
    }

    void aBrokenLayoutOrPreviewNeverHangsThePane()
    {
        m_type = 2;
        const PreviewItem mht{example(QStringLiteral("Protocols/BCA Protein Assay.mht")), false};
        m_pane->ShowPreview(&mht);
        QVERIFY(m_viewer->isVisible() && !m_viewer->hasPlateLayout() && !m_viewer->errorText().isEmpty());

        m_type = 3;
        QByteArray junk(256 * 1024, '\0');
        for (int i = 0; i < junk.size(); ++i)
            junk[i] = char((i * 7919) % 251);
        const PreviewItem corrupt{protocol(10, junk), false};
        m_pane->setWaitUntilLoaded(true);
        m_pane->ShowPreview(&corrupt);
        QCOMPARE(m_pane->CurrentPage(), m_paths->PreviewFileFor(corrupt.path));
        QVERIFY(m_browser->WaitUntilComplete());
    }

    // A pipe or a socket given a document's name, or its preview's, is never
    // opened: the pane shows why it cannot show a layout, or the
    // preview-not-available page.
    void pipesAndSocketsNeverHangThePane_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QString>("special");
        for (const auto& [type, extension] : {std::pair{1, "daq"}, {2, "mlo"}, {3, "apr"}, {4, "ars"}}) {
            QTest::addRow("%s pipe", extension) << type << extension << "pipe";
            QTest::addRow("%s socket", extension) << type << extension << "socket";
            if (type != 2)
                QTest::addRow("%s beside a pipe preview", extension) << type << extension << "preview pipe";
        }
    }

    void pipesAndSocketsNeverHangThePane()
    {
        QFETCH(int, type);
        QFETCH(QString, extension);
        QFETCH(QString, special);
        m_type = type;
        const QString document = m_folders.root() + QStringLiteral("/Special.") + extension;
        const QString preview = m_paths->PreviewFileFor(document);
        QFile::remove(document);
        QFile::remove(preview);
        std::unique_ptr<test::BoundSocket> socket;
        if (special == QLatin1String("socket")) {
            socket = std::make_unique<test::BoundSocket>(document);
            QVERIFY(socket->isBound());
        } else if (special == QLatin1String("pipe")) {
            test::makeFifo(document);
        } else {
            test::writeFile(document, "<p>document</p>");
            test::makeFifo(preview);
        }
        // A fresh preview beside a special document: the age check must not open the document.
        if (type != 2 && special != QLatin1String("preview pipe"))
            test::writeFile(preview, "<p>preview</p>");
        const test::PipeWatchdog watchdog(special == QLatin1String("preview pipe") ? preview : document);
        m_pane->setWaitUntilLoaded(true);
        const PreviewItem item{document, false};
        m_pane->ShowPreview(&item);
        QVERIFY2(!watchdog.released(), "the pane blocked on the pipe");
        if (type == 2) {
            QVERIFY(m_viewer->isVisible() && !m_viewer->hasPlateLayout());
            QVERIFY2(m_viewer->errorText().contains(QLatin1String("not a file that can be read")),
                     qPrintable(m_viewer->errorText()));
        } else {
            QCOMPARE(m_pane->CurrentPage(), m_pane->PreviewNotAvailablePage());
        }
    }
};

NEBRA_WEBENGINE_TEST_MAIN(PreviewPaneTest)
#include "PreviewPaneTest.moc"
