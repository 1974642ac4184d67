#include "BrowserControl.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "ShortcutsBar.h"
#include "ToolDefinitions.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QDir>
#include <QFile>
#include <QTest>

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
        site.set(QStringLiteral("Settings/DiagnosticLogLevel"), 1);
        site.set(QStringLiteral("Settings/PlusCaption"), QStringLiteral("true"));
        MainWindow window;
        StartWatcher watcher(window);
        QCOMPARE(window.Load(), MainWindow::LoadOutcome::Loaded);
        QVERIFY(window.MainWindowLoaded());
        QCOMPARE(window.windowTitle(), QStringLiteral("Tallyo Plus"));
        BrowserControl& browser = part<BrowserControl>(window);
        QVERIFY(!browser.engineStarted());
        const QByteArray log = readFile(site.folders.stateFolder() + QStringLiteral("/Nebra/NebraLog.txt"));
        QVERIFY(!log.isEmpty());
        QList<QByteArray> lines = log.split('\n');
        QCOMPARE(lines.takeLast(), QByteArray()); // the file ends with a line end
        QCOMPARE(lines.at(2), QByteArray("Log trace: Block 1\r"));
        int traces = 0;
        int blocks = 0;
        for (const QByteArray& line : lines.mid(2)) {
            if (line.startsWith("Log trace: Block "))
                QCOMPARE(line, QByteArray("Log trace: Block ") + QByteArray::number(++blocks) + '\r');
            else
                QCOMPARE(line, QByteArray("Log trace: ") + QByteArray::number(++traces) + '\r');
        }
        // 28 of the start-up itself, 8 of the data folder creation and one for each of the
        // catalogue's 3 drivers, and 10 of building the tree with its welcome page; one block line
        // each for the start-up, the notifications, the shortcuts bar setting, the tree and the
        // shortcut icons, and two for the data folders.
        QCOMPARE(traces, 49);
        QCOMPARE(blocks, 7);

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
        QCOMPARE(window.windowTitle(), QStringLiteral("Tallyo Organiser"));
        QVERIFY(!QFile::exists(site.folders.stateFolder() + QStringLiteral("/Nebra/NebraLog.txt")));
        QCOMPARE(site.messages.count(), 1);
        QCOMPARE(site.messages.last().icon, MessageIcon::Warning);
        QVERIFY(site.messages.last().text.contains(QStringLiteral("Default settings are in effect")));
    }

    // A catalogue that is there but unusable is reported once, naming the
    // file and the reason; the Organiser starts without drivers.
    void anUnusableDriverCatalogueIsReported_data()
    {
        QTest::addColumn<QByteArray>("content"); // empty: a folder in the file's place
        QTest::addColumn<QString>("reason");
        // clang-format off
        QTest::newRow("not JSON") << QByteArray("{\"drivers\": [") << "is not a valid catalogue: ";
        QTest::newRow("no driver list") << QByteArray("{\"drivers\": 3}") << "is not a valid catalogue.";
        QTest::newRow("unreadable") << QByteArray() << "cannot be read: ";
        // clang-format on
    }

    void anUnusableDriverCatalogueIsReported()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, reason);
        LoadedOrganiser site;
        const QString catalogue = site.folders.root() + QStringLiteral("/drivers.json");
        if (content.isEmpty())
            QVERIFY(QDir().mkpath(catalogue));
        else
            writeFile(catalogue, content);
        site.set(QStringLiteral("Paths/DriverCatalogue"), catalogue);
        site.set(QStringLiteral("Settings/InstrumentDriversInUse"), true);
        const MessageRecorder& messages = site.messages;
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("^The driver catalogue \".*drivers.json\" ")));
        MainWindow& window = site.load();
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().icon, MessageIcon::Warning);
        QVERIFY2(messages.last().text.startsWith(QStringLiteral("The driver catalogue \"") + catalogue +
                                                 QStringLiteral("\" ") + reason),
                 qPrintable(messages.last().text));
        QVERIFY(!branch(window, DocumentType::ReadConfigurations).isValid());
    }

    void missingFileSystemComponentEndsWithItsBox()
    {
        LoadedOrganiser site;
        const MessageRecorder& messages = site.messages;
        MainWindow::Options options;
        options.fileSystemFactory = [] { return std::unique_ptr<FileSystemObject>(); };
        MainWindow window(options);
        QCOMPARE(window.Load(), MainWindow::LoadOutcome::Ended);
        QVERIFY(!window.MainWindowLoaded());
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().title, QStringLiteral("File Not Found"));
        QCOMPARE(messages.last().text,
                 QStringLiteral("SCRRUN.DLL cannot be found on this system.\r\n\r\n"
                                "Please install the Microsoft Scripting Runtime module.\r\n\r\n"
                                "Contact your system administrator or refer to the\r\n"
                                "software installation guide for more information."));
        QCOMPARE(messages.last().icon, MessageIcon::Critical);
        QCOMPARE(messages.last().buttons, int(MessageButton::Ok));
        // The unfinished window never stores its tree mode.
        window.close();
        QVERIFY(!site.stored(QStringLiteral("Settings/ExplorerModeFlag")).isValid());
    }

    void exitStoresTheTreeModeThroughTheNormalShutdown_data()
    {
        using Mode = FolderTreeControl::DisplayMode;
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<QString>("stored");
        // clang-format off
        QTest::newRow("explorer mode") << Mode::Explorer << QStringLiteral("true");
        QTest::newRow("tree mode") << Mode::Compact << QStringLiteral("false");
        // clang-format on
    }

    void exitStoresTheTreeModeThroughTheNormalShutdown()
    {
        QFETCH(FolderTreeControl::DisplayMode, mode);
        QFETCH(QString, stored);
        LoadedOrganiser site;
        {
            MainWindow& window = site.load();
            part<FolderTreeControl>(window).setDisplayMode(mode);
            tool(window, CommandId::Exit).trigger();
            QVERIFY(!window.isVisible());
            QCOMPARE(site.stored(QStringLiteral("Settings/ExplorerModeFlag")).toString(), stored);
        }
        // The next start shows the stored mode.
        QCOMPARE(part<FolderTreeControl>(site.load()).displayMode(), mode);
    }

    // Spaced buttons (flag 32) put blanks where the separators and Help were.
    void panesFollowTheirSettings_data()
    {
        QTest::addColumn<int>("flags");
        QTest::addColumn<bool>("drivers");
        QTest::addColumn<QStringList>("secondGroup");
        const QStringList kinds{"Microplate Layouts", "Protocols", "Results", "Reports"};
        // clang-format off
        QTest::newRow("normal, with drivers") << 0 << true << QStringList{"Organiser", "Instrument Data"} + kinds;
        QTest::newRow("spaced, without drivers") << 32 << false << QStringList{"Organiser"} + kinds;
        // clang-format on
    }

    void panesFollowTheirSettings()
    {
        QFETCH(int, flags);
        QFETCH(bool, drivers);
        QFETCH(QStringList, secondGroup);
        LoadedOrganiser site;
        site.set(QStringLiteral("Settings/ToolbarFlags"), flags);
        site.set(QStringLiteral("Settings/InstrumentDriversInUse"), drivers);
        site.set(QStringLiteral("Settings/ShowShortcutsBar"), !drivers);
        MainWindow& window = site.load();
        const QList<int> keys = part<FolderTreeControl>(window).buttonKeys();
        QCOMPARE(keys.mid(0, 3), (QList<int>{FolderTreeControl::BackButton, FolderTreeControl::ForwardButton,
                                             FolderTreeControl::UpButton}));
        QCOMPARE(keys.contains(treeButton(CommandId::HelpContext)), flags == 0);
        QCOMPARE(keys.contains(ToolDefinitions::FirstSpacer) && keys.contains(ToolDefinitions::LastSpacer),
                 flags != 0);
        QCOMPARE(keys.indexOf(treeButton(CommandId::Run)), keys.indexOf(treeButton(CommandId::New)) + 2);
        QVERIFY(part<FileListControl>(window).columns().contains(QStringLiteral("Comment")));
        ShortcutsBar& bar = part<ShortcutsBar>(window);
        QCOMPARE(bar.mode(), drivers ? ShortcutsBar::Mode::Collapsed : ShortcutsBar::Mode::Shown);
        QCOMPARE(bar.itemCaptions(0), (QStringList{"Organiser", "Protocols", "Results", "Reports"}));
        QCOMPARE(bar.itemCaptions(1), secondGroup);
        for (int item = 0; item < secondGroup.size(); ++item)
            QVERIFY(bar.itemHasIcon(1, item));
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowStartUpTest)
#include "MainWindowStartUpTest.moc"
