#include "CommandDispatcher.h"
#include "ToolBarsControl.h"
#include "ToolDefinitions.h"

#include <QMainWindow>
#include <QTest>

using namespace nebra;

class CommandDispatcherTest : public QObject
{
    Q_OBJECT

    // A window with the Organiser's tools and menus.
    static std::unique_ptr<QMainWindow> windowWithTools(ToolBarsControl*& tools)
    {
        auto window = std::make_unique<QMainWindow>();
        tools = new ToolBarsControl(window.get());
        for (const ToolDefinition& tool : ToolDefinitions::tools())
            tools->addTool(tool);
        for (const auto& [menu, items] : ToolDefinitions::menus())
            tools->addMenu(menu, items);
        return window;
    }

private Q_SLOTS:
    void everyClickRestartsTheTimeOutBeforeAndAfter_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QStringList>("expected");
        // clang-format off
        QTest::newRow("command") << QStringLiteral("ID_Exit") << QStringList{"reset", "ID_Exit", "reset"};
        QTest::newRow("drop-down without command") << QStringLiteral("ID_File") << QStringList{"reset", "reset"};
        QTest::newRow("help drop-down tool") << QStringLiteral("ID_HelpHelp") << QStringList{"reset", "reset"};
        QTest::newRow("case matters") << QStringLiteral("id_exit") << QStringList{"reset", "reset"};
        // clang-format on
    }

    void everyClickRestartsTheTimeOutBeforeAndAfter()
    {
        QFETCH(QString, id);
        QFETCH(QStringList, expected);
        QStringList calls;
        ToolBarsControl* tools = nullptr;
        const auto window = windowWithTools(tools);
        CommandDispatcher dispatcher(*tools, [&calls] { calls << QStringLiteral("reset"); });
        for (const QString& command : CommandDispatcher::commandIds())
            QVERIFY(dispatcher.setCommand(command, [&calls, command] { calls << command; }));
        dispatcher.ToolClick(id);
        QCOMPARE(calls, expected);
    }

    // A tool that does nothing must not look as if it did something.
    void aToolIsEnabledExactlyWhileItHasACommand()
    {
        ToolBarsControl* tools = nullptr;
        const auto window = windowWithTools(tools);
        CommandDispatcher dispatcher(*tools, [] {});
        for (const QString& id : CommandDispatcher::commandIds())
            QVERIFY2(!tools->isToolEnabled(id), qPrintable(id));
        QVERIFY(tools->isToolEnabled(QStringLiteral("ID_HelpHelp"))); // a drop-down, not a command
        QVERIFY(dispatcher.setCommand(QStringLiteral("ID_Options"), [] {}));
        QVERIFY(tools->isToolEnabled(QStringLiteral("ID_Options")));
        QVERIFY(!tools->isToolEnabled(QStringLiteral("ID_ContentsIndex")));
        QVERIFY(dispatcher.setCommand(QStringLiteral("ID_Options"), {}));
        QVERIFY(!tools->isToolEnabled(QStringLiteral("ID_Options")));
    }
};

QTEST_MAIN(CommandDispatcherTest)
#include "CommandDispatcherTest.moc"
