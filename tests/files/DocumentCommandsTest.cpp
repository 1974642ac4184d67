#include "DocumentCommands.h"
#include "DocumentLauncher.h"
#include "MessageRecorder.h"
#include "OrganiserTree.h"
#include "OrganiserWorld.h"

#include <QTest>

using namespace nebra;
using namespace nebra::test;

class DocumentCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void newAsksToMoveToThePrimaryFolderOnlyBelowLayouts_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addColumn<int>("answer");
        QTest::addColumn<QString>("whereAfter"); // empty: no question
        // clang-format off
        QTest::newRow("layouts sub-folder, OK") << "layouts sub-folder" << int(MessageButton::Ok) << "layouts";
        QTest::newRow("layouts sub-folder, Cancel") << "layouts sub-folder" << int(MessageButton::Cancel) << "layouts sub-folder";
        QTest::newRow("the layouts node itself") << "layouts" << 0 << "";
        QTest::newRow("a protocols sub-folder") << "protocols sub-folder" << 0 << "";
        QTest::newRow("the root") << "root" << 0 << "";
        // clang-format on
    }

    void newAsksToMoveToThePrimaryFolderOnlyBelowLayouts()
    {
        QFETCH(QString, where);
        QFETCH(int, answer);
        QFETCH(QString, whereAfter);
        TreeWorld c; // no program is allowed to start: the launcher's context allows nothing
        DocumentLauncher launcher{c.paths, {}};
        DocumentCommands commands{*c.tree, launcher};
        makeFolder(c.data("Microplate Layouts/96 well/Deep"));
        makeFolder(c.data("Protocols/Elisa"));
        c.build();
        MessageRecorder messages;
        const QMap<QString, FolderNode> nodes{
            {"layouts", c.organiser.node(DocumentType::Layouts)},
            {"protocols sub-folder", c.organiser.node(DocumentType::Protocols).child(0)},
            {"root", c.organiser.rootNode()},
            {"layouts sub-folder", c.organiser.node(DocumentType::Layouts).child(0).child(0)}};
        c.tree->setCurrentNode(nodes[where]);
        if (answer)
            messages.answer(answer);
        commands.PerformDocumentCommand(CommandId::New);
        QCOMPARE(c.tree->currentNode(), nodes.value(whereAfter, nodes[where]));
        commands.PerformDocumentCommand(CommandId::Open);
        commands.PerformDocumentCommand(CommandId::About); // not a document command
        QCOMPARE(messages.count(), whereAfter.isEmpty() ? 0 : 1);
        if (whereAfter.isEmpty())
            return;
        QCOMPARE(messages.last().title, QStringLiteral("Creating New Item"));
        QCOMPARE(messages.last().text, "New items can only be created in the primary folder.\r\n"
                                       "Moving to Microplate Layouts folder now.");
        QCOMPARE(messages.last().icon, MessageIcon::Information);
        QCOMPARE(messages.last().buttons, int(MessageButton::Ok | MessageButton::Cancel));
    }
};

QTEST_MAIN(DocumentCommandsTest)
#include "DocumentCommandsTest.moc"
