#include "TreePathRules.h"

#include <QTest>

using namespace nebra;

class TreePathRulesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Which rules ignore letter case, and which look for a part of the path only.
    void caseRules()
    {
        using Rules = TreePathRules;
        const QString data = QStringLiteral("/home/u/Nebra Data");
        QVERIFY(Rules::IsThisFolderANebraFolder("/home/u/Nebra Data/My Assays/Results", data));
        QVERIFY(Rules::IsThisFolderANebraFolder(QStringLiteral("/HOME/U/nebra data/x"), data));
        QVERIFY(Rules::IsThisFolderANebraFolder(QStringLiteral("/mnt/home/u/Nebra Data"), data));
        QVERIFY(!Rules::IsThisFolderANebraFolder(QStringLiteral("/home/u/Documents"), data));
        const QString current = QStringLiteral("/d/My Assays/Protocols");
        QVERIFY(Rules::IsThisCurrentFolder(current, current));
        QVERIFY(!Rules::IsThisCurrentFolder(QStringLiteral("/d/my assays/protocols"), current));
        QVERIFY(!Rules::IsThisCurrentFolder(current + QStringLiteral("/Sub"), current));
        QVERIFY(Rules::IsThisFileInCurrentFolder(QStringLiteral("/D/MY ASSAYS/PROTOCOLS/p.apr"), current));
        QVERIFY(Rules::IsThisFileInCurrentFolder(current + QStringLiteral("/Sub/p.apr"), current));
        QVERIFY(!Rules::IsThisFileInCurrentFolder(QStringLiteral("/d/My Assays/Results/r.ars"), current));
        QVERIFY(Rules::SamePath(QStringLiteral("/D/x"), QStringLiteral("/d/X")));
        QVERIFY(!Rules::SamePath(QStringLiteral("/d/x"), QStringLiteral("/d/x/y")));
        QVERIFY(Rules::SamePath(QString::fromUtf8("/d/ÄRGER"), QString::fromUtf8("/d/ärger")));
    }
};

QTEST_GUILESS_MAIN(TreePathRulesTest)
#include "TreePathRulesTest.moc"
