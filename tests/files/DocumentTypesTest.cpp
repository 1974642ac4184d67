#include "DocumentTypes.h"
#include "RenameExtensionRule.h"

#include <QTest>

using namespace nebra;

class DocumentTypesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // New, Open and Run of a type. The root and the protocols (one file, two,
    // a folder) are checked through the commands in FileViewTest.
    void commandStates()
    {
        using enum CommandAvailability;
        const auto states = [](int type) {
            const DocumentTypeDescription& row = DocumentTypes::of(type);
            return QList<int>{int(row.newCommand.availability), int(row.openCommand.availability),
                              int(row.runCommand.availability)};
        };
        QCOMPARE(states(2), (QList<int>{int(On), int(SingleFile), int(Off)}));             // layouts
        QCOMPARE(states(4), (QList<int>{int(Off), int(SingleFile), int(Off)}));            // results
        QCOMPARE(states(-3), states(1));                                                   // negative: type 1
        QCOMPARE(states(6), (QList<int>{int(Unchanged), int(Unchanged), int(Unchanged)})); // unknown
    }

    // Another extension refused, and allowed with extensions hidden: see FileViewTest.
    void renameKeepsTheExtension()
    {
        QVERIFY(!RenameExtensionRule::IsRefused("*.apr", "New name.APR", "Old.apr", "/data/Old.apr"));
        QVERIFY(RenameExtensionRule::IsRefused("*.apr", "New name", "Old.apr", "/data/Old.apr"));
        QVERIFY(RenameExtensionRule::IsRefused("*.*", "Summary 2.mht", "Summary.mht", "/data/Summary.mht"));
        // Hidden.
        QVERIFY(!RenameExtensionRule::IsRefused("*.*", "Summary 2", "Summary", "/data/Summary.ext"));
    }
};

QTEST_GUILESS_MAIN(DocumentTypesTest)
#include "DocumentTypesTest.moc"
