#include "MountTable.h"
#include "MountedShare.h"

#include <QTest>

using namespace nebra;

class MountTableTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesOfTheKernelsTable()
    {
        MountTable::Mount mount;
        QVERIFY(MountTable::parseLine("36 35 98:0 / /data rw,noatime - ext4 /dev/sda1 rw", mount));
        QCOMPARE(mount.point + ' ' + mount.type, QByteArray("/data ext4"));
        // Optional fields, and blanks escaped.
        QVERIFY(MountTable::parseLine(
            "41 29 0:50 / /mnt/lab\\040share rw shared:7 master:1 - nfs4 server:/lab\\040data rw", mount));
        QCOMPARE(mount.point + ' ' + mount.type, QByteArray("/mnt/lab share nfs4"));
        QVERIFY(!MountTable::parseLine("rootfs / rootfs rw 0 0", mount)); // not a line of the table
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
