#include "CommandDispatcher.h"
#include "FolderTreeControl.h"
#include "ToolBarsControl.h"
#include "ToolDefinitions.h"
#include "UserActivity.h"

#include <QMainWindow>
#include <QTest>

using namespace nebra;

namespace {

// A window with the Organiser's tools, menus and the tree's command buttons,
// a dispatcher over them, and every noted activity recorded in calls.
struct Dispatching
{
    QMainWindow window;
    ToolBarsControl* tools = withTheTools(new ToolBarsControl(&window));
    FolderTreeControl* tree = new FolderTreeControl(&window);
    UserActivity activity;
    CommandDispatcher dispatcher{*tools, activity};
    QStringList calls;

    static ToolBarsControl* withTheTools(ToolBarsControl* tools)
    {
        for (const ToolDefinition& tool : ToolDefinitions::tools())
            tools->addTool(tool);
        for (const auto& [menu, items] : ToolDefinitions::menus())
            tools->addMenu(menu, items);
        return tools;
    }

    Dispatching()
    {
        QObject::connect(tools, &ToolBarsControl::toolClick, &dispatcher, &CommandDispatcher::ToolClick);
        for (const ToolDefinitions::Command& row : ToolDefinitions::commands())
            if (row.treeButton)
                tree->addButton(row.treeButton, QLatin1String(row.caption));
        QObject::connect(&activity, &UserActivity::activity, &window, [this] { calls << "activity"; });
        QObject::connect(tree, &FolderTreeControl::buttonClicked, &dispatcher,
                         &CommandDispatcher::TreeButtonClick);
    }
};

} // namespace

class CommandDispatcherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A tool is enabled exactly while it has a command: one that does nothing
    // must not look as if it did something. Whichever way a command is
    // reached, and whichever command it is (the table's, so a command added
    // later too), it runs between two notes of the user's activity; a click
    // without a command (a drop-down, the help tool, an ID in another case)
    // still notes it twice.
    void noCommandRunsWithoutActivity()
    {
        Dispatching d;
        for (const CommandId id : CommandDispatcher::commandIds())
            QVERIFY2(!d.tools->isToolEnabled(ToolDefinitions::toolId(id)),
                     qPrintable(ToolDefinitions::toolId(id)));
        QVERIFY(d.tools->isToolEnabled(ToolDefinitions::toolId(CommandId::HelpHelp))); // not a command
        d.dispatcher.setCommand(CommandId::Options, [] {});
        QVERIFY(d.tools->isToolEnabled(ToolDefinitions::toolId(CommandId::Options)));
        QVERIFY(!d.tools->isToolEnabled(ToolDefinitions::toolId(CommandId::ContentsIndex)));
        d.dispatcher.setCommand(CommandId::Options, {});
        QVERIFY(!d.tools->isToolEnabled(ToolDefinitions::toolId(CommandId::Options)));
        for (const CommandId id : CommandDispatcher::commandIds())
            d.dispatcher.setCommand(id, [&d, id] { d.calls << ToolDefinitions::toolId(id); });
        for (const char* id : {"ID_File", "ID_HelpHelp", "id_exit"}) {
            d.calls.clear();
            d.dispatcher.ToolClick(QLatin1String(id));
            QCOMPARE(d.calls, QStringList({"activity", "activity"}));
        }
        for (const CommandId id : CommandDispatcher::commandIds()) {
            const QString toolId = ToolDefinitions::toolId(id);
            const QStringList once{"activity", toolId, "activity"};
            d.calls.clear();
            d.tools->action(toolId)->trigger();
            QCOMPARE(d.calls, once);
            if (const int key = ToolDefinitions::command(id).treeButton) {
                d.calls.clear();
                d.tree->clickButton(key);
                QCOMPARE(d.calls, once);
            }
        }
    }
};

QTEST_MAIN(CommandDispatcherTest)
#include "CommandDispatcherTest.moc"
