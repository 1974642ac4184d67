#include "DiagnosticLog.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;

class DiagnosticLogTest : public QObject
{
    Q_OBJECT

private:
    static QList<QByteArray> lines(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        QList<QByteArray> result = file.readAll().split('\n');
        if (!result.isEmpty() && result.last().isEmpty())
            result.removeLast();
        return result;
    }

private Q_SLOTS:
    void writesDateTimeThenNumberedMilestonesWithCrLf()
    {
        QTemporaryDir dir;
        DiagnosticLog log([] { return 1; });
        QVERIFY(log.Open(dir.path()));
        log.LogTraceBlock();
        log.LogTrace();
        log.LogTrace();
        log.LogTraceBlock();
        log.LogTrace();

        const QList<QByteArray> written = lines(dir.filePath(QStringLiteral("NebraLog.txt")));
        QCOMPARE(written.size(), 7);
        for (const QByteArray& line : written)
            QVERIFY2(line.endsWith('\r'), line.constData());
        QVERIFY(!written[0].trimmed().isEmpty()); // the date
        QVERIFY(!written[1].trimmed().isEmpty()); // the time
        const QList<QByteArray> expected = {"Log trace: Block 1\r", "Log trace: 1\r", "Log trace: 2\r",
                                            "Log trace: Block 2\r", "Log trace: 3\r"};
        QCOMPARE(written.mid(2), expected);
    }

    void levelZeroWritesNothingAndCountsNothing_data()
    {
        QTest::addColumn<int>("level");
        QTest::newRow("zero") << 0;
        QTest::newRow("negative") << -3;
    }

    void levelZeroWritesNothingAndCountsNothing()
    {
        QFETCH(int, level);
        DiagnosticLog log([level] { return level; });
        log.LogTraceBlock();
        log.LogTrace();
        QCOMPARE(log.blockCounter(), qint16(0));
        QCOMPARE(log.traceCounter(), qint16(0));
    }

    void levelIsReadAfreshOnEveryCall()
    {
        QTemporaryDir dir;
        int level = 1;
        DiagnosticLog log([&level] { return level; });
        QVERIFY(log.Open(dir.path()));
        log.LogTrace();
        level = 0;
        log.LogTrace();
        level = 2;
        log.LogTrace();
        QCOMPARE(log.traceCounter(), qint16(2));
        QCOMPARE(lines(log.filePath()).last(), QByteArray("Log trace: 2\r"));
    }

    void reopeningTruncatesAndResetsCounters()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("NebraLog.txt"));
        {
            QFile old(path);
            QVERIFY(old.open(QIODevice::WriteOnly));
            old.write(QByteArray(5000, 'x'));
        }
        DiagnosticLog log([] { return 1; });
        QVERIFY(log.Open(dir.path()));
        log.LogTrace();
        QVERIFY(log.Open(dir.path()));
        log.LogTrace();
        const QList<QByteArray> written = lines(path);
        QCOMPARE(written.size(), 3);
        QCOMPARE(written[2], QByteArray("Log trace: 1\r"));
    }

    void overflowPast32767RaisesAndWritesNothing()
    {
        QTemporaryDir dir;
        DiagnosticLog log([] { return 1; });
        QVERIFY(log.Open(dir.path()));
        for (int i = 0; i < 32767; ++i)
            log.LogTrace();
        QCOMPARE(log.traceCounter(), qint16(32767));
        const qint64 sizeBefore = QFileInfo(log.filePath()).size();
        QVERIFY_THROWS_EXCEPTION(OverflowError, log.LogTrace());
        QCOMPARE(log.traceCounter(), qint16(32767));
        QCOMPARE(QFileInfo(log.filePath()).size(), sizeBefore);
        // The other counter is independent and still counts.
        log.LogTraceBlock();
        QCOMPARE(log.blockCounter(), qint16(1));
    }

    void loggingSwitchedOnWithoutAFileIsABadFileError()
    {
        int level = 0;
        DiagnosticLog log([&level] { return level; });
        level = 1;
        QVERIFY_THROWS_EXCEPTION(BadFileError, log.LogTrace());
    }

    void unwritableFolderFailsOpenAndStaysSilent()
    {
        QTemporaryDir dir;
        QFile blocker(dir.filePath(QStringLiteral("not-a-folder")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        DiagnosticLog log([] { return 1; });
        QVERIFY(!log.Open(blocker.fileName()));
        QVERIFY(!log.errorString().isEmpty());
        log.LogTrace(); // no exception: the run goes on without a log
        QCOMPARE(log.traceCounter(), qint16(0));
    }
};

QTEST_GUILESS_MAIN(DiagnosticLogTest)
#include "DiagnosticLogTest.moc"
