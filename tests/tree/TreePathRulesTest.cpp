#include "TreePathRules.h"

#include <QTest>

using namespace nebra;

class TreePathRulesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void caseRules_data()
    {
        QTest::addColumn<QString>("rule");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("reference");
        QTest::addColumn<bool>("expected");
        const QString data = QStringLiteral("/home/u/Nebra Data");
        QTest::newRow("data folder: inside") << "nebra"
                                             << "/home/u/Nebra Data/My Assays/Results" << data << true;
        QTest::newRow("data folder: other case") << "nebra"
                                                 << "/HOME/U/nebra data/x" << data << true;
        QTest::newRow("data folder: anywhere in the path") << "nebra"
                                                           << "/mnt/home/u/Nebra Data" << data << true;
        QTest::newRow("data folder: outside") << "nebra"
                                              << "/home/u/Documents" << data << false;
        const QString current = QStringLiteral("/d/My Assays/Protocols");
        QTest::newRow("current: same") << "current" << current << current << true;
        QTest::newRow("current: other case") << "current"
                                             << "/d/my assays/protocols" << current << false;
        QTest::newRow("current: subfolder") << "current" << current + "/Sub" << current << false;
        QTest::newRow("file: in folder") << "file" << current + "/p.apr" << current << true;
        QTest::newRow("file: other case") << "file"
                                          << "/D/MY ASSAYS/PROTOCOLS/p.apr" << current << true;
        QTest::newRow("file: in subfolder") << "file" << current + "/Sub/p.apr" << current << true;
        QTest::newRow("file: elsewhere") << "file"
                                         << "/d/My Assays/Results/r.ars" << current << false;
        QTest::newRow("same: other case") << "same"
                                          << "/D/x"
                                          << "/d/X" << true;
        QTest::newRow("same: prefix") << "same"
                                      << "/d/x"
                                      << "/d/x/y" << false;
        QTest::newRow("same: non-ASCII case")
            << "same" << QString::fromUtf8("/d/ÄRGER") << QString::fromUtf8("/d/ärger") << true;
    }

    void caseRules()
    {
        QFETCH(QString, rule);
        QFETCH(QString, path);
        QFETCH(QString, reference);
        QFETCH(bool, expected);
        bool result = false;
        if (rule == QLatin1String("nebra"))
            result = TreePathRules::IsThisFolderANebraFolder(path, reference);
        else if (rule == QLatin1String("current"))
            result = TreePathRules::IsThisCurrentFolder(path, reference);
        else if (rule == QLatin1String("file"))
            result = TreePathRules::IsThisFileInCurrentFolder(path, reference);
        else
            result = TreePathRules::SamePath(path, reference);
        QCOMPARE(result, expected);
    }
};

QTEST_GUILESS_MAIN(TreePathRulesTest)
#include "TreePathRulesTest.moc"
