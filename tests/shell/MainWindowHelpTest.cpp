#include "DocumentType.h"
#include "FolderTreeControl.h"
#include "HelpBrowser.h"
#include "HelpTopics.h"
#include "HelpWindow.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QTabWidget>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

namespace {

// The help window on the screen, if any.
HelpWindow* shownHelp()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* help = qobject_cast<HelpWindow*>(window); help && help->isVisible())
            return help;
    }
    return nullptr;
}

} // namespace

// Every help command of the loaded Organiser reaches its page in the help
// window, and the window goes with the program.
class MainWindowHelpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void helpCommandsOpenTheirPages_data()
    {
        QTest::addColumn<QString>("command");     // a tool, or "tree" for the tree's Help button
        QTest::addColumn<DocumentType>("folder"); // the kind of folder selected first
        QTest::addColumn<QString>("page");
        // clang-format off
        QTest::newRow("F1 on Reports") << "ID_HelpContext" << DocumentType::Reports << "reports.html";
        QTest::newRow("Getting Started") << "ID_GettingStarted" << DocumentType::Protocols << "getting-started.html";
        QTest::newRow("Contents and Index") << "ID_ContentsIndex" << DocumentType::Results << "index.html";
        QTest::newRow("the tree's Help on Protocols") << "tree" << DocumentType::Protocols << "protocols.html";
        // clang-format on
    }

    void helpCommandsOpenTheirPages()
    {
        QFETCH(QString, command);
        QFETCH(DocumentType, folder);
        QFETCH(QString, page);
        LoadedOrganiser site;
        MainWindow& window = site.load();
        part<FolderTreeControl>(window).setCurrentNode(branch(window, folder));
        if (command == "tree") {
            part<FolderTreeControl>(window).clickButton(treeButton(CommandId::HelpContext));
        } else {
            QVERIFY(part<ToolBarsControl>(window).isToolEnabled(command));
            part<ToolBarsControl>(window).action(command)->trigger();
        }
        HelpWindow* help = shownHelp();
        QVERIFY(help);
        QCOMPARE(help->browser().source(), HelpTopics::guideUrl(page));
        QCOMPARE(site.messages.count(), 0);
        window.close();
    }

    void theHelpWindowGoesWithTheProgram_data()
    {
        QTest::addColumn<bool>("forcedLogOut");
        // clang-format off
        QTest::newRow("shutdown") << false;
        QTest::newRow("forced log-out") << true;
        // clang-format on
    }

    void theHelpWindowGoesWithTheProgram()
    {
        QFETCH(bool, forcedLogOut);
        LoadedOrganiser site;
        MainWindow& window = site.load();
        part<ToolBarsControl>(window).action(QStringLiteral("ID_ContentsIndex"))->trigger();
        QVERIFY(shownHelp());
        if (forcedLogOut)
            window.UnloadAllExceptMain();
        else
            window.close();
        QVERIFY(!shownHelp());
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowHelpTest)
#include "MainWindowHelpTest.moc"
