#include "DocumentTypes.h"
#include "RenameExtensionRule.h"

#include <QTest>

using namespace nebra;

using States = std::optional<DocumentTypes::CommandStates>;
Q_DECLARE_METATYPE(States)

class DocumentTypesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commandStates_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("singleFile");
        QTest::addColumn<States>("expected");
        using S = DocumentTypes::CommandStates;
        // The root and the protocols (one file, two, a folder) are checked through the commands in
        // FileViewTest.
        QTest::newRow("layouts, no single file") << 2 << false << States(S{true, false, false});
        QTest::newRow("results, one file") << 4 << true << States(S{false, true, false});
        QTest::newRow("negative counts as type 1") << -3 << true << States(S{true, true, false});
        QTest::newRow("unknown leaves them") << 6 << true << States();
    }

    void commandStates()
    {
        QFETCH(int, type);
        QFETCH(bool, singleFile);
        QFETCH(States, expected);
        QCOMPARE(DocumentTypes::commandStates(documentTypeFromData(type), singleFile), expected);
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
