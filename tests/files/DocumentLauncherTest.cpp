#include "DocumentLauncher.h"
#include "MessageRecorder.h"
#include "RecordedSuite.h"

#include <QtTest>

using namespace nebra;

namespace {

const QString Protocol = "/data/My Assays/Protocols/ELISA IgG Quantitation.apr";

// The launcher over a recorded suite; its checks, entries and wizard starts
// are logged in events, as allow and auditWritten answer them.
struct Launch
{
    test::RecordedSuite suite;
    QStringList events;
    QStringList used;
    bool allow = true;
    bool auditWritten = true;
    bool secured = false;
    QString document = Protocol;
    DocumentLauncher launcher{suite.paths, context()};

    LaunchContext context()
    {
        LaunchContext context;
        context.canPerform = [this](const QString& operation) {
            events << "check " + operation;
            return allow;
        };
        context.audit = [this](const QString& entry) {
            events << "audit " + entry;
            return auditWritten;
        };
        context.selectedDocumentPath = [this] { return document; };
        context.securityEnabled = [this] { return secured; };
        context.startNewProtocolWizard = [this] { events << QStringLiteral("wizard"); };
        context.documentUsed = [this](const QString& path) { used << path; };
        return context;
    }

    // The recording copy that stands in for the program a setting names.
    QString programFor(const QString& setting) const
    {
        static const QHash<QString, QString> names{
            {"LayoutEditorPath", "Layout Editor"},
            {"AssayApplicationPath", "Assay Application"},
            {"ReadConfigurationEditorPath", "Read Configuration Editor"}};
        return suite.programs.program(names.value(setting));
    }
    void run(const QString& procedure)
    {
        static const QHash<QString, void (DocumentLauncher::*)()> procedures{
            {"RunProtocol", &DocumentLauncher::RunProtocol},
            {"OpenProtocol", &DocumentLauncher::OpenProtocol},
            {"OpenResults", &DocumentLauncher::OpenResults},
            {"EditLayout", &DocumentLauncher::EditLayout},
            {"CreateLayout", &DocumentLauncher::CreateLayout},
            {"CreateReadConfiguration", &DocumentLauncher::CreateReadConfiguration},
            {"OpenReadConfiguration", &DocumentLauncher::OpenReadConfiguration},
            {"CreateProtocol", &DocumentLauncher::CreateProtocol},
            {"OpenReport", &DocumentLauncher::OpenReport}};
        (launcher.*procedures.value(procedure))();
    }
    QByteArrayList startedArgv() const
    {
        return suite.programs.waitForRecords(1) ? suite.programs.records().constFirst() : QByteArrayList();
    }
};

} // namespace

class DocumentLauncherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsTheProgramWithTheExpectedCommandLine_data()
    {
        QTest::addColumn<QString>("procedure");
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("stored"); // how the program path is written in the settings
        QTest::addColumn<QString>("inText"); // how it appears in the command line
        QTest::addColumn<QString>("document");
        QTest::addColumn<bool>("secured");
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("audit");
        const QString ars = QStringLiteral("/data/Results/Run \"final\" 2026.ars");
        const QString mlo = QStringLiteral("/data/Layouts/Plättchen 96 – été.mlo");
        const QString daq = QStringLiteral("/data/Read Configurations/Abs 450.daq");
        const QString assay = QStringLiteral("AssayApplicationPath");
        const QString layouts = QStringLiteral("LayoutEditorPath");
        const QString q = QStringLiteral("\"%1\"");
        // clang-format off
        QTest::newRow("run, blanks unquoted") << "RunProtocol" << assay << "%1" << q << Protocol << false << Protocol << "Run protocol: " + Protocol;
        QTest::newRow("run, path already quoted") << "RunProtocol" << assay << q << q << Protocol << false << Protocol << "Run protocol: " + Protocol;
        QTest::newRow("run, quote at the start only") << "RunProtocol" << assay << "\"%1" << "\"%1" << Protocol << false << Protocol << "Run protocol: " + Protocol;
        QTest::newRow("open for edit") << "OpenProtocol" << assay << "%1" << q << Protocol << false << "/edit " + Protocol << "Open protocol for edit: " + Protocol;
        QTest::newRow("results, quotes in the path") << "OpenResults" << assay << "%1" << q << ars << false << ars << "Open results: " + ars;
        QTest::newRow("layout, non-ASCII") << "EditLayout" << layouts << "%1" << q << mlo << false << mlo << "Edit layout: " + mlo;
        QTest::newRow("open read configuration") << "OpenReadConfiguration" << "ReadConfigurationEditorPath" << "%1" << q << daq << false << daq << "Open read configuration: " + daq;
        QTest::newRow("new read configuration") << "CreateReadConfiguration" << "ReadConfigurationEditorPath" << "%1" << q << daq << false << "" << "Create new read configuration";
        QTest::newRow("new layout, no session") << "CreateLayout" << layouts << "%1" << q << mlo << false << "" << "Create new layout template";
        QTest::newRow("new layout, in a session") << "CreateLayout" << layouts << "%1" << q << mlo << true << "\"layoutsfolder:LAYOUTS\"" << "Create new layout template";
        // clang-format on
    }

    void startsTheProgramWithTheExpectedCommandLine()
    {
        QFETCH(QString, procedure);
        QFETCH(QString, setting);
        QFETCH(QString, stored);
        QFETCH(QString, inText);
        QFETCH(QString, document);
        QFETCH(bool, secured);
        QFETCH(QString, arguments);
        QFETCH(QString, audit);
        Launch o;
        const QString program = o.programFor(setting);
        QVERIFY(o.suite.store.setValue("Paths/" + setting, stored.arg(program)));
        arguments.replace(QLatin1String("LAYOUTS"), o.suite.paths.LayoutsFolder());
        o.document = document;
        o.secured = secured;
        o.run(procedure);
        QCOMPARE(o.launcher.lastCommandLine().text, inText.arg(program) + ' ' + arguments);
        QCOMPARE(o.events, QStringList({"check " + procedure, "audit " + audit}));
        QByteArrayList expected{QFile::encodeName(program)};
        if (!arguments.isEmpty())
            expected << arguments.toUtf8();
        QCOMPARE(o.startedArgv(), expected);
        // Only a document whose program was started counts as used (recent documents).
        QCOMPARE(o.used, arguments.endsWith(document) ? QStringList{document} : QStringList{});
    }

    // Another program of the suite moves the assay application while the Organiser runs.
    void programPathIsReadAtEachLaunch()
    {
        Launch o;
        o.launcher.RunProtocol();
        QCOMPARE(o.startedArgv().value(0), QFile::encodeName(o.programFor("AssayApplicationPath")));
        o.suite.programs.clear();
        SettingsStore other(o.suite.folders.settingsFile());
        QVERIFY(other.setValue("Paths/AssayApplicationPath", o.programFor("LayoutEditorPath")));
        o.launcher.RunProtocol();
        QCOMPARE(o.startedArgv().value(0), QFile::encodeName(o.programFor("LayoutEditorPath")));
    }

    // A denied operation is neither audited nor started; one whose entry is not written is not carried out.
    void onlyAnAllowedAndAuditedOperationIsCarriedOut_data()
    {
        QTest::addColumn<QString>("procedure");
        QTest::addColumn<bool>("allow");
        QTest::addColumn<bool>("auditWritten");
        QTest::addColumn<QStringList>("events");
        const QString run = QStringLiteral("audit Run protocol: ") + Protocol;
        // clang-format off
        QTest::newRow("new protocol: the wizard") << "CreateProtocol" << true << true << QStringList{"check CreateProtocol", "audit Create new protocol", "wizard"};
        QTest::newRow("run denied") << "RunProtocol" << false << true << QStringList{"check RunProtocol"};
        QTest::newRow("new protocol denied") << "CreateProtocol" << false << true << QStringList{"check CreateProtocol"};
        QTest::newRow("run not written") << "RunProtocol" << true << false << QStringList{"check RunProtocol", run};
        QTest::newRow("new layout not written") << "CreateLayout" << true << false << QStringList{"check CreateLayout", "audit Create new layout template"};
        QTest::newRow("new protocol not written: no wizard") << "CreateProtocol" << true << false << QStringList{"check CreateProtocol", "audit Create new protocol"};
        QTest::newRow("report not written, never checked") << "OpenReport" << true << false << QStringList{"audit Open report: " + Protocol};
        // clang-format on
    }

    void onlyAnAllowedAndAuditedOperationIsCarriedOut()
    {
        QFETCH(QString, procedure);
        QFETCH(bool, allow);
        QFETCH(bool, auditWritten);
        QFETCH(QStringList, events);
        Launch o;
        o.allow = allow;
        o.auditWritten = auditWritten;
        o.run(procedure);
        QCOMPARE(o.events, events);
        QVERIFY(o.launcher.lastCommandLine().text.isEmpty() && o.used.isEmpty());
        // Nothing was started before: a start that had happened would be recorded before this later one.
        o.allow = true;
        o.auditWritten = true;
        o.launcher.OpenResults();
        QVERIFY(o.suite.programs.waitForRecords(1));
        QCOMPARE(o.suite.programs.records().size(), 1);
        QCOMPARE(o.suite.programs.records().constFirst().value(1), o.document.toUtf8());
    }

    void aFailedStartIsReportedAndTheAuditEntryStays_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("reason");
        // clang-format off
        QTest::newRow("empty") << "" << "No program is set.";
        QTest::newRow("missing") << "/nonexistent/Assay Application" << "The file does not exist.";
        QTest::newRow("folder") << "/tmp" << "The path names a folder, not a program.";
        QTest::newRow("not executable") << "HOME/Assay.txt" << "The file is not executable.";
        // clang-format on
    }

    void aFailedStartIsReportedAndTheAuditEntryStays()
    {
        QFETCH(QString, program);
        QFETCH(QString, reason);
        Launch o;
        program.replace(QLatin1String("HOME"), o.suite.folders.home());
        QFile(program).open(QIODevice::WriteOnly); // only where the row names a file in HOME
        QVERIFY(o.suite.store.setValue("Paths/AssayApplicationPath", program));
        test::MessageRecorder messages;
        o.launcher.RunProtocol();
        QCOMPARE(o.events.last(), "audit Run protocol: " + o.document);
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().title, DocumentLauncher::startFailureTitle());
        for (const QString& part : {QStringLiteral("AssayApplicationPath"), reason, program})
            QVERIFY2(messages.last().text.contains(part), qPrintable(messages.last().text));
        QVERIFY(o.used.isEmpty());
    }

    void aReportOpensWithTheDesktopOpenerWithoutACheck()
    {
        Launch o;
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(o.suite.programs.binFolder()) + ':' + path);
        o.document = QStringLiteral("/data/Reports/ELISA IgG Summary Report.mht");
        o.launcher.OpenReport();
        const QByteArrayList argv = o.startedArgv();
        qputenv("PATH", path);
        QCOMPARE(o.events, QStringList({"audit Open report: " + o.document}));
        QVERIFY(argv.value(0).endsWith("xdg-open"));
        QCOMPARE(argv.mid(1), QByteArrayList{o.document.toUtf8()});
        QCOMPARE(o.used, QStringList{o.document});
    }

    // A wizard's two files reach the editor joined by "; ", as the rest of its command line.
    void aNewlyMadeProtocolOpensUnquotedUnchecked()
    {
        Launch o;
        const QStringList made{"/data/Protocols/New Assay 1.apr", "/data/Layouts/New Assay 1.mlo"};
        const QString program = o.programFor(QStringLiteral("AssayApplicationPath"));
        o.launcher.OpenNewProtocol(made);
        QCOMPARE(o.launcher.lastCommandLine().text, program + ' ' + made.join("; "));
        QCOMPARE(o.startedArgv(), QByteArrayList({QFile::encodeName(program), made.join("; ").toUtf8()}));
        QVERIFY(o.events.isEmpty());
    }
};

QTEST_GUILESS_MAIN(DocumentLauncherTest)
#include "DocumentLauncherTest.moc"
