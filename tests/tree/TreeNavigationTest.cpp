#include "TreeNavigation.h"
#include "OrganiserTree.h"
#include "OrganiserWorld.h"

#include <QTest>

using namespace nebra;
using namespace nebra::test;

class TreeNavigationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Rows: the node's level (the root, a primary folder, a sub-folder), the
    // change's state (0 selected, 1 navigated), and whether Up is enabled after it.
    void upIsEnabledWhereItLeadsSomewhere()
    {
        TreeWorld world;
        makeFolder(world.data("Protocols/Sub"));
        world.build();
        const OrganiserTree& organiser = world.organiser;
        TreeNavigation navigation(*world.tree, organiser);
        const FolderNode nodes[] = {organiser.rootNode(), organiser.node(DocumentType::Protocols),
                                    organiser.node(DocumentType::Protocols).child(0)};
        // clang-format off
        for (const auto& [level, state, enabled] : {std::tuple{0, 0, false}, {0, 1, false}, {1, 0, true}, {1, 1, false}, {2, 1, true}}) {
            // clang-format on
            world.tree->setButtonEnabled(FolderTreeControl::UpButton, !enabled);
            navigation.OnCurrentNodeChanged(nodes[level], state);
            QVERIFY2(world.tree->isButtonEnabled(FolderTreeControl::UpButton) == enabled,
                     qPrintable(QStringLiteral("level %1, state %2").arg(level).arg(state)));
        }
    }
};

QTEST_MAIN(TreeNavigationTest)
#include "TreeNavigationTest.moc"
