#include "DocumentTypes.h"
#include "RenameExtensionRule.h"

#include <QTest>

using namespace nebra;

Q_DECLARE_METATYPE(nebra::CommandAvailability)

class DocumentTypesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commandStates_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<CommandAvailability>("newCommand");
        QTest::addColumn<CommandAvailability>("open");
        QTest::addColumn<CommandAvailability>("run");
        using enum CommandAvailability;
        // The root and the protocols (one file, two, a folder) are checked through the commands in
        // FileViewTest.
        // clang-format off
        QTest::newRow("layouts") << 2 << On << SingleFile << Off;
        QTest::newRow("results") << 4 << Off << SingleFile << Off;
        QTest::newRow("negative counts as type 1") << -3 << On << SingleFile << Off;
        QTest::newRow("unknown leaves them") << 6 << Unchanged << Unchanged << Unchanged;
        // clang-format on
    }

    void commandStates()
    {
        QFETCH(int, type);
        QFETCH(CommandAvailability, newCommand);
        QFETCH(CommandAvailability, open);
        QFETCH(CommandAvailability, run);
        const DocumentTypeDescription& row = DocumentTypes::of(type);
        QCOMPARE(row.newCommand.availability, newCommand);
        QCOMPARE(row.openCommand.availability, open);
        QCOMPARE(row.runCommand.availability, run);
    }

    void renameKeepsTheExtension_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("newName");
        QTest::addColumn<QString>("displayed");
        QTest::addColumn<bool>("refused");
        // Another extension refused, and allowed with extensions hidden: see FileViewTest.
        // clang-format off
        QTest::newRow("same extension in capitals") << "*.apr" << "New name.APR" << "Old.apr" << false;
        QTest::newRow("no extension") << "*.apr" << "New name" << "Old.apr" << true;
        QTest::newRow("report, extension shown") << "*.*" << "Summary 2.mht" << "Summary.mht" << true;
        QTest::newRow("report, extension hidden") << "*.*" << "Summary 2" << "Summary" << false;
        // clang-format on
    }

    void renameKeepsTheExtension()
    {
        QFETCH(QString, filter);
        QFETCH(QString, newName);
        QFETCH(QString, displayed);
        QFETCH(bool, refused);
        const QString path =
            QStringLiteral("/data/") + (displayed.contains('.') ? displayed : displayed + ".ext");
        QCOMPARE(RenameExtensionRule::IsRefused(filter, newName, displayed, path), refused);
    }
};

QTEST_GUILESS_MAIN(DocumentTypesTest)
#include "DocumentTypesTest.moc"
