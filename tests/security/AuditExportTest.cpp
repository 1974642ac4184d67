#include "AuditExport.h"
#include "AuditTrailModel.h"
#include "AuditTrailReader.h"
#include "SecondProcess.h"
#include "SecurityFixture.h"
#include "TestFiles.h"

#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

#include <ctime>

using namespace nebra;
using namespace nebra::test;

namespace {

// A store of its own whose exports are recorded by jsmith.
struct Store
{
    UserFolders folders;
    SecurityFixture fixture{folders.root() + "/site"};
    std::unique_ptr<SecurityStore> store;

    Store()
    {
        fixture.create();
        store = fixture.open();
        QVERIFY(store);
    }

    AuditEntrySource entries()
    {
        return [this](const AuditEntryVisitor& visit, QString* error) {
            return store->audit().forEachEntry(visit, error);
        };
    }
    AuditExport::Recorder recorder()
    {
        return [this](const QString& text) {
            return store->audit().append("jsmith", "Security", text).sequence > 0;
        };
    }
    void append(const QString& area, const QString& text)
    {
        QVERIFY(store->audit().append("jsmith", area, text).sequence > 0);
    }
    QString path(const char* name) const { return folders.root() + QLatin1Char('/') + QLatin1String(name); }
};

} // namespace

// The reviewer's exports on a real security store: the CSV in the
// administration tool's form, the PDF read back as text, and the rule that
// an export the trail cannot record is not written.
class AuditExportTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable("pdftotext").isEmpty())
            QFAIL("pdftotext (poppler-utils) is missing: run scripts/install-deps.sh");
    }

    void csvIsTheToolsFormatWithFormulasNeutralised()
    {
        Store o;
        // Each start a spreadsheet would run as a formula.
        for (const char* formula :
             {"=HYPERLINK(\"http://x\")", "+1+cmd|' /C calc'!A0", "-2+3", "@SUM(A1)", "\t=1", "\r=1"})
            o.append("General", formula);
        o.append("General", "Run protocol: a, \"b\".apr");
        AuditExport exporter(o.entries(), "all entries", o.recorder());
        QString error;
        QCOMPARE(exporter.writeCsv(o.path("trail.csv"), &error), AuditExport::Outcome::Written);
        const QList<QByteArray> lines = readFile(o.path("trail.csv")).split('\n');
        QCOMPARE(lines.first(), QByteArray("Sequence,Time (UTC),User,Workstation,Area,Text,MAC,Signature\r"));
        QCOMPARE(exporter.entryCount(), 8); // the store's own entry and the seven above
        QVERIFY(lines[2].contains(",General,\"'=HYPERLINK(\"\"http://x\"\")\","));
        for (int i = 3; i < 8; ++i)
            QVERIFY2(lines[i].contains(",General,'") || lines[i].contains(",General,\"'"),
                     lines[i].constData());
        QVERIFY(lines[8].contains(",\"Run protocol: a, \"\"b\"\".apr\","));
        // The export's own entry follows the entries it wrote.
        QCOMPARE(o.fixture.auditTexts().last(),
                 QStringLiteral("Audit trail exported to CSV file \"%1\": 8 entries, filter: all entries")
                     .arg(o.path("trail.csv")));

        // An export the trail cannot record is not written, nor does it replace a file.
        const QByteArray written = readFile(o.path("trail.csv"));
        o.fixture.fillUp("Security");
        QCOMPARE(exporter.writeCsv(o.path("trail.csv"), &error), AuditExport::Outcome::NotRecorded);
        QCOMPARE(exporter.writeCsv(o.path("new.csv"), &error), AuditExport::Outcome::NotRecorded);
        QCOMPARE(exporter.writePdf(o.path("new.pdf"), {}, &error), AuditExport::Outcome::NotRecorded);
        QCOMPARE(readFile(o.path("trail.csv")), written);
        QCOMPARE(QDir(o.folders.root()).entryList(QDir::Files), QStringList{"trail.csv"});

        // The filter in words, as the exports' entries give it.
        const QDateTime day(QDate(2026, 11, 1), QTime(0, 0));
        QCOMPARE(AuditExport::filterInWords({}), "all entries");
        QCOMPARE(AuditExport::filterInWords({day, day.addDays(25), "jsmith", "Security", "export"}),
                 "from 2026-11-01 to 2026-11-25, user jsmith, area Security, text containing \"export\"");
        QCOMPARE(AuditExport::filterInWords({{}, day.addDays(1), {}, {}, {}}), "to 2026-11-01");
    }

    void pdfHasTitleBlockPagesAndRows()
    {
        Store o;
        o.append("General", "Open results: " + QString(240, 'w'));
        for (int i = 0; i < 120; ++i)
            o.append("General", QStringLiteral("Run protocol: Assay %1.apr").arg(i));
        AuditPrintoutTitle title{"Cell Biology Lab", "jsmith (Jane Smith)", QDateTime::currentDateTime(),
                                 "user jsmith", "The audit trail holds 122 entries; all are intact."};
        AuditExport exporter(o.entries(), title.filter, o.recorder());
        QString error;
        QCOMPARE(exporter.writePdf(o.path("trail.pdf"), title, &error), AuditExport::Outcome::Written);
        QCOMPARE(exporter.entryCount(), 122);
        const QString text = runProgram("pdftotext", {"-layout", o.path("trail.pdf"), "-"}).out;
        for (const char* pattern :
             {"Audit Trail", "Site:\\s+Cell Biology Lab", "Printed by:\\s+jsmith \\(Jane Smith\\)",
              "Printed:\\s+\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d \\S+", "Filter:\\s+user jsmith",
              "Chain:\\s+The audit trail holds 122 entries; all are intact\\.",
              "Sequence\\s+Time\\s+User\\s+Workstation\\s+Area\\s+Text",
              "\\n\\s*62\\s+\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d "
              "\\S+\\s+jsmith\\s+\\S+\\s+General\\s+Run protocol: "
              "Assay 59\\.apr"})
            QVERIFY2(text.contains(QRegularExpression(QLatin1String(pattern))), pattern);
        // Every page is numbered out of the same total, and the long text is wrapped, not cut.
        QStringList pages; // "n of total", page by page
        for (auto it = QRegularExpression("Page (\\d+ of \\d+)").globalMatch(text); it.hasNext();)
            pages << it.next().captured(1);
        QVERIFY2(pages.size() >= 3, qPrintable(pages.join(',')));
        for (int page = 1; page <= pages.size(); ++page)
            QCOMPARE(pages[page - 1], QStringLiteral("%1 of %2").arg(page).arg(pages.size()));
        QVERIFY(QString(text).remove(QRegularExpression("\\s")).contains(QString(240, QLatin1Char('w'))));

        // A trail that changes while it is printed is refused.
        int readings = 0;
        const AuditEntrySource growing = [&readings](const AuditEntryVisitor& visit, QString*) {
            const int count = ++readings == 1 ? 2 : 3;
            for (int i = count; i >= 1; --i)
                if (!visit(AuditEntry{i, "2026-11-25T08:00:00.000Z", {}, {}, {}, {}, {}}))
                    break;
            return true;
        };
        bool recorded = false;
        AuditExport changing(growing, {}, [&recorded](const QString&) { return recorded = true; });
        QCOMPARE(changing.writePdf(o.path("changing.pdf"), {}, &error), AuditExport::Outcome::Failed);
        QCOMPARE(error, "The audit trail changed while it was being printed; please try again.");
        QVERIFY(!recorded);
        QVERIFY(!QFile::exists(o.path("changing.pdf")));
    }

    // 11.50: a signature shows its meaning, the signer's printed name and the
    // time with its zone alike in the viewer, the CSV and the PDF; only an
    // entry that is a signature, by the user it names, is shown as one.
    void signaturesShowTheSignerTheTimeAndTheMeaning()
    {
        qputenv("TZ", "Europe/Berlin");
        tzset();
        Store o;
        const QByteArray sha(32, 's');
        const SignResult signature = o.store->signatures().record(
            {"/data/r.pdf", sha, "Approved by QA", "jsmith", "Jane Smith", 0, 0});
        QVERIFY2(signature.sequence > 0, qPrintable(signature.error));
        const QString forged =
            SignatureEntries::text({"/data/r.pdf", sha, "Approved", "jsmith", "Jane Smith", 0, 0});
        QVERIFY(o.store->audit().append("mallory", "Signatures", forged).sequence > 0);
        o.append("General", forged);
        AuditExport exporter(o.entries(), "all entries", o.recorder());
        QString error;
        QCOMPARE(exporter.writeCsv(o.path("trail.csv"), &error), AuditExport::Outcome::Written);
        const QList<QByteArray> lines = readFile(o.path("trail.csv")).split('\n');
        const QString manifest = QString::fromUtf8(lines[2]).section(QLatin1Char(','), -2).chopped(1);
        QVERIFY2(
            manifest.contains(QRegularExpression("^\"Approved by QA by Jane Smith \\(jsmith\\), \\d{1,2} "
                                                 "[A-Z][a-z]{2} \\d{4} \\d\\d:\\d\\d:\\d\\d CES?T\"$")),
            qPrintable(manifest));
        QVERIFY2(lines[3].endsWith(",\r") && lines[4].endsWith(",\r"), lines[3].constData());

        const AuditPrintoutTitle title{"Lab", "jsmith (Jane Smith)", QDateTime::currentDateTime(), "all",
                                       "intact"};
        QCOMPARE(exporter.writePdf(o.path("trail.pdf"), title, &error), AuditExport::Outcome::Written);
        const auto bare = [](QString text) { return text.remove(QRegularExpression("[\\s\"]")); };
        QVERIFY2(
            bare(runProgram("pdftotext", {"-layout", o.path("trail.pdf"), "-"}).out).contains(bare(manifest)),
            qPrintable(manifest));

        const AuditTrailReader reader(o.store->database());
        AuditTrailModel viewer(
            {[&](const AuditFilter& f, qint64* n, QString* e) { return reader.count(f, n, e); },
             [&](const AuditFilter& f, const AuditOrder& order, qint64 offset, int limit,
                 QList<AuditEntry>* out,
                 QString* e) { return reader.read(f, order, offset, limit, out, e); }});
        viewer.reload();
        const QString shown = viewer.index(viewer.rowCount() - 2, int(AuditColumn::Text)).data().toString();
        QVERIFY2(shown.startsWith(manifest.mid(1).chopped(1)), qPrintable(shown)); // newest first
    }
};

QTEST_MAIN(AuditExportTest)
#include "AuditExportTest.moc"
