#include "DocumentType.h"
#include "FolderTreeControl.h"
#include "HelpBrowser.h"
#include "HelpTopics.h"
#include "HelpWindow.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "ToolBarsControl.h"
#include "ToolDefinitions.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QAction>
#include <QDesktopServices>
#include <QTest>

#include <tuple>

using namespace nebra;
using namespace nebra::test;

// Receives the addresses the desktop would open.
class AddressReceiver : public QObject
{
    Q_OBJECT
public:
    int opened = 0;
public Q_SLOTS:
    void open(const QUrl&) { ++opened; }
};

// Every command a user can reach from the menus or the tool bar either does
// something the user can see (a box, a started program, a help topic, an
// opened address, the window closing) or is disabled or hidden.
class MainWindowCommandsTest : public QObject
{
    Q_OBJECT

    // The IDs in the menus and on the tool bar, each once, Exit last.
    static QStringList reachableIds()
    {
        QStringList ids;
        for (const auto& [menu, items] : ToolDefinitions::menus())
            ids += items;
        ids += ToolDefinitions::toolBarItems();
        ids.removeAll(QLatin1String(ToolBarsControl::Separator));
        ids.removeDuplicates();
        // These two open modal dialogs (Options, the wizard picker); their own
        // main-window tests answer the dialogs and check what they do.
        ids.removeAll(QStringLiteral("ID_Options"));
        ids.removeAll(QStringLiteral("ID_New"));
        ids.removeAll(QStringLiteral("ID_Exit"));
        ids.append(QStringLiteral("ID_Exit"));
        return ids;
    }

private Q_SLOTS:
    void everyReachableCommandDoesSomethingOrIsDisabled()
    {
        LoadedOrganiser site;
        writeFile(site.doc(QStringLiteral("Protocols/Elisa.apr")));
        MainWindow& window = site.load();
        const MessageRecorder& messages = site.messages;
        // A protocol selected: the document commands have something to act on.
        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Protocols));
        AddressReceiver addresses;
        QDesktopServices::setUrlHandler(QStringLiteral("https"), &addresses, "open");

        for (const QString& id : reachableIds()) {
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
            QVERIFY2(seen, qPrintable(id + QStringLiteral(" is enabled but does nothing")));
        }
        QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
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

NEBRA_WEBENGINE_TEST_MAIN(MainWindowCommandsTest)
#include "MainWindowCommandsTest.moc"
