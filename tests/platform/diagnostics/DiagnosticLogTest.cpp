#include "DiagnosticLog.h"
#include "TestFiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

class DiagnosticLogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aRunReplacesTheLogWithDateTimeAndNumberedMilestones()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("NebraLog.txt");
        nebra::test::writeFile(path, QByteArray(5000, 'x')); // the log of an earlier run
        DiagnosticLog log([] { return 1; });
        for (int run = 0; run < 2; ++run) { // opening again truncates and counts from 1 again
            QVERIFY(log.Open(dir.path()));
            log.LogTraceBlock();
            log.LogTrace();
            log.LogTrace();
            // A note goes to standard error, never into the log.
            QTest::ignoreMessage(QtWarningMsg, "Log note: a note counts nothing");
            LogNote(QStringLiteral("a note counts nothing"));
            log.LogTraceBlock();
            log.LogTrace();
        }
        const QList<QByteArray> written = nebra::test::readFile(path).split('\n');
        QVERIFY(written[0].endsWith('\r') && written[0].size() > 1); // the date
        QVERIFY(written[1].endsWith('\r') && written[1].size() > 1); // the time
        // The last line ends too.
        const QList<QByteArray> expected = {"Log trace: Block 1\r", "Log trace: 1\r", "Log trace: 2\r",
                                            "Log trace: Block 2\r", "Log trace: 3\r", ""};
        QCOMPARE(written.mid(2), expected);
    }

    void theLevelIsReadAfreshZeroOrLessAndAnOverflowWriteNothing()
    {
        QTemporaryDir dir;
        int level = 1;
        DiagnosticLog log([&level] { return level; });
        QVERIFY(log.Open(dir.path()));
        log.LogTrace();
        for (int off : {0, -3}) {
            level = off;
            log.LogTrace();
            log.LogTraceBlock();
        }
        level = 2;
        log.LogTrace();
        QCOMPARE(log.traceCounter(), qint16(2));
        QCOMPARE(log.blockCounter(), qint16(0));
        QCOMPARE(nebra::test::readFile(log.filePath()).split('\n').mid(2),
                 (QList<QByteArray>{"Log trace: 1\r", "Log trace: 2\r", ""}));
        // Past 32767 it raises and writes nothing.
        for (int i = 2; i < 32767; ++i)
            log.LogTrace();
        const qint64 sizeBefore = QFileInfo(log.filePath()).size();
        QVERIFY_THROWS_EXCEPTION(OverflowError, log.LogTrace());
        QCOMPARE(log.traceCounter(), qint16(32767));
        QCOMPARE(QFileInfo(log.filePath()).size(), sizeBefore);
        // The other counter is independent and still counts.
        log.LogTraceBlock();
        QCOMPARE(log.blockCounter(), qint16(1));
    }

    // Logging switched on without a file is a bad-file error; a folder that
    // cannot be written fails the open, and the run goes on without a log.
    void withoutAFile()
    {
        int level = 0;
        DiagnosticLog unopened([&level] { return level; });
        level = 1;
        QVERIFY_THROWS_EXCEPTION(BadFileError, unopened.LogTrace());
        QTemporaryDir dir;
        nebra::test::writeFile(dir.filePath("not-a-folder"));
        DiagnosticLog log([] { return 1; });
        QVERIFY(!log.Open(dir.filePath("not-a-folder")));
        QVERIFY(!log.errorString().isEmpty());
        log.LogTrace(); // no exception
        QCOMPARE(log.traceCounter(), qint16(0));
    }
};

QTEST_GUILESS_MAIN(DiagnosticLogTest)
#include "DiagnosticLogTest.moc"
