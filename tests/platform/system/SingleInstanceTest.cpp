#include "UserFolders.h"

#include <QProcess>
#include <QTest>

using nebra::test::UserFolders;

class SingleInstanceTest : public QObject
{
    Q_OBJECT

private:
    static void start(QProcess& process, const char* program, const QStringList& arguments = {})
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        env.insert(QStringLiteral("QTWEBENGINE_DISABLE_SANDBOX"), QStringLiteral("1"));
        process.setProcessEnvironment(env);
        process.start(QString::fromLocal8Bit(program), arguments);
    }

private Q_SLOTS:
    void twoStartsAtTheSameMomentLeaveOne()
    {
        for (int round = 0; round < 5; ++round) {
            UserFolders folders;
            QProcess first;
            QProcess second;
            for (QProcess* p : {&first, &second})
                start(*p, PROBE_PATH, {QStringLiteral("race")});
            QVERIFY(first.waitForStarted() && second.waitForStarted());
            // The duplicate ends by itself; the primary ends once the duplicate has asked it to show itself.
            QVERIFY(first.waitForFinished(20000) && second.waitForFinished(20000));
            const QByteArray outputs = first.readAllStandardOutput() + second.readAllStandardOutput();
            QCOMPARE(outputs.count("primary"), 1);
            QCOMPARE(outputs.count("duplicate"), 1);
            QCOMPARE(outputs.count("activated"), 1);
            QCOMPARE(first.exitCode() + second.exitCode(), 3);
        }
    }

    void staleSocketOfACrashedInstanceIsTakenOver()
    {
        UserFolders folders;
        QProcess crashed;
        start(crashed, PROBE_PATH, {QStringLiteral("stale")});
        QVERIFY(crashed.waitForReadyRead(20000));
        crashed.kill(); // leaves its socket file behind
        QVERIFY(crashed.waitForFinished(20000));

        QProcess next;
        start(next, PROBE_PATH, {QStringLiteral("stale")});
        QVERIFY(next.waitForReadyRead(20000));
        QCOMPARE(next.readAllStandardOutput().trimmed(), QByteArray("primary")); // killed as it goes
    }

    void secondOrganiserEndsAtOnceAndTheFirstKeepsRunning()
    {
        UserFolders folders;
        QProcess first;
        start(first, NMAIN5_PATH);
        QVERIFY(first.waitForStarted());
        const QString socket = folders.root() + QStringLiteral("/runtime/nebra/NMain5.socket");
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(socket), 30000);

        QProcess second;
        start(second, NMAIN5_PATH);
        QVERIFY(second.waitForFinished(30000));
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(first.state(), QProcess::Running);
        first.terminate();
        if (!first.waitForFinished(20000))
            first.kill();
    }
};

QTEST_GUILESS_MAIN(SingleInstanceTest)
#include "SingleInstanceTest.moc"
