#include "DocumentLauncher.h"
#include "MessageRecorder.h"
#include "RecordedSuite.h"

#include <QtTest>

#include <memory>

using namespace nebra;

class DocumentLauncherTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::RecordedSuite> m_suite;
    std::unique_ptr<DocumentLauncher> m_launcher;
    QStringList m_events;
    QStringList m_used;
    bool m_allow = true;
    bool m_auditWritten = true;
    bool m_secured = false;
    QString m_document = QStringLiteral("/data/My Assays/Protocols/ELISA IgG Quantitation.apr");

    // The recording copy that stands in for the program a setting names.
    QString programFor(const QString& setting) const
    {
        static const QHash<QString, QString> names{
            {"LayoutEditorPath", "Layout Editor"},
            {"AssayApplicationPath", "Assay Application"},
            {"ReadConfigurationEditorPath", "Read Configuration Editor"}};
        return m_suite->programs.program(names.value(setting));
    }
    void setProgram(const QString& setting, const QString& path)
    {
        QVERIFY(m_suite->store.setValue(QStringLiteral("Paths/") + setting, path));
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
            {"CreateProtocol", &DocumentLauncher::CreateProtocol},
            {"OpenReport", &DocumentLauncher::OpenReport}};
        (m_launcher.get()->*procedures.value(procedure))();
    }
    QByteArrayList startedArgv() const
    {
        return m_suite->programs.waitForRecords(1) ? m_suite->programs.records().constFirst()
                                                   : QByteArrayList();
    }
    // Nothing was started before: a start that had happened would be recorded before this later one.
    void nothingStartedBefore()
    {
        m_allow = true;
        m_auditWritten = true;
        m_launcher->OpenResults();
        QVERIFY(m_suite->programs.waitForRecords(1));
        QCOMPARE(m_suite->programs.records().size(), 1);
        QCOMPARE(m_suite->programs.records().constFirst().value(1), m_document.toUtf8());
    }

