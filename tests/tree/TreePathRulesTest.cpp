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
        auto row = [](const char* tag, const char* rule, const char* path, const char* reference,
                      bool expected) {
            // clang-format off
            QTest::newRow(tag) << QString::fromUtf8(rule) << QString::fromUtf8(path) << QString::fromUtf8(reference) << expected;
            // clang-format on
        };
        const char* data = "/home/u/Nebra Data";
        row("data folder: inside", "nebra", "/home/u/Nebra Data/My Assays/Results", data, true);
        row("data folder: other case", "nebra", "/HOME/U/nebra data/x", data, true);
        row("data folder: anywhere in the path", "nebra", "/mnt/home/u/Nebra Data", data, true);
        row("data folder: outside", "nebra", "/home/u/Documents", data, false);
        const char* current = "/d/My Assays/Protocols";
        row("current: same", "current", current, current, true);
        row("current: other case", "current", "/d/my assays/protocols", current, false);
        row("current: subfolder", "current", "/d/My Assays/Protocols/Sub", current, false);
        row("file: other case", "file", "/D/MY ASSAYS/PROTOCOLS/p.apr", current, true);
        row("file: in subfolder", "file", "/d/My Assays/Protocols/Sub/p.apr", current, true);
        row("file: elsewhere", "file", "/d/My Assays/Results/r.ars", current, false);
        row("same: other case", "same", "/D/x", "/d/X", true);
        row("same: prefix", "same", "/d/x", "/d/x/y", false);
        row("same: non-ASCII case", "same", "/d/ÄRGER", "/d/ärger", true);
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
