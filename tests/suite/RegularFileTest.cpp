#include "RegularFile.h"
#include "SpecialFiles.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace nebra;
using Status = RegularFile::Status;

class RegularFileTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    const test::BoundSocket m_socket{m_dir.filePath("socket")};

    QString path(const QString& name) const { return name.startsWith(u'/') ? name : m_dir.filePath(name); }

private Q_SLOTS:
    void initTestCase()
    {
        test::writeFile(m_dir.filePath("ten.txt"), "0123456789");
        test::writeFile(m_dir.filePath("empty.txt"));
        test::makeFolder(m_dir.filePath("folder"));
        test::makeFifo(m_dir.filePath("pipe"));
        QVERIFY(m_socket.isBound());
        QVERIFY(QFile::link(m_dir.filePath("pipe"), m_dir.filePath("link to pipe")));
        QVERIFY(QFile::link(m_dir.filePath("ten.txt"), m_dir.filePath("link to file")));
    }

    void readsOnlyRegularFilesWithinTheLimit_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<qint64>("limit");
        QTest::addColumn<Status>("status");
        QTest::addColumn<QByteArray>("bytes");
        // clang-format off
        QTest::newRow("exactly the limit") << "ten.txt" << qint64(10) << Status::Read << QByteArray("0123456789");
        QTest::newRow("one byte over") << "ten.txt" << qint64(9) << Status::TooLarge << QByteArray();
        QTest::newRow("empty") << "empty.txt" << qint64(0) << Status::Read << QByteArray();
        QTest::newRow("link to a file") << "link to file" << qint64(10) << Status::Read << QByteArray("0123456789");
        // The file system calls it empty; what is read says otherwise.
        QTest::newRow("size reported as 0") << "/proc/self/status" << qint64(64) << Status::TooLarge << QByteArray();
        QTest::newRow("missing") << "nothing here" << qint64(10) << Status::Missing << QByteArray();
        QTest::newRow("folder") << "folder" << qint64(10) << Status::NotAFile << QByteArray();
        QTest::newRow("pipe") << "pipe" << qint64(10) << Status::NotAFile << QByteArray();
        QTest::newRow("link to a pipe") << "link to pipe" << qint64(10) << Status::NotAFile << QByteArray();
        QTest::newRow("socket") << "socket" << qint64(10) << Status::NotAFile << QByteArray();
        QTest::newRow("endless device") << "/dev/zero" << qint64(10) << Status::NotAFile << QByteArray();
        // clang-format on
    }

    void readsOnlyRegularFilesWithinTheLimit()
    {
        QFETCH(QString, name);
        QFETCH(qint64, limit);
        QFETCH(Status, status);
        QFETCH(QByteArray, bytes);
        const test::PipeWatchdog watchdog(m_dir.filePath("pipe"));
        QByteArray read = "left over";
        QString reason;
        QCOMPARE(RegularFile::read(path(name), limit, read, reason), status);
        QCOMPARE(read, bytes);
        QCOMPARE(reason.isEmpty(), status == Status::Read);
        QCOMPARE(RegularFile::isRegular(path(name)), status == Status::Read || status == Status::TooLarge);
        QVERIFY2(!watchdog.released(), "the read blocked on the pipe");
    }
};

QTEST_GUILESS_MAIN(RegularFileTest)
#include "RegularFileTest.moc"
