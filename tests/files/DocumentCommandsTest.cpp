#include "DocumentCommands.h"
#include "MessageRecorder.h"
#include "OrganiserTree.h"
#include "OrganiserWorld.h"

#include <QTest>

using namespace nebra;
using nebra::test::makeFolder;
using nebra::test::MessageRecorder;
using nebra::test::OrganiserWorld;

namespace {

struct Commands
{
    OrganiserWorld world;
    OrganiserTree tree{*world.tree, *world.list, *world.shortcuts, world.globals};
    int resets = 0;
    DocumentCommands commands{*world.tree, [this] { ++resets; }};

    Commands()
    {
        makeFolder(world.data(QStringLiteral("Microplate Layouts/96 well/Deep")));
        makeFolder(world.data(QStringLiteral("Protocols/Elisa")));
        tree.InitialiseOrganiserTree();
    }
};

} // namespace

class DocumentCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void newInASubFolderAsksToMoveToThePrimaryFolder_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("moved");
        QTest::newRow("OK") << int(MessageButton::Ok) << true;
        QTest::newRow("Cancel") << int(MessageButton::Cancel) << false;
    }

    void newInASubFolderAsksToMoveToThePrimaryFolder()
    {
        QFETCH(int, answer);
        QFETCH(bool, moved);
        Commands c;
        MessageRecorder messages;
        const FolderNode deep = c.tree.layoutsNode().child(0).child(0);
        c.world.tree->setCurrentNode(deep);
        messages.answer(answer);
        QCOMPARE(c.commands.EnsurePrimaryFolderSelected(), moved);
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().title, QStringLiteral("Creating New Item"));
        QCOMPARE(messages.last().text,
                 QStringLiteral("New items can only be created in the primary folder.\r\n"
                                "Moving to Microplate Layouts folder now."));
        QCOMPARE(messages.last().icon, MessageIcon::Information);
        QCOMPARE(messages.last().buttons, int(MessageButton::Ok | MessageButton::Cancel));
        QCOMPARE(c.world.tree->currentNode(), moved ? c.tree.layoutsNode() : deep);
    }

    void newAsksOnlyWhereTheRuleApplies_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addColumn<int>("messages");
        QTest::newRow("the layouts node itself") << "layouts" << 0;
        QTest::newRow("a protocols sub-folder") << "protocols sub-folder" << 0;
        QTest::newRow("the root") << "root" << 0;
        QTest::newRow("a layouts sub-folder") << "layouts sub-folder" << 1;
    }

    void newAsksOnlyWhereTheRuleApplies()
    {
        QFETCH(QString, where);
        QFETCH(int, messages);
        Commands c;
        MessageRecorder recorder;
        const QMap<QString, FolderNode> nodes{{"layouts", c.tree.layoutsNode()},
                                              {"protocols sub-folder", c.tree.protocolsNode().child(0)},
                                              {"root", c.tree.rootNode()},
                                              {"layouts sub-folder", c.tree.layoutsNode().child(0)}};
        c.world.tree->setCurrentNode(nodes[where]);
        c.commands.PerformDocumentCommand(605);
        QCOMPARE(recorder.count(), messages);
        QCOMPARE(c.resets, 2); // before and after
        c.commands.PerformDocumentCommand(606);
        c.commands.PerformDocumentCommand(999);
        QCOMPARE(recorder.count(), messages);
    }
};

QTEST_MAIN(DocumentCommandsTest)
#include "DocumentCommandsTest.moc"