private Q_SLOTS:
    void init()
    {
        m_suite = std::make_unique<test::RecordedSuite>();
        m_events.clear();
        m_used.clear();
        m_allow = true;
        m_auditWritten = true;
        m_secured = false;
        LaunchContext context;
        context.canPerform = [this](const QString& operation) {
            m_events << "check " + operation;
            return m_allow;
        };
        context.audit = [this](const QString& entry) {
            m_events << "audit " + entry;
            return m_auditWritten;
        };
        context.selectedDocumentPath = [this] { return m_document; };
        context.securityEnabled = [this] { return m_secured; };
        context.startNewProtocolWizard = [this] { m_events << QStringLiteral("wizard"); };
        context.documentUsed = [this](const QString& path) { m_used << path; };
        m_launcher = std::make_unique<DocumentLauncher>(m_suite->paths, std::move(context));
    }

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
        const QString apr = m_document;
        const QString ars = QStringLiteral("/data/Results/Run \"final\" 2026.ars");
        const QString mlo = QStringLiteral("/data/Layouts/Plättchen 96 – été.mlo");
        const QString daq = QStringLiteral("/data/Read Configurations/Abs 450.daq");
        const QString assay = QStringLiteral("AssayApplicationPath");
        const QString layouts = QStringLiteral("LayoutEditorPath");
        const QString q = QStringLiteral("\"%1\"");
        // clang-format off
        QTest::newRow("run, blanks unquoted") << "RunProtocol" << assay << "%1" << q << apr << false << apr << "Run protocol: " + apr;
        QTest::newRow("run, path already quoted") << "RunProtocol" << assay << q << q << apr << false << apr << "Run protocol: " + apr;
        QTest::newRow("run, quote at the start only") << "RunProtocol" << assay << "\"%1" << "\"%1" << apr << false << apr << "Run protocol: " + apr;
        QTest::newRow("open for edit") << "OpenProtocol" << assay << "%1" << q << apr << false << "/edit " + apr << "Open protocol for edit: " + apr;
        QTest::newRow("results, quotes in the path") << "OpenResults" << assay << "%1" << q << ars << false << ars << "Open results: " + ars;
        QTest::newRow("layout, non-ASCII") << "EditLayout" << layouts << "%1" << q << mlo << false << mlo << "Edit layout: " + mlo;
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
        const QString program = programFor(setting);
        setProgram(setting, stored.arg(program));
        arguments.replace(QLatin1String("LAYOUTS"), m_suite->paths.LayoutsFolder());
        m_document = document;
        m_secured = secured;
        run(procedure);
        QCOMPARE(m_launcher->lastCommandLine().text, inText.arg(program) + ' ' + arguments);
        QCOMPARE(m_events, QStringList({"check " + procedure, "audit " + audit}));
        QByteArrayList expected{QFile::encodeName(program)};
        if (!arguments.isEmpty())
            expected << arguments.toUtf8();
        QCOMPARE(startedArgv(), expected);
    }

    void programPathIsReadAtEachLaunch()
    {
        m_launcher->RunProtocol();
        QCOMPARE(startedArgv().value(0),
                 QFile::encodeName(programFor(QStringLiteral("AssayApplicationPath"))));
        m_suite->programs.clear();
        setProgram(QStringLiteral("AssayApplicationPath"), programFor(QStringLiteral("LayoutEditorPath")));
        m_launcher->RunProtocol();
        QCOMPARE(startedArgv().value(0), QFile::encodeName(programFor(QStringLiteral("LayoutEditorPath"))));
    }

    void aDeniedOperationIsNeitherAuditedNorStarted()
    {
        m_launcher->CreateProtocol();
        QCOMPARE(m_events, QStringList({"check CreateProtocol", "audit Create new protocol", "wizard"}));
        m_events.clear();
        m_used.clear();
        m_allow = false;
        m_launcher->RunProtocol();
        m_launcher->CreateProtocol();
        QCOMPARE(m_events, QStringList({"check RunProtocol", "check CreateProtocol"}));
        nothingStartedBefore();
    }

    void anOperationWhoseEntryIsNotWrittenIsNotCarriedOut_data()
    {
        QTest::addColumn<QString>("procedure");
        QTest::addColumn<QString>("audit");
        // clang-format off
        QTest::newRow("run") << "RunProtocol" << "Run protocol: " + m_document;
        QTest::newRow("new layout") << "CreateLayout" << "Create new layout template";
        QTest::newRow("new protocol: no wizard") << "CreateProtocol" << "Create new protocol";
        QTest::newRow("report, never checked") << "OpenReport" << "Open report: " + m_document;
        // clang-format on
    }

    void anOperationWhoseEntryIsNotWrittenIsNotCarriedOut()
    {
        QFETCH(QString, procedure);
        QFETCH(QString, audit);
        m_auditWritten = false;
        run(procedure);
        QCOMPARE(m_events.last(), "audit " + audit);
        QVERIFY(!m_events.contains(QStringLiteral("wizard")));
        QVERIFY(m_launcher->lastCommandLine().text.isEmpty());
        nothingStartedBefore();
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
        program.replace(QLatin1String("HOME"), m_suite->folders.home());
        QFile(program).open(QIODevice::WriteOnly); // only where the row names a file in HOME
        setProgram(QStringLiteral("AssayApplicationPath"), program);
        test::MessageRecorder messages;
        m_launcher->RunProtocol();
        QCOMPARE(m_events.last(), "audit Run protocol: " + m_document);
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().title, DocumentLauncher::startFailureTitle());
        for (const QString& part : {QStringLiteral("AssayApplicationPath"), reason, program})
            QVERIFY2(messages.last().text.contains(part), qPrintable(messages.last().text));
    }

    void aReportOpensWithTheDesktopOpenerWithoutACheck()
    {
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(m_suite->programs.binFolder()) + ':' + path);
        m_document = QStringLiteral("/data/Reports/ELISA IgG Summary Report.mht");
        m_launcher->OpenReport();
        const QByteArrayList argv = startedArgv();
        qputenv("PATH", path);
        QCOMPARE(m_events, QStringList({"audit Open report: " + m_document}));
        QVERIFY(argv.value(0).endsWith("xdg-open"));
        QCOMPARE(argv.mid(1), QByteArrayList{m_document.toUtf8()});
    }

    // A wizard's two files reach the editor joined by "; ", as the rest of its command line, and
    // are two recent documents.
    void aNewlyMadeProtocolOpensUnquotedUnchecked()
    {
        const QStringList made{QStringLiteral("/data/Protocols/New Assay 1.apr"),
                               QStringLiteral("/data/Layouts/New Assay 1.mlo")};
        const QString program = programFor(QStringLiteral("AssayApplicationPath"));
        m_launcher->OpenNewProtocol(made);
        QCOMPARE(m_launcher->lastCommandLine().text, program + ' ' + made.join("; "));
        QCOMPARE(startedArgv(), QByteArrayList({QFile::encodeName(program), made.join("; ").toUtf8()}));
        QVERIFY(m_events.isEmpty());
        QCOMPARE(m_used, made);
    }

    // Only a document whose program was started counts as used (recent documents).
    void onlyStartedDocumentsCountAsUsed_data()
    {
        QTest::addColumn<QString>("procedure");
        QTest::addColumn<bool>("allowed");
        QTest::addColumn<bool>("programThere");
        QTest::addColumn<bool>("used");
        QTest::newRow("run") << "RunProtocol" << true << true << true;
        QTest::newRow("refused") << "RunProtocol" << false << true << false;
        QTest::newRow("program missing") << "OpenProtocol" << true << false << false;
        QTest::newRow("no document") << "CreateReadConfiguration" << true << true << false;
    }

    void onlyStartedDocumentsCountAsUsed()
    {
        QFETCH(QString, procedure);
        QFETCH(bool, allowed);
        QFETCH(bool, programThere);
        QFETCH(bool, used);
        test::MessageRecorder messages;
        for (const char* setting : {"AssayApplicationPath", "ReadConfigurationEditorPath"})
            setProgram(QLatin1String(setting), programThere
                                                   ? programFor(QLatin1String(setting))
                                                   : m_suite->folders.root() + QStringLiteral("/missing"));
        m_allow = allowed;
        run(procedure);
        QCOMPARE(m_used, used ? QStringList{m_document} : QStringList{});
        QCOMPARE(messages.count(), programThere ? 0 : 1);
    }
};

QTEST_GUILESS_MAIN(DocumentLauncherTest)
#include "DocumentLauncherTest.moc"
