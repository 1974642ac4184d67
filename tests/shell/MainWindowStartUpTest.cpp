#include "BrowserControl.h"
#include "Controls.h"
#include "DocumentType.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"
#include "HelpBrowser.h"
#include "HelpTopics.h"
#include "HelpWindow.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "OptionsDialog.h"
#include "PanesGeometry.h"
#include "ShortcutsBar.h"
#include "ToolBarsControl.h"
#include "ToolDefinitions.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QAction>
#include <QCheckBox>
#include <QDesktopServices>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

#include <tuple>

using namespace nebra;
using namespace nebra::test;

namespace {

// Notes the window state at every Show event of the watched window and, at
// its first paint once loaded, whether its browser's engine had started and
// which panes were visible.
class StartWatcher : public QObject
{
public:
    explicit StartWatcher(MainWindow& window) : m_window(window) { window.installEventFilter(this); }
    QList<Qt::WindowStates> states;
    bool painted = false;
    bool engineStartedBefore = false;
    bool panesVisible = false;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show)
            states.append(m_window.windowState());
        if (event->type() == QEvent::Paint && !painted && m_window.MainWindowLoaded()) {
            painted = true;
            engineStartedBefore = part<BrowserControl>(m_window).engineStarted();
            panesVisible = part<FolderTreeControl>(m_window).isVisible() &&
                           part<FileListControl>(m_window).isVisible() &&
                           part<ShortcutsBar>(m_window).isVisible();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    MainWindow& m_window;
};

} // namespace

// Receives the addresses the desktop would open.
class AddressReceiver : public QObject
{
    Q_OBJECT
public:
    int opened = 0;
public Q_SLOTS:
    void open(const QUrl&) { ++opened; }
};

