#include "PreviewPane.h"
#include "BrowserControl.h"
#include "FileListControl.h"
#include "MountedShare.h"
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

using namespace nebra;

namespace {

QString example(const QString& relative)
{
    return qEnvironmentVariable("NEBRA_TEST_DATA_DIR") + QStringLiteral("/Example Assays/") + relative;
}

// The pane over a browser and a layout viewer in one cell of a shown window;
// the selected node's kind is `type`, the pages it was given are in nodePages.
struct Pane
{
    test::UserFolders folders;
    SettingsStore store{folders.settingsFile()};
    bool ready = store.setValue("Paths/SuiteDataFolder", qEnvironmentVariable("NEBRA_TEST_DATA_DIR"));
    SuitePaths paths{store};
    QWidget host;
    BrowserControl* browser = new BrowserControl(&host);
    PlateLayoutViewer* viewer = new PlateLayoutViewer(&host);
    int type = 3;
    QStringList nodePages;
    PreviewPane pane{*browser, *viewer, paths,
                     PreviewPane::Hooks{[this] { return documentTypeFromData(type); },
                                        [this](const QString& page) { nodePages << page; }}};

    Pane()
    {
        auto* grid = new QGridLayout(&host);
        grid->addWidget(browser, 0, 0);
        grid->addWidget(viewer, 0, 0);
        viewer->hide();
        host.show();
    }

    // A protocol, an hour old, and, unless the offset is null, its preview that many seconds newer.
    QString protocol(std::optional<int> previewOffset, const QByteArray& previewText = "<p>preview</p>")
    {
        const QString document = folders.root() + QStringLiteral("/Assay.apr");
        const qint64 time = QDateTime::currentSecsSinceEpoch() - 3600;
        test::writeFile(document, "<p>protocol</p>", time);
        QFile::remove(paths.PreviewFileFor(document));
        if (previewOffset)
            test::writeFile(paths.PreviewFileFor(document), previewText, time + *previewOffset);
        return document;
    }
};

} // namespace

class PreviewPaneTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheDocumentsPreviewOrTheNotAvailablePage_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<std::optional<int>>("previewOffset");
        QTest::addColumn<bool>("showsPreview");
        // clang-format off
        QTest::newRow("protocol, newer preview") << 3 << std::optional(30) << true;
        QTest::newRow("protocol, preview 59 s older") << 3 << std::optional(-59) << true;
        QTest::newRow("protocol, preview 60 s older") << 3 << std::optional(-60) << false;
        QTest::newRow("protocol, no preview") << 3 << std::optional<int>() << false;
        QTest::newRow("results, newer preview") << 4 << std::optional(0) << true;
        QTest::newRow("read configuration, old preview") << 1 << std::optional(-3600) << false;
        // clang-format on
    }

    void showsTheDocumentsPreviewOrTheNotAvailablePage()
    {
        QFETCH(int, type);
        QFETCH(std::optional<int>, previewOffset);
        QFETCH(bool, showsPreview);
        Pane o;
        o.type = type;
        const PreviewItem item{o.protocol(previewOffset), false};
        o.pane.ShowPreview(&item);
        const QString page =
            showsPreview ? o.paths.PreviewFileFor(item.path) : o.pane.PreviewNotAvailablePage();
        QTRY_COMPARE_WITH_TIMEOUT(o.pane.CurrentPage(), page, 5000);
        QCOMPARE(o.nodePages, QStringList{page});
        QVERIFY(o.browser->WaitUntilComplete());
        QCOMPARE(o.browser->LocationURL(), QUrl::fromLocalFile(page));
    }

    // The same address is refreshed, not navigated again.
    void theSameAddressIsRefreshedLayoutsGoToTheViewerFoldersClearReportsChangeNothing()
    {
        Pane o;
        o.pane.ShowPage(o.pane.PreviewNotAvailablePage());
        QVERIFY(o.browser->WaitUntilComplete());
        QSignalSpy navigated(o.browser, &BrowserControl::NavigateComplete2);
        QSignalSpy completed(o.browser, &BrowserControl::DocumentComplete);
        o.pane.ShowPage(o.pane.PreviewNotAvailablePage());
        QVERIFY(completed.wait(BrowserControl::DefaultWaitLimitMs));
        QCOMPARE(navigated.count(), 0);
        QCOMPARE(o.nodePages.size(), 1);
        QSignalSpy states(o.browser, &BrowserControl::CommandStateChange);
        o.type = 2;
        const PreviewItem layout{example(QStringLiteral("Microplate Layouts/Kinetic 384.mlo")), false};
        o.pane.ShowPreview(&layout);
        QTRY_VERIFY2(o.viewer->hasPlateLayout(), qPrintable(o.viewer->errorText()));
        QVERIFY(o.viewer->isVisible());
        QCOMPARE(o.viewer->plateLayout()->wellCount(), 384);
        QCOMPARE(states.count(), 0); // the browser is left alone

        o.type = 5;
        const PreviewItem report{example(QStringLiteral("Reports/ELISA IgG Summary Report.mht")), false};
        o.pane.ShowPreview(&report);
        o.pane.ShowPreview(nullptr);
        QVERIFY(o.viewer->isVisible());
        QCOMPARE(states.count(), 0);
        QCOMPARE(o.nodePages.size(), 1);

        const PreviewItem folder{o.folders.root(), true};
        o.pane.ShowPreview(&folder);
        QVERIFY(o.viewer->isHidden());
        QCOMPARE(o.pane.CurrentPage(), QStringLiteral("about:blank"));
        QCOMPARE(o.nodePages.last(), QStringLiteral("about:blank"));
        QVERIFY(o.browser->WaitUntilComplete());
        QCOMPARE(o.browser->LocationURL(), QUrl(QStringLiteral("about:blank")));
    }

    void aBrokenLayoutOrPreviewNeverHangsThePane()
    {
        Pane o;
        o.type = 2;
        const PreviewItem mht{example(QStringLiteral("Protocols/BCA Protein Assay.mht")), false};
        o.pane.ShowPreview(&mht);
        QTRY_VERIFY(!o.viewer->errorText().isEmpty());
        QVERIFY(o.viewer->isVisible() && !o.viewer->hasPlateLayout());

        o.type = 3;
        QByteArray junk(256 * 1024, '\0');
        for (int i = 0; i < junk.size(); ++i)
            junk[i] = char((i * 7919) % 251);
        const PreviewItem corrupt{o.protocol(10, junk), false};
        o.pane.setWaitUntilLoaded(true);
        o.pane.ShowPreview(&corrupt);
        QTRY_COMPARE_WITH_TIMEOUT(o.pane.CurrentPage(), o.paths.PreviewFileFor(corrupt.path), 5000);
        QVERIFY(o.browser->WaitUntilComplete());
    }

    // A pipe given a document's name, or its preview's, is never opened: the
    // pane shows the preview-not-available page. (Which files are not regular
    // is RegularFileTest's; a layout's, PlateLayoutTest's.)
    void pipesNeverHangThePane()
    {
        // A protocol beside a fresh preview; results whose preview is a pipe.
        for (const auto& [type, pipedPreview] : {std::pair{3, false}, {4, true}}) {
            Pane o;
            o.type = type;
            const QString document = o.folders.root() + "/Special.apr";
            const QString preview = o.paths.PreviewFileFor(document);
            const QString special = pipedPreview ? preview : document;
            test::writeFile(pipedPreview ? document : preview, "<p>fresh</p>");
            test::makeFifo(special);
            const test::PipeWatchdog watchdog(special);
            o.pane.setWaitUntilLoaded(true);
            const PreviewItem item{document, false};
            o.pane.ShowPreview(&item);
            QVERIFY2(!watchdog.released(), "the pane blocked on the pipe");
            QTRY_COMPARE_WITH_TIMEOUT(o.pane.CurrentPage(), o.pane.PreviewNotAvailablePage(), 5000);
        }
    }

    // A layout on a share that stops answering: the pane returns at once,
    // says that it waits, and draws the layout once the share answers.
    void aLayoutOnAShareThatDoesNotAnswerIsWaitedFor()
    {
        test::MountedShare share;
        if (!share.made())
            return;
        Pane o;
        o.type = 2;
        QVERIFY(QFile::copy(example("Microplate Layouts/Kinetic 384.mlo"), share.backing + "/Kinetic.mlo"));
        share.fuse.freeze();
        const PreviewItem layout{share.mount + "/Kinetic.mlo", false};
        QElapsedTimer answered;
        answered.start();
        o.pane.ShowPreview(&layout);
        QVERIFY(answered.elapsed() < 1000);
        QTRY_COMPARE_WITH_TIMEOUT(o.viewer->message(), FileListControl::waitingText(share.mount), 5000);
        QVERIFY(o.viewer->isVisible());
        share.fuse.thaw();
        QTRY_VERIFY_WITH_TIMEOUT(o.viewer->hasPlateLayout(), 10000);
        QVERIFY(o.viewer->message().isEmpty());
    }
};

NEBRA_WEBENGINE_TEST_MAIN(PreviewPaneTest)
#include "PreviewPaneTest.moc"
