#include "CommandDispatcher.h"

#include <QTest>

using namespace nebra;

class CommandDispatcherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyClickRestartsTheTimeOutBeforeAndAfter_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("command") << QStringLiteral("ID_Exit") << QStringList{"reset", "ID_Exit", "reset"};
        QTest::newRow("drop-down without command")
            << QStringLiteral("ID_File") << QStringList{"reset", "reset"};
        QTest::newRow("help drop-down tool")
            << QStringLiteral("ID_HelpHelp") << QStringList{"reset", "reset"};
        QTest::newRow("case matters") << QStringLiteral("id_exit") << QStringList{"reset", "reset"};
    }

    void everyClickRestartsTheTimeOutBeforeAndAfter()
    {
        QFETCH(QString, id);
        QFETCH(QStringList, expected);
        QStringList calls;
        CommandDispatcher dispatcher([&calls] { calls << QStringLiteral("reset"); });
        for (const QString& command : CommandDispatcher::commandIds())
            QVERIFY(dispatcher.setCommand(command, [&calls, command] { calls << command; }));
        dispatcher.ToolClick(id);
        QCOMPARE(calls, expected);
    }

    void onlyKnownIdsTakeACommand()
    {
        CommandDispatcher dispatcher([] {});
        QVERIFY(!dispatcher.setCommand(QStringLiteral("ID_HelpHelp"), [] {}));
        QVERIFY(!dispatcher.setCommand(QStringLiteral("ID_File"), [] {}));
    }
};

QTEST_GUILESS_MAIN(CommandDispatcherTest)
#include "CommandDispatcherTest.moc"
