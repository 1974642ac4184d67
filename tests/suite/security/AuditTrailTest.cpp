#include "SecurityFixture.h"
#include "TestFiles.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using nebra::test::SecurityFixture;

namespace {

// A database of its own whose trail holds six entries.
struct Trail
{
    QTemporaryDir dir;
    SecurityFixture fixture{dir.path()};

    Trail()
    {
        fixture.create(); // entry 1: "Security database created"
        const std::unique_ptr<SecurityStore> store = fixture.open();
        for (int i = 2; i <= 6; ++i)
            QCOMPARE(
                store->audit().append("jsmith", "General", QString("Run protocol: %1.apr").arg(i)).sequence,
                i);
    }
};

} // namespace

// The audit trail's entries, its refusal of changes, and verification of
// the MAC chain against every kind of tampering with the file.
class AuditTrailTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entriesAreRecordedInOrderSurviveReopeningAndStay()
    {
        Trail o;
        const QDateTime before = QDateTime::currentDateTimeUtc();
        {
            const std::unique_ptr<SecurityStore> store = o.fixture.open();
            const AuditAppendResult result = store->audit().append("Jörg", "General", "a, \"b\"\nc");
            QCOMPARE(result.sequence, 7);
            QVERIFY(result.error.isEmpty());
        }
        const std::unique_ptr<SecurityStore> store = o.fixture.open();
        QString error;
        const QList<AuditEntry> entries = store->audit().entries(&error);
        QCOMPARE(entries.size(), 7);
        for (int i = 0; i < entries.size(); ++i)
            QCOMPARE(entries[i].sequence, i + 1);
        const AuditEntry& last = entries.last();
        QCOMPARE(last.userName + '|' + last.area + '|' + last.text, "Jörg|General|a, \"b\"\nc");
        QCOMPARE(last.workstation, AuditTrail::workstationName());
        const QDateTime stamp = QDateTime::fromString(last.utc, Qt::ISODateWithMs);
        QCOMPARE(stamp.timeSpec(), Qt::UTC);
        QVERIFY(stamp >= before.addMSecs(-1) && stamp <= QDateTime::currentDateTimeUtc());
        QVERIFY(store->audit().verify().ok);
        // No entry can be changed or deleted through the database.
        QSqlQuery q = store->database().newQuery();
        QVERIFY(!store->database().exec(q, "UPDATE audit_trail SET text = 'x' WHERE seq = 2", {}, &error));
        QVERIFY2(error.contains(QLatin1String("cannot be changed")), qPrintable(error));
        QVERIFY(!store->database().exec(q, "DELETE FROM audit_trail WHERE seq = 6", {}, &error));
        QVERIFY2(error.contains(QLatin1String("cannot be deleted")), qPrintable(error));
        QCOMPARE(store->audit().entries(&error).size(), 7);
    }

    void verifyFindsTheFirstBadEntry_data()
    {
        QTest::addColumn<QStringList>("statements");
        QTest::addColumn<qint64>("firstBad");
        QTest::addColumn<QString>("message");
        const QString altered =
            "Entry %1 has been altered, or entries have been moved or inserted before it.";
        const QString cutOff = "Entries %1 to 6 are missing: the newest entries have been cut off.";
        // clang-format off
        QTest::newRow("text edited") << QStringList{"UPDATE audit_trail SET text = 'Run protocol: other.apr' WHERE seq = 3"} << qint64(3) << altered.arg(3);
        QTest::newRow("user edited") << QStringList{"UPDATE audit_trail SET user_name = 'admin' WHERE seq = 4"} << qint64(4) << altered.arg(4);
        QTest::newRow("time edited") << QStringList{"UPDATE audit_trail SET utc = '2020-01-01T00:00:00.000Z' WHERE seq = 2"} << qint64(2) << altered.arg(2);
        QTest::newRow("row deleted") << QStringList{"DELETE FROM audit_trail WHERE seq = 3"} << qint64(3) << "Entry 3 is missing.";
        QTest::newRow("row deleted and the rest renumbered") << QStringList{"DELETE FROM audit_trail WHERE seq = 3", "UPDATE audit_trail SET seq = seq - 1 WHERE seq > 3"} << qint64(3) << altered.arg(3);
        QTest::newRow("rows swapped") << QStringList{"UPDATE audit_trail SET seq = 100 WHERE seq = 2", "UPDATE audit_trail SET seq = 2 WHERE seq = 4", "UPDATE audit_trail SET seq = 4 WHERE seq = 100"} << qint64(2) << altered.arg(2);
        QTest::newRow("row inserted at the end") << QStringList{"INSERT INTO audit_trail SELECT 7, utc, user_name, workstation, area, 'Forged', mac FROM audit_trail WHERE seq = 6"} << qint64(7) << altered.arg(7);
        QTest::newRow("newest rows cut off") << QStringList{"DELETE FROM audit_trail WHERE seq >= 5"} << qint64(5) << cutOff.arg(5);
        QTest::newRow("newest row cut off") << QStringList{"DELETE FROM audit_trail WHERE seq = 6"} << qint64(6) << "Entry 6 is missing: the newest entry has been cut off.";
        QTest::newRow("everything cut off") << QStringList{"DELETE FROM audit_trail"} << qint64(1) << cutOff.arg(1);
        // clang-format on
    }

    void verifyFindsTheFirstBadEntry()
    {
        QFETCH(QStringList, statements);
        QFETCH(qint64, firstBad);
        QFETCH(QString, message);
        Trail o;
        QVERIFY(o.fixture.open()->audit().verify().ok);
        // Whoever edits the file directly can drop the triggers first.
        o.fixture.tamper(
            QStringList{"DROP TRIGGER audit_trail_no_update", "DROP TRIGGER audit_trail_no_delete"} +
            statements);
        const AuditVerification result = o.fixture.open(SecurityStore::HeadCheck::Skipped)->audit().verify();
        QVERIFY(!result.ok);
        QCOMPARE(result.firstBadSequence, firstBad);
        QCOMPARE(result.message, message);
    }

    // A power cut in the middle of the head's sector can leave the start of
    // the new record over the rest of the old one: its seal gives it away,
    // nothing is chained on, and re-sealing from the database repairs it.
    void tornHeadIsDetectedAndRepairedFromTheDatabase()
    {
        for (const int cut : {26, 60, 150}) {
            Trail o;
            const QString head = o.fixture.settings().chainHeadFile;
            const QByteArray before = nebra::test::readFile(head);
            QCOMPARE(o.fixture.open()->audit().append("jsmith", "General", "Run protocol: 7.apr").sequence,
                     7);
            const QByteArray after = nebra::test::readFile(head);
            QCOMPARE(after.size(), before.size()); // written over the old record
            nebra::test::writeFile(head, after.left(cut) + before.mid(cut));
            const std::unique_ptr<SecurityStore> store = o.fixture.open(SecurityStore::HeadCheck::Skipped);
            QVERIFY(!store->audit().verify().ok);
            QCOMPARE(store->audit().append("jsmith", "General", "After the cut").sequence, 0);
            QString error;
            QVERIFY2(SecurityAdministration(*store, "admin").resealChainHead(&error), qPrintable(error));
            QVERIFY(store->audit().verify().ok);
            QCOMPARE(store->audit().append("jsmith", "General", "After the repair").sequence, 9);
        }
    }

    // Heads written before records were padded are advanced in place too; a
    // head wound back stops every append.
    void unpaddedHeadIsAdvancedAndABrokenOneStopsAppending()
    {
        Trail o;
        const QString head = o.fixture.settings().chainHeadFile;
        nebra::test::writeFile(head, nebra::test::readFile(head).trimmed() + '\n');
        QCOMPARE(o.fixture.open()->audit().append("jsmith", "General", "Run protocol: 7.apr").sequence, 7);
        QCOMPARE(QFileInfo(head).size(), 256);
        QVERIFY(o.fixture.open()->audit().verify().ok);

        // Winding the head back to hide cut-off entries needs the site key to seal it.
        nebra::test::writeFile(head, nebra::test::readFile(head).replace("count=7", "count=5"));
        const QString altered = "The audit chain head file \"" + head +
                                "\" has been altered or does not belong to this database.";

        const std::unique_ptr<SecurityStore> store = o.fixture.open(SecurityStore::HeadCheck::Skipped);
        const AuditVerification result = store->audit().verify();
        QVERIFY(!result.ok);
        QCOMPARE(result.message, altered);
        // Nothing is chained onto a trail whose head is in doubt.
        const AuditAppendResult refused = store->audit().append("jsmith", "General", "After the damage");
        QCOMPARE(refused.sequence, 0);
        QVERIFY2(refused.error.contains(altered), qPrintable(refused.error));
        QVERIFY(!store->audit().verify().ok); // the append did not replace the damaged head
    }

    // A process that appends audit entries is killed without warning (SIGKILL)
    // in the middle of its work: every entry it had reported committed must be
    // in the database, and the chain must still verify.
    void killedWriterLosesNoCommittedEntry()
    {
        for (const int reportedBeforeKill : {5, 60}) {
            QTemporaryDir dir;
            SecurityFixture fixture(dir.path());
            fixture.create();
            const SecuritySettings& s = fixture.settings();

            QProcess writer;
            writer.start(STORE_WORKER, {"append", s.databasePath, s.siteKeyFile, s.chainHeadFile});
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

QTEST_GUILESS_MAIN(AuditTrailTest)
#include "AuditTrailTest.moc"
