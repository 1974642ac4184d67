#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "MainWindow.h"
#include "MessageRecorder.h"
#include "OrganiserTree.h"
#include "ShortcutsBar.h"
#include "TestFiles.h"
#include "ToolBarsControl.h"
#include "UserFolders.h"
#include "WebEngineTestMain.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTest>

using namespace nebra;
using nebra::test::MessageRecorder;
using nebra::test::UserFolders;
using nebra::test::writeFile;

namespace {

// Records the window state at every Show event of the watched window.
class ShowWatcher : public QObject
{
public:
    QList<Qt::WindowStates> states;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show)
            states.append(static_cast<QWidget*>(watched)->windowState());
        return QObject::eventFilter(watched, event);
    }
};

void writeSettings(const UserFolders& folders, const QList<QPair<QString, QVariant>>& values)
{
    QSettings ini(folders.settingsFile(), QSettings::IniFormat);
    ini.setValue(QStringLiteral("Paths/ParentDirectory"), folders.root() + QStringLiteral("/Data"));
    for (const auto& [key, value] : values)
        ini.setValue(key, value);
}

QVariant storedValue(const UserFolders& folders, const QString& key)
{
    return QSettings(folders.settingsFile(), QSettings::IniFormat).value(key);
}

} // namespace

class MainWindowStartUpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loadWritesTheDesignedMilestones()
    {
        UserFolders folders;
        writeSettings(folders, {{QStringLiteral("Settings/DiagnosticLogLevel"), 1},
                                {QStringLiteral("Settings/PlusCaption"), QStringLiteral("true")}});
        MainWindow window;
        QCOMPARE(window.Load(), MainWindow::LoadOutcome::Loaded);
        QVERIFY(window.MainWindowLoaded());
        QCOMPARE(window.windowTitle(), QStringLiteral("Tallyo Plus"));

        QFile log(folders.stateFolder() + QStringLiteral("/Nebra/NebraLog.txt"));
        QVERIFY(log.open(QIODevice::ReadOnly));
        QList<QByteArray> lines = log.readAll().split('\n');
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
        // 28 of the start-up itself, 8 of the data folder creation and 10 of building the tree
        // with its welcome page; one block line each for the start-up, the notifications, the
        // shortcuts bar setting, the tree and the shortcut icons, and two for the data folders.
        QCOMPARE(traces, 46);
        QCOMPARE(blocks, 7);
    }

    // With an unusable settings file every setting has its default: logging off.
    void aPlainStartWarnsOfUnusableSettingsAndIsFirstShownMaximised()
    {
        UserFolders folders;
        writeFile(folders.settingsFile(), QByteArray("\177ELF\002\0\0binary", 13));
        MessageRecorder messages;
        MainWindow window;
        ShowWatcher watcher;
        window.installEventFilter(&watcher);
        QCOMPARE(window.Load(), MainWindow::LoadOutcome::Loaded);
        QVERIFY(!watcher.states.isEmpty());
        QVERIFY(watcher.states.first() & Qt::WindowMaximized);
        QCOMPARE(window.windowTitle(), QStringLiteral("Tallyo Organiser"));
        QVERIFY(!QFile::exists(folders.stateFolder() + QStringLiteral("/Nebra/NebraLog.txt")));
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().icon, MessageIcon::Warning);
        QVERIFY(messages.last().text.contains(QStringLiteral("Default settings are in effect")));
    }

    // A catalogue that is there but unusable is reported once, naming the
    // file and the reason; the Organiser starts without drivers.
    void anUnusableDriverCatalogueIsReported_data()
    {
        QTest::addColumn<QByteArray>("content"); // empty: a folder in the file's place
        QTest::addColumn<QString>("reason");
        QTest::newRow("not JSON") << QByteArray("{\"drivers\": [") << "is not a valid catalogue: ";
        QTest::newRow("no driver list") << QByteArray("{\"drivers\": 3}") << "is not a valid catalogue.";
        QTest::newRow("unreadable") << QByteArray() << "cannot be read: ";
    }

    void anUnusableDriverCatalogueIsReported()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, reason);
        UserFolders folders;
        const QString catalogue = folders.root() + QStringLiteral("/drivers.json");
        if (content.isEmpty())
            QVERIFY(QDir().mkpath(catalogue));
        else
            writeFile(catalogue, content);
        writeSettings(folders, {{QStringLiteral("Paths/DriverCatalogue"), catalogue},
                                {QStringLiteral("Settings/InstrumentDriversInUse"), true}});
        MessageRecorder messages;
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("^The driver catalogue \".*drivers.json\" ")));
        MainWindow window;
        QCOMPARE(window.Load(), MainWindow::LoadOutcome::Loaded);
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().icon, MessageIcon::Warning);
        QVERIFY2(messages.last().text.startsWith(QStringLiteral("The driver catalogue \"") + catalogue +
                                                 QStringLiteral("\" ") + reason),
                 qPrintable(messages.last().text));
        QVERIFY(!window.organiserTree().instrumentNode().isValid());
    }

    void missingFileSystemComponentEndsWithItsBox()
    {
        UserFolders folders;
        writeSettings(folders, {});
        MessageRecorder messages;
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
        QVERIFY(!storedValue(folders, QStringLiteral("Settings/ExplorerModeFlag")).isValid());
    }

    void exitStoresTheTreeModeThroughTheNormalShutdown_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("stored");
        QTest::newRow("explorer mode") << 2 << QStringLiteral("true");
        QTest::newRow("tree mode") << 1 << QStringLiteral("false");
    }

    void exitStoresTheTreeModeThroughTheNormalShutdown()
    {
        QFETCH(int, mode);
        QFETCH(QString, stored);
        UserFolders folders;
        writeSettings(folders, {});
        {
            MainWindow window;
            QCOMPARE(window.Load(), MainWindow::LoadOutcome::Loaded);
            window.folderTree().setDisplayMode(mode);
            window.toolBars().action(QStringLiteral("ID_Exit"))->trigger();
            QVERIFY(!window.isVisible());
            QCOMPARE(storedValue(folders, QStringLiteral("Settings/ExplorerModeFlag")).toString(), stored);
        }
        // The next start shows the stored mode.
        MainWindow next;
        QCOMPARE(next.Load(), MainWindow::LoadOutcome::Loaded);
        QCOMPARE(next.folderTree().displayMode(), mode);
    }

    void panesFollowTheirSettings_data()
    {
        QTest::addColumn<int>("flags");
        QTest::addColumn<bool>("drivers");
        QTest::addColumn<QList<int>>("buttons");
        QTest::addColumn<QStringList>("secondGroup");
        QTest::newRow("normal, with drivers")
            << 0 << true << QList<int>{501, 500, 504, 609, 605, 606, 607, 609, 608, 609}
            << QStringList{"Organiser", "Instrument Data", "Microplate Layouts",
                           "Protocols", "Results",         "Reports"};
        QTest::newRow("spaced, without drivers")
            << 32 << false << QList<int>{501, 500, 504, 600, 601, 602, 603, 604, 605, 606, 607}
            << QStringList{"Organiser", "Microplate Layouts", "Protocols", "Results", "Reports"};
    }

    void panesFollowTheirSettings()
    {
        QFETCH(int, flags);
        QFETCH(bool, drivers);
        QFETCH(QList<int>, buttons);
        QFETCH(QStringList, secondGroup);
        UserFolders folders;
        writeSettings(folders, {{QStringLiteral("Settings/ToolbarFlags"), flags},
                                {QStringLiteral("Settings/InstrumentDriversInUse"), drivers},
                                {QStringLiteral("Settings/ShowShortcutsBar"), !drivers}});
        MainWindow window;
        QCOMPARE(window.Load(), MainWindow::LoadOutcome::Loaded);
        QCOMPARE(window.folderTree().buttonKeys(), buttons);
        QVERIFY(window.fileList().columns().contains(QStringLiteral("Comment")));
        ShortcutsBar& bar = window.shortcutsBar();
        QCOMPARE(bar.mode(), drivers ? 2 : 0);
        QCOMPARE(bar.itemCaptions(0), (QStringList{"Organiser", "Protocols", "Results", "Reports"}));
        QCOMPARE(bar.itemCaptions(1), secondGroup);
        for (int item = 0; item < secondGroup.size(); ++item)
            QVERIFY(bar.itemHasIcon(1, item));
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowStartUpTest)
#include "MainWindowStartUpTest.moc"
