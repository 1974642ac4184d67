#include "SecurityFixture.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using nebra::test::SecurityFixture;

// A process that appends audit entries is killed without warning (SIGKILL)
// in the middle of its work: every entry it had reported committed must be
// in the database, and the chain must still verify.
class AuditCrashTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void killedWriterLosesNoCommittedEntry()
    {
        for (const int reportedBeforeKill : {5, 60}) {
            QTemporaryDir dir;
            SecurityFixture fixture(dir.path());
            fixture.create();
            const SecuritySettings& s = fixture.settings();

            QProcess writer;
            writer.start(QStringLiteral(AUDIT_APPENDER), {s.databasePath, s.siteKeyFile, s.chainHeadFile});
            QVERIFY2(writer.waitForStarted(10000), qPrintable(writer.errorString()));
            QList<qint64> reported;
            auto readReports = [&] {
                while (writer.canReadLine()) {
                    const QByteArray line = writer.readLine().trimmed();
                    QVERIFY2(line.startsWith("committed "), line.constData());
                    reported.append(line.mid(10).toLongLong());
                }
            };
            while (reported.size() < reportedBeforeKill) {
                QVERIFY2(writer.waitForReadyRead(20000), qPrintable(writer.readAllStandardError()));
                readReports();
            }
            writer.kill(); // SIGKILL: no handler, no clean-up, wherever it is
            QVERIFY(writer.waitForFinished(10000));
            QCOMPARE(writer.exitStatus(), QProcess::CrashExit);
            readReports(); // what it wrote before it died

            const std::unique_ptr<SecurityStore> store = fixture.open();
            QVERIFY(store);
            QString error;
            const QList<AuditEntry> entries = store->audit().entries(&error);
            QVERIFY(entries.size() >= reported.size() + 1); // + "Security database created"
            for (qint64 sequence : reported) {
                const AuditEntry& entry = entries.at(sequence - 1);
                QCOMPARE(entry.sequence, sequence);
                QCOMPARE(entry.text, QStringLiteral("Entry number %1 of the appender").arg(sequence - 1));
            }
            const AuditVerification verification = store->audit().verify();
            QVERIFY2(verification.ok, qPrintable(verification.message));
            // The trail goes on after the crash.
            QCOMPARE(store->audit().append("jsmith", "General", "After").sequence, entries.size() + 1);
            QVERIFY(store->audit().verify().ok);
        }
    }
};

QTEST_GUILESS_MAIN(AuditCrashTest)
#include "AuditCrashTest.moc"
