#include "SnapshotDiff.h"
#include "ChangeLines.h"
#include "FolderEntries.h"
#include "FolderSnapshot.h"
#include "SecondProcess.h"
#include "WildcardFilter.h"

#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using nebra::test::runScript;

namespace {

QStringList described(const std::vector<FolderChange>& changes, const QString& root)
{
    QStringList lines;
    for (const FolderChange& change : changes)
        lines << test::changeLine(change, root, QStringLiteral("$R"));
    return lines;
}

} // namespace

class SnapshotDiffTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    const QString m_root = m_dir.filePath(QStringLiteral("root"));
    const QByteArray m_raw = QFile::encodeName(m_root);

private Q_SLOTS:
    void init()
    {
        QDir(m_root).removeRecursively();
        QVERIFY(QDir().mkpath(m_root));
    }

    void foldersChangedByAnotherProgram_data()
    {
        QTest::addColumn<QString>("setUp");
        QTest::addColumn<QString>("change");
        QTest::addColumn<QStringList>("expected");
        // clang-format off
        QTest::newRow("made, each before its subfolders") << "mkdir a" << "mkdir -p a/n/m" << QStringList{"MKDIR $R/a/n", "MKDIR $R/a/n/m"};
        QTest::newRow("renamed: the same inode") << "mkdir -p a/x" << "mv a b" << QStringList{"RENAMEFOLDER $R/a|$R/b"};
        QTest::newRow("renamed, then its name made again") << "mkdir a" << "mv a b && mkdir a" << QStringList{"RENAMEFOLDER $R/a|$R/b", "MKDIR $R/a"};
        QTest::newRow("names swapped through a third") << "mkdir a c" << "mv a b && mv c a" << QStringList{"RMDIR $R/c", "RENAMEFOLDER $R/a|$R/b", "MKDIR $R/a"};
        QTest::newRow("changes below a renamed folder follow it") << "mkdir -p a/x" << "mv a b && mkdir b/y && rmdir b/x" << QStringList{"RENAMEFOLDER $R/a|$R/b", "RMDIR $R/b/x", "MKDIR $R/b/y"};
        QTest::newRow("moved into a new folder") << "mkdir -p a/x" << "mkdir n && mv a n/" << QStringList{"RMDIR $R/a", "MKDIR $R/n", "MKDIR $R/n/a", "MKDIR $R/n/a/x"};
        QTest::newRow("a folder replaced by a file") << "mkdir -p a/x" << "rm -r a && touch a" << QStringList{"RMDIR $R/a"};
        QTest::newRow("a vanished folder, once with all below it") << "mkdir -p a/x/y b" << "rm -r a" << QStringList{"RMDIR $R/a"};
        QTest::newRow("a link to a folder: a folder, not followed") << "mkdir t" << "ln -s t l && mkdir t/new" << QStringList{"MKDIR $R/l", "MKDIR $R/t/new"};
        QTest::newRow("new lines and bytes that are not UTF-8") << "mkdir $'line\\nbreak' $'bad\\xff'" << "mv $'line\\nbreak' $'new\\nline' && mkdir $'bad\\xff/sub'" << QStringList{"RENAMEFOLDER $R/line\nbreak|$R/new\nline", QString::fromUtf8("MKDIR $R/bad\xEF\xBF\xBD/sub")};
        QTest::newRow("the root vanished") << "mkdir a" << "cd .. && rm -r root" << QStringList{"RMDIR $R"};
        // clang-format on
    }

    void foldersChangedByAnotherProgram()
    {
        QFETCH(QString, setUp);
        QFETCH(QString, change);
        QFETCH(QStringList, expected);
        runScript(m_root, setUp);
        const FolderSnapshot before = FolderSnapshot::take(m_raw);
        runScript(m_root, change);
        const FolderSnapshot after = FolderSnapshot::take(m_raw, &before, true);
        QCOMPARE(described(SnapshotDiff::folders(before, after, m_root), m_root), expected);
    }

    // Only folders whose time moved are read again; a change that left the
    // time as it was (the same step of a coarse clock, here put back by
    // hand) is found by the full read.
    void unchangedFoldersAreTrustedUntilTheFullRead()
    {
        runScript(m_root,
                  QStringLiteral("mkdir -p a/b c && find . -type d -exec touch -m -d @1000000000 {} +"));
        const FolderSnapshot first = FolderSnapshot::take(m_raw);
        QCOMPARE(first.foldersRead(), 4);
        const FolderSnapshot quiet = FolderSnapshot::take(m_raw, &first);
        QCOMPARE(quiet.foldersRead(), 0);

        runScript(m_root, QStringLiteral("mkdir a/b/new"));
        const FolderSnapshot changed = FolderSnapshot::take(m_raw, &quiet);
        QCOMPARE(changed.foldersRead(), 2); // a/b and the new folder
        QCOMPARE(described(SnapshotDiff::folders(quiet, changed, m_root), m_root),
                 QStringList{"MKDIR $R/a/b/new"});

        runScript(m_root, QStringLiteral("mkdir c/late && touch -m -d @1000000000 c"));
        const FolderSnapshot missed = FolderSnapshot::take(m_raw, &changed);
        QVERIFY(SnapshotDiff::folders(changed, missed, m_root).empty());
        const FolderSnapshot full = FolderSnapshot::take(m_raw, &missed, true);
        QCOMPARE(described(SnapshotDiff::folders(missed, full, m_root), m_root),
                 QStringList{"MKDIR $R/c/late"});
    }

    void filesOfTheListedFolder_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<bool>("changed");
        // clang-format off
        QTest::newRow("made") << "touch n.apr" << QStringList{"UPDATEITEM $R/n.apr"} << true;
        QTest::newRow("written") << "echo more >> p.apr" << QStringList{"UPDATEITEM $R/p.apr"} << true;
        QTest::newRow("replaced by a save") << "cp p.apr t && mv t p.apr" << QStringList{"UPDATEITEM $R/p.apr"} << true;
        QTest::newRow("removed") << "rm p.apr" << QStringList{"DELETE $R/p.apr"} << true;
        QTest::newRow("renamed") << "mv p.apr q.apr" << QStringList{"DELETE $R/p.apr", "UPDATEITEM $R/q.apr"} << true;
        QTest::newRow("replaced by a folder") << "rm p.apr && mkdir p.apr" << QStringList{"DELETE $R/p.apr"} << true;
        QTest::newRow("a folder replaced by a file") << "rmdir x.apr && touch x.apr" << QStringList{"UPDATEITEM $R/x.apr"} << true;
        QTest::newRow("a subfolder made: the list shows it") << "mkdir e" << QStringList{} << true;
        QTest::newRow("a file the filter leaves out") << "echo x > notes.txt" << QStringList{} << false;
        // clang-format on
    }

    void filesOfTheListedFolder()
    {
        QFETCH(QString, change);
        QFETCH(QStringList, expected);
        QFETCH(bool, changed);
        runScript(m_root, QStringLiteral("mkdir d x.apr && echo p > p.apr && touch notes.txt"));
        const WildcardFilter filter(QStringLiteral("*.apr"));
        const FolderEntries before = FolderEntries::take(m_raw, filter);
        runScript(m_root, change);
        const SnapshotDiff::EntryChanges diff =
            SnapshotDiff::entries(before, FolderEntries::take(m_raw, filter), m_root);
        QCOMPARE(described(diff.changes, m_root), expected);
        QCOMPARE(diff.changed, changed);
    }
};

QTEST_GUILESS_MAIN(SnapshotDiffTest)
#include "SnapshotDiffTest.moc"
