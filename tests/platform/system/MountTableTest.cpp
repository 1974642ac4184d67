#include "MountTable.h"
#include "MountedShare.h"

#include <QTest>

using namespace nebra;

class MountTableTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesOfTheKernelsTable_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<bool>("parsed");
        QTest::addColumn<QByteArray>("point");
        QTest::addColumn<QByteArray>("type");
        // clang-format off
        QTest::newRow("plain") << QByteArray("36 35 98:0 / /data rw,noatime - ext4 /dev/sda1 rw") << true << QByteArray("/data") << QByteArray("ext4");
        QTest::newRow("optional fields, blanks escaped") << QByteArray("41 29 0:50 / /mnt/lab\\040share rw shared:7 master:1 - nfs4 server:/lab\\040data rw") << true << QByteArray("/mnt/lab share") << QByteArray("nfs4");
        QTest::newRow("not a line of the table") << QByteArray("rootfs / rootfs rw 0 0") << false << QByteArray() << QByteArray();
        // clang-format on
    }

    void linesOfTheKernelsTable()
    {
        QFETCH(QByteArray, line);
        QFETCH(bool, parsed);
        QFETCH(QByteArray, point);
        QFETCH(QByteArray, type);
        MountTable::Mount mount;
        QCOMPARE(MountTable::parseLine(line, mount), parsed);
        if (parsed) {
            QCOMPARE(mount.point, point);
            QCOMPARE(mount.type, type);
        }
    }

    // A folder beside a mount point whose name starts the same is not on that mount.
    void aMountIsFoundByWholeFolderNames()
    {
        test::MountedShare share;
        const QString point = share.mount = share.dir.filePath(QStringLiteral("lab share"));
        if (!share.made())
            return;
        MountTable table;
        QCOMPARE(table.mountOf(QFile::encodeName(point + QStringLiteral("/Results/Run 7"))).point,
                 QFile::encodeName(point));
        QVERIFY(table.mountOf(QFile::encodeName(point + QStringLiteral("2"))).point !=
                QFile::encodeName(point));
    }
};

QTEST_GUILESS_MAIN(MountTableTest)
#include "MountTableTest.moc"
