#include "TreeNavigation.h"
#include "OrganiserTree.h"
#include "OrganiserWorld.h"

#include <QTest>

using namespace nebra;
using nebra::test::makeFolder;
using nebra::test::TreeWorld;

class TreeNavigationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void upIsEnabledWhereItLeadsSomewhere_data()
    {
        QTest::addColumn<int>("level");
        QTest::addColumn<int>("state");
        QTest::addColumn<bool>("enabled");
        // clang-format off
        QTest::newRow("root") << 0 << 0 << false;
        QTest::newRow("root, navigated") << 0 << 1 << false;
        QTest::newRow("primary folder") << 1 << 0 << true;
        QTest::newRow("primary folder, navigated") << 1 << 1 << false;
        QTest::newRow("sub-folder, navigated") << 2 << 1 << true;
        // clang-format on
    }

    void upIsEnabledWhereItLeadsSomewhere()
    {
        QFETCH(int, level);
        QFETCH(int, state);
        QFETCH(bool, enabled);
        TreeWorld world;
        makeFolder(world.data("Protocols/Sub"));
        world.build();
        const OrganiserTree& organiser = world.organiser;
        TreeNavigation navigation(*world.tree, organiser);
        const FolderNode nodes[] = {organiser.rootNode(), organiser.node(DocumentType::Protocols),
                                    organiser.node(DocumentType::Protocols).child(0)};
        world.tree->setButtonEnabled(FolderTreeControl::UpButton, !enabled);
        navigation.OnCurrentNodeChanged(nodes[level], state);
        QCOMPARE(world.tree->isButtonEnabled(FolderTreeControl::UpButton), enabled);
    }
};

QTEST_MAIN(TreeNavigationTest)
#include "TreeNavigationTest.moc"
