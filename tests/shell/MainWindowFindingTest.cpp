#include "BrowserControl.h"
#include "FileListControl.h"
#include "FileView.h"
#include "FolderTreeControl.h"
#include "ListingWait.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "RecordingPrograms.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QAction>
#include <QMenu>
#include <QWebEngineScript>

using namespace nebra;
using namespace nebra::test;

namespace {

// The Organiser with two protocols and a layout, the assay application recording its starts.
struct Finding : LoadedOrganiser
{
    RecordingPrograms programs;

    Finding()
    {
        set("Paths/AssayApplicationPath", programs.program(QStringLiteral("Assay Application")));
        for (const char* name : {"Protocols/BCA Protein Assay.apr", "Protocols/ELISA IgG Quantitation.apr",
                                 "Microplate Layouts/Kinetic 384.mlo"})
            writeFile(doc(QLatin1String(name)));
    }

    QMenu* recentMenu() const
    {
        for (QAction* action : part<ToolBarsControl>(*window).menu(QStringLiteral("ID_File"))->actions())
            if (action->menu() && action->menu()->accessibleName() == QLatin1String("Recent documents"))
                return action->menu();
        return nullptr;
    }

    void open(const QString& path)
    {
        part<FileView>(*window).ShowDocument(path);
        QVERIFY(waitForListing(part<FileListControl>(*window)));
        QCOMPARE(part<FileListControl>(*window).firstSelectedItem().path(), path);
        tool(*window, CommandId::Open).trigger();
        programs.waitForRecords(1);
        programs.clear();
    }

    int welcomeRecentLinks()
    {
        int links = -1;
        part<BrowserControl>(*window).view()->page()->runJavaScript(
            QStringLiteral("document.querySelectorAll('#organiser-recent a').length"),
            QWebEngineScript::ApplicationWorld, [&](const QVariant& result) { links = result.toInt(); });
        if (!QTest::qWaitFor([&] { return links >= 0; }, 10000))
            qWarning("The page did not answer");
        return links;
    }
};

} // namespace

// Finding documents in the loaded main window: the filter box, the recent
// documents in the File menu and on the welcome page, and the file list's
// "Show in file manager"; each can be switched off.
class MainWindowFindingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachAidCanBeSwitchedOff_data()
    {
        QTest::addColumn<bool>("on");
        // clang-format off
        QTest::newRow("on, as by default") << true;
        QTest::newRow("switched off") << false;
        // clang-format on
    }

    void eachAidCanBeSwitchedOff()
    {
        QFETCH(bool, on);
        Finding o;
        if (!on)
            for (const char* key : {"ShowFileListFilter", "ShowRecentDocuments", "ShowInFileManager"})
                o.set(QStringLiteral("Settings/") + QLatin1String(key), false);
        MainWindow& window = o.load();
        QCOMPARE(part<FileListControl>(window).filterBox()->isVisible(), on);
        QCOMPARE(o.recentMenu() != nullptr, on);
        QCOMPARE(part<FileListControl>(window).findChild<QAction*>(QStringLiteral("ShowInFileManager")) !=
                     nullptr,
                 on);
    }

    // Opening documents fills File > Recent, newest first; choosing one
    // shows it in its folder, selected; the welcome page lists them too and
    // its links do the same.
    void recentDocumentsAreShownInTheirFolders()
    {
        Finding o;
        MainWindow& window = o.load();
        const QString bca = o.doc("Protocols/BCA Protein Assay.apr");
        const QString elisa = o.doc("Protocols/ELISA IgG Quantitation.apr");
        o.open(bca);
        o.open(elisa);
        QMenu* menu = o.recentMenu();
        QVERIFY(menu);
        Q_EMIT menu->aboutToShow();
        QCOMPARE(menu->actions().size(), 2);
        QCOMPARE(menu->actions().at(1)->text(), QStringLiteral("&2  BCA Protein Assay.apr"));

        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Layouts));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        part<FileListControl>(window).setNameFilter(QStringLiteral("Kinetic"));
        menu->actions().at(1)->trigger();
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QCOMPARE(part<FolderTreeControl>(window).currentNode().folderPath(), o.doc("Protocols"));
        QCOMPARE(part<FileListControl>(window).selectedCount(), 1);
        QCOMPARE(part<FileListControl>(window).firstSelectedItem().path(), bca);

        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::None));
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QTRY_COMPARE_WITH_TIMEOUT(o.welcomeRecentLinks(), 2, 10000);
        bool cancel = false;
        Q_EMIT part<BrowserControl>(window).BeforeNavigate2(QUrl(QStringLiteral("organiser:%5CRecent%201")),
                                                            cancel);
        QVERIFY(cancel);
        QTRY_COMPARE_WITH_TIMEOUT(part<FileListControl>(window).firstSelectedItem().path(), elisa, 5000);

        // A vanished document leaves the lists; one outside the tree is reported.
        QVERIFY(QFile::remove(elisa));
        Q_EMIT menu->aboutToShow();
        QTRY_COMPARE(menu->actions().size(), 1);
        part<FileView>(window).ShowDocument(o.folders.root() + "/elsewhere.apr");
        QVERIFY(waitForListing(part<FileListControl>(window)));
        QCOMPARE(o.messages.count(), 1);
        QCOMPARE(o.messages.last().title, QStringLiteral("Recent Documents"));
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowFindingTest)
#include "MainWindowFindingTest.moc"