// The Organiser from start to exit: what a load writes and shows, what the
// settings and the Options command change, what is stored at the end, and
// that every command a user can reach from the menus or the tool bar does
// something the user can see (a box, a started program, a help topic, an
// opened address, the window closing) or is disabled or hidden.
class MainWindowStartUpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The log holds the designed milestones; the window with its tree, list
    // and shortcuts bar is painted before the web engine starts, which then
    // follows and loads the welcome page.
    void aLoadWritesItsMilestonesAndPaintsBeforeTheWebEngineStarts()
    {
        LoadedOrganiser site;
        site.set("Settings/DiagnosticLogLevel", 1);
        site.set("Settings/PlusCaption", "true");
        MainWindow window;
        StartWatcher watcher(window);
        QCOMPARE(window.Load(), MainWindow::LoadOutcome::Loaded);
        QVERIFY(window.MainWindowLoaded());
        QCOMPARE(window.windowTitle(), "Tallyo Plus");
        BrowserControl& browser = part<BrowserControl>(window);
        QVERIFY(!browser.engineStarted());
        const QByteArray log = readFile(site.folders.stateFolder() + "/Nebra/NebraLog.txt");
        // 28 of the start-up itself, 8 of the data folder creation and one for each of the
        // catalogue's 3 drivers, and 10 of building the tree with its welcome page; one block line
        // each for the start-up, the notifications, the shortcuts bar setting, the tree and the
        // shortcut icons, and two for the data folders. (The lines' form: DiagnosticLogTest.)
        QCOMPARE(log.count("Log trace: Block "), 7);
        QCOMPARE(log.count("Log trace: "), 49 + 7);
        QVERIFY(log.contains("Log trace: 49\r\n"));

        QTRY_VERIFY_WITH_TIMEOUT(browser.engineStarted(), 10000);
        QVERIFY(watcher.painted);
        QVERIFY(!watcher.engineStartedBefore);
        QVERIFY(watcher.panesVisible);
        QTRY_COMPARE_WITH_TIMEOUT(browser.ReadyState(), int(BrowserControl::Complete), 10000);
        QVERIFY(browser.LocationURL().fileName().endsWith(QLatin1String(".mht")));
    }

    // With an unusable settings file every setting has its default: logging off.
    void aPlainStartWarnsOfUnusableSettingsAndIsFirstShownMaximised()
    {
        LoadedOrganiser site;
        writeFile(site.folders.settingsFile(), QByteArray("\177ELF\002\0\0binary", 13));
        MainWindow window;
        StartWatcher watcher(window);
        QCOMPARE(window.Load(), MainWindow::LoadOutcome::Loaded);
        QVERIFY(!watcher.states.isEmpty());
        QVERIFY(watcher.states.first() & Qt::WindowMaximized);
        QCOMPARE(window.windowTitle(), "Tallyo Organiser");
        QVERIFY(!QFile::exists(site.folders.stateFolder() + "/Nebra/NebraLog.txt"));
        QCOMPARE(site.messages.count(), 1);
        QCOMPARE(site.messages.last().icon, MessageIcon::Warning);
        QVERIFY(site.messages.last().text.contains("Default settings are in effect"));
    }

    // A catalogue that is there but unusable is reported once, naming the
    // file and the reason; the Organiser starts without drivers. Exit stores
    // the tree's mode. (Each reason
    // is the catalogue reader's, asserted by WizardCatalogueTest over the same reader.)
    void anUnusableDriverCatalogueIsReported()
    {
        LoadedOrganiser site;
        const QString catalogue = site.folders.root() + "/drivers.json";
        writeFile(catalogue, "{\"drivers\": [");
        site.set("Paths/DriverCatalogue", catalogue);
        site.set("Settings/InstrumentDriversInUse", true);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^The driver catalogue \".*drivers.json\" "));
        MainWindow& window = site.load();
        QCOMPARE(site.messages.count(), 1);
        QCOMPARE(site.messages.last().icon, MessageIcon::Warning);
        QVERIFY2(site.messages.last().text.startsWith("The driver catalogue \"" + catalogue +
                                                      "\" is not a valid catalogue: "),
                 qPrintable(site.messages.last().text));
        QVERIFY(!branch(window, DocumentType::ReadConfigurations).isValid());

        // Exit stores the tree's mode through the normal shutdown; the next start shows it.
        writeFile(catalogue, "{\"drivers\": []}");
        using Mode = FolderTreeControl::DisplayMode;
        MainWindow* shown = &window;
        for (const auto& [mode, stored] : {std::pair(Mode::Explorer, "true"), {Mode::Compact, "false"}}) {
            part<FolderTreeControl>(*shown).setDisplayMode(mode);
            tool(*shown, CommandId::Exit).trigger();
            QVERIFY(!shown->isVisible());
            QCOMPARE(site.stored("Settings/ExplorerModeFlag").toString(), QLatin1String(stored));
            shown = &site.load();
            QCOMPARE(part<FolderTreeControl>(*shown).displayMode(), mode);
        }
    }

    // A start while another copy runs asks that copy to show itself and ends;
    // so does one without the file system component, with its box.
    void aSecondStartOrAMissingComponentEndsTheStart()
    {
        LoadedOrganiser site;
        QProcess first;
        first.start(QStringLiteral(PROBE_PATH), {QCoreApplication::applicationName() + '-' +
                                                 QString::number(QCoreApplication::applicationPid())});
        QVERIFY(first.waitForReadyRead(20000));
        QCOMPARE(site.start(), MainWindow::LoadOutcome::DuplicateInstance);
        QVERIFY(first.waitForFinished(20000));
        QCOMPARE(first.readAllStandardOutput().simplified(), QByteArray("primary activated"));

        const MessageRecorder& messages = site.messages;
        MainWindow::Options options;
        options.fileSystemFactory = [] { return std::unique_ptr<FileSystemObject>(); };
        MainWindow window(options);
        QCOMPARE(window.Load(), MainWindow::LoadOutcome::Ended);
        QVERIFY(!window.MainWindowLoaded());
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().title + '|' + messages.last().text,
                 QStringLiteral("File Not Found|SCRRUN.DLL cannot be found on this system.\r\n\r\n"
                                "Please install the Microsoft Scripting Runtime module.\r\n\r\n"
                                "Contact your system administrator or refer to the\r\n"
                                "software installation guide for more information."));
        QCOMPARE(messages.last().icon, MessageIcon::Critical);
        QCOMPARE(messages.last().buttons, int(MessageButton::Ok));
        // The unfinished window never stores its tree mode.
        window.close();
        QVERIFY(!site.stored("Settings/ExplorerModeFlag").isValid());
    }

    // Normal with drivers; spaced buttons (flag 32) without, blanks where the separators and Help were.
    void panesFollowTheirSettings()
    {
        const QStringList kinds{"Microplate Layouts", "Protocols", "Results", "Reports"};
        for (const auto& [flags, drivers, secondGroup] :
             {std::tuple(0, true, QStringList{"Organiser", "Instrument Data"} + kinds),
              {32, false, QStringList{"Organiser"} + kinds}}) {
            LoadedOrganiser site;
            site.set("Settings/ToolbarFlags", flags);
            site.set("Settings/InstrumentDriversInUse", drivers);
            site.set("Settings/ShowShortcutsBar", !drivers);
            MainWindow& window = site.load();
            const QList<int> keys = part<FolderTreeControl>(window).buttonKeys();
            QCOMPARE(keys.mid(0, 3),
                     (QList<int>{FolderTreeControl::BackButton, FolderTreeControl::ForwardButton,
                                 FolderTreeControl::UpButton}));
            QCOMPARE(keys.contains(treeButton(CommandId::HelpContext)), flags == 0);
            QCOMPARE(keys.contains(ToolDefinitions::FirstSpacer) &&
                         keys.contains(ToolDefinitions::LastSpacer),
                     flags != 0);
            QCOMPARE(keys.indexOf(treeButton(CommandId::Run)), keys.indexOf(treeButton(CommandId::New)) + 2);
            QVERIFY(part<FileListControl>(window).columns().contains("Comment"));
            ShortcutsBar& bar = part<ShortcutsBar>(window);
            QCOMPARE(bar.mode(), drivers ? ShortcutsBar::Mode::Collapsed : ShortcutsBar::Mode::Shown);
            QCOMPARE(bar.itemCaptions(0), (QStringList{"Organiser", "Protocols", "Results", "Reports"}));
            QCOMPARE(bar.itemCaptions(1), secondGroup);
            for (int item = 0; item < secondGroup.size(); ++item)
                QVERIFY(bar.itemHasIcon(1, item));
        }
    }

    // The Options command in the running Organiser: the view options, the
    // parent directory and the driver reach the panes, the tree and the
    // settings, and the panes come back as they were left after a restart.
    void optionsChangeTheRunningOrganiser()
    {
        // Two complete data trees, "Lab Data" (the current parent directory) and "Other", and a
        // catalogue of two drivers.
        LoadedOrganiser site;
        const QString data = site.folders.root() + "/Lab Data";
        const QString other = site.folders.root() + "/Other";
        for (const QString& parent : {data, other})
            for (const char* kind : {"Microplate Layouts", "Results", "Reports", "Protocols/Batch 1",
                                     "Read Configurations/Reader One", "Read Configurations/Reader Two"})
                makeFolder(parent + QStringLiteral("/My Assays/") + QLatin1String(kind));
        writeFile(other + "/My Assays/Read Configurations/Reader Two/plate.daq");
        const QString catalogue = site.folders.root() + "/drivers.json";
        writeFile(catalogue, R"({"drivers":[{"FullName":"Reader One"},{"FullName":"Reader Two"}]})");
        site.set("Paths/DriverCatalogue", catalogue);
        {
            MainWindow& window = site.load();
            FolderTreeControl& tree = part<FolderTreeControl>(window);
            tree.setCurrentNode(tree.nodes().findFolderPath(data + "/My Assays/Protocols/Batch 1"));
            const QSize list = part<FileListControl>(window).size();

            DialogScript& script = site.dialogs;
            script.then([&](QDialog& dialog) {
                control<QCheckBox>(dialog, "chkShortcuts")->setChecked(false);
                control<QCheckBox>(dialog, "chkPreview")->setChecked(false);
                control<QLineEdit>(dialog, "txtParentDirectoryPath")->setText(other);
                control<QTabWidget>(dialog, "tabOptions")->setCurrentIndex(OptionsDialog::DriversTab);
                control<QListWidget>(dialog, "lstHLDs")->setCurrentRow(1);
                control<QPushButton>(dialog, "OKButton")->click();
                return dialog.result();
            });
            tool(window, CommandId::Options).trigger();
            QCOMPARE(site.messages.count(), 0);
            OptionsDialog* dialog = window.findChild<OptionsDialog*>();
            QVERIFY(dialog && dialog->isHidden());

            // The panes left take the room of the hidden ones.
            QVERIFY(part<ShortcutsBar>(window).isHidden());
            QVERIFY(window.findChild<QWidget*>("previewArea")->isHidden());
            QTRY_VERIFY_WITH_TIMEOUT(part<FileListControl>(window).width() > list.width(), 2000);
            QTRY_VERIFY_WITH_TIMEOUT(part<FileListControl>(window).height() > list.height(), 2000);
            // The tree was built anew and shows the same place under the new parent.
            // The new tree is read on the readers: the place is selected once it has arrived.
            QTRY_COMPARE_WITH_TIMEOUT(tree.currentNode().folderPath(), other + "/My Assays/Protocols/Batch 1",
                                      5000);
            QCOMPARE(branch(window, DocumentType::ReadConfigurations).folderPath(),
                     other + "/My Assays/Read Configurations/Reader Two");
            QCOMPARE(branch(window, DocumentType::ReadConfigurations).text(), "Reader Two");
            // The watches moved with the parent: folders made there appear in every branch.
            const QString run = other + "/My Assays/Results/Run 9";
            const QString plates = other + "/My Assays/Microplate Layouts/Plates 9";
            makeFolder(run);
            makeFolder(plates);
            QTRY_VERIFY_WITH_TIMEOUT(tree.nodes().findFolderPath(run).isValid() &&
                                         tree.nodes().findFolderPath(plates).isValid(),
                                     5000);
            // (A driver change with the instrument node selected keeps it selected: OrganiserTreeTest.)

            // A forced log-out while the dialog, the same again, is open closes and unloads it.
            const QPointer<OptionsDialog> open = dialog;
            bool same = false;
            script.then([&](QDialog& shown) {
                same = &shown == dialog;
                shown.show();
                window.UnloadAllExceptMain();
                return shown.result();
            });
            tool(window, CommandId::Options).trigger();
            QVERIFY(same);
            QTRY_VERIFY_WITH_TIMEOUT(!open, 2000);
            window.close();
        }
        QCOMPARE(site.stored("Paths/ParentDirectory").toString(), other);
        QCOMPARE(site.stored("Settings/CurrentHLD").toInt(), 2);

        MainWindow& window = site.load();
        QVERIFY(part<ShortcutsBar>(window).isHidden());
        QVERIFY(window.findChild<QWidget*>("previewArea")->isHidden());
        QVERIFY(part<FolderTreeControl>(window).isVisible());

        // The resize rule on a real window: the panes follow the window above
        // the thresholds, keep their size below them and when minimised.
        // The first change of state after loading is taken back, the second one holds.
        window.showNormal();
        window.showNormal();
        QTRY_VERIFY_WITH_TIMEOUT(!window.isMaximized(), 2000);
        window.resize(900, 640);
        QTRY_COMPARE_WITH_TIMEOUT(panes(window).width(), window.centralWidget()->width(), 2000);
        const PanesGeometry geometry(window.logicalDpiX(), window.logicalDpiY());
        QCOMPARE(panes(window).y(), geometry.topPixels());
        QVERIFY(panes(window).geometry().bottom() <= window.centralWidget()->height());
        const QSize large = panes(window).size();

        // The menu, tool and status bars keep the window above the thresholds
        // unless its minimum size is lifted, as a window manager may do.
        window.setMinimumSize(1, 1);
        const int belowHeight = geometry.toPixelsY(PanesGeometry::MinimumOuterHeight) - 2;
        const int belowWidth = geometry.toPixelsX(PanesGeometry::MinimumOuterWidth) - 2;
        for (const QSize below : {QSize(700, belowHeight), QSize(belowWidth, 500)}) {
            window.resize(below - (window.frameGeometry().size() - window.size()));
            QTRY_COMPARE_WITH_TIMEOUT(window.frameGeometry().size(), below, 2000);
            QCOMPARE(panes(window).size(), large);
        }

        window.resize(1000, 700);
        QTRY_COMPARE_WITH_TIMEOUT(panes(window).width(), window.centralWidget()->width(), 2000);
        const QRect before = panes(window).geometry();
        window.showMinimized();
        QTRY_VERIFY_WITH_TIMEOUT(window.isMinimized(), 2000);
        QCOMPARE(panes(window).geometry(), before);
        window.showNormal();
        QTRY_VERIFY_WITH_TIMEOUT(!window.isMinimized(), 2000);
        QCOMPARE(panes(window).geometry(), before);
        window.close();
    }

    void everyReachableCommandDoesSomethingOrIsDisabled()
    {
        LoadedOrganiser site;
        writeFile(site.doc("Protocols/Elisa.apr"));
        MainWindow& window = site.load();
        const MessageRecorder& messages = site.messages;
        // A protocol selected: the document commands have something to act on.
        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Protocols));
        AddressReceiver addresses;
        QDesktopServices::setUrlHandler("https", &addresses, "open");

        // The IDs in the menus and on the tool bar, each once, Exit last. Options and New open
        // modal dialogs; their own main-window tests answer them and check what they do.
        QStringList ids;
        for (const auto& [menu, items] : ToolDefinitions::menus())
            ids += items;
        ids += ToolDefinitions::toolBarItems();
        ids.removeDuplicates();
        for (const char* id : {ToolBarsControl::Separator, "ID_Options", "ID_New", "ID_Exit"})
            ids.removeAll(QLatin1String(id));
        for (const QString& id : ids << "ID_Exit") {
            QAction* action = part<ToolBarsControl>(window).action(id);
            QVERIFY2(action, qPrintable(id));
            if (!action->isEnabled() || !part<ToolBarsControl>(window).isToolVisible(id))
                continue;
            const int boxes = messages.count();
            const int opened = addresses.opened;
            if (HelpWindow* help = shownWindow<HelpWindow>())
                help->close();
            action->trigger();
            const bool seen = messages.count() > boxes || addresses.opened > opened ||
                              shownWindow<HelpWindow>() || !window.isVisible();
            QVERIFY2(seen, qPrintable(id + " is enabled but does nothing"));
        }
        QDesktopServices::unsetUrlHandler("https");
        QVERIFY(!window.isVisible()); // Exit came last and closed the window
    }

    // Every help command reaches its page in the help window, which goes with the program. (The
    // tree's Help button runs the same command: CommandDispatcherTest; the page of each folder:
    // HelpSystemTest.)
    void helpCommandsOpenTheirPages()
    {
        LoadedOrganiser site;
        MainWindow& window = site.load();
        // The command, the kind of folder selected first and the page.
        // clang-format off
        const QList<std::tuple<QString, DocumentType, QString>> rows{
            {"ID_HelpContext", DocumentType::Reports, "reports.html"},
            {"ID_GettingStarted", DocumentType::Protocols, "getting-started.html"},
            {"ID_ContentsIndex", DocumentType::Results, "index.html"}};
        // clang-format on
        for (const auto& [command, folder, page] : rows) {
            part<FolderTreeControl>(window).setCurrentNode(branch(window, folder));
            QVERIFY2(part<ToolBarsControl>(window).isToolEnabled(command), qPrintable(command));
            part<ToolBarsControl>(window).action(command)->trigger();
            HelpWindow* help = shownWindow<HelpWindow>();
            QVERIFY2(help, qPrintable(command));
            QCOMPARE(help->browser().source(), HelpTopics::guideUrl(page));
        }
        QCOMPARE(site.messages.count(), 0);
        window.close(); // the help window goes with the program (at a forced log-out: SecuritySessionTest)
        QVERIFY(!shownWindow<HelpWindow>());
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowStartUpTest)
#include "MainWindowStartUpTest.moc"
