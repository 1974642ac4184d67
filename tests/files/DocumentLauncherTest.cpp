#include "DocumentLauncher.h"
#include "MessageRecorder.h"
#include "RecordingPrograms.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "UserFolders.h"

#include <QtTest>

#include <memory>

using namespace nebra;

namespace {
using Procedure = void (DocumentLauncher::*)();

Procedure procedure(const QString& name)
{
    static const QHash<QString, Procedure> procedures{
        {"CreateLayout", &DocumentLauncher::CreateLayout},
        {"CreateReadConfiguration", &DocumentLauncher::CreateReadConfiguration},
        {"EditLayout", &DocumentLauncher::EditLayout},
        {"OpenResults", &DocumentLauncher::OpenResults},
        {"OpenProtocol", &DocumentLauncher::OpenProtocol},
        {"OpenReadConfiguration", &DocumentLauncher::OpenReadConfiguration},
        {"RunProtocol", &DocumentLauncher::RunProtocol},
        {"OpenReport", &DocumentLauncher::OpenReport},
    };
    return procedures.value(name);
}
} // namespace

class DocumentLauncherTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::UserFolders> m_folders;
    std::unique_ptr<test::RecordingPrograms> m_programs;
    std::unique_ptr<SettingsStore> m_store;
    std::unique_ptr<SuitePaths> m_paths;
    std::unique_ptr<DocumentLauncher> m_launcher;
    QStringList m_events;
    bool m_allow = true;
    bool m_secured = false;
    QString m_document;

    QString programOf(const QString& setting) const
    {
        if (setting == QLatin1String("LayoutEditorPath"))
            return m_programs->program(QStringLiteral("Layout Editor"));
        if (setting == QLatin1String("ReadConfigurationEditorPath"))
            return m_programs->program(QStringLiteral("Read Configuration Editor"));
        return m_programs->program(QStringLiteral("Assay Application"));
    }

    void setProgram(const QString& setting, const QString& path)
    {
        QVERIFY(m_store->setValue(QStringLiteral("Paths/") + setting, path));
    }

    QByteArrayList startedArgv()
    {
        if (!m_programs->waitForRecords(1))
            return {};
        return m_programs->records().constFirst();
    }

private Q_SLOTS:
    void init()
    {
        m_folders = std::make_unique<test::UserFolders>();
        m_programs = std::make_unique<test::RecordingPrograms>();
        m_store = std::make_unique<SettingsStore>(m_folders->settingsFile());
        m_paths = std::make_unique<SuitePaths>(*m_store);
        m_paths->Initialise();
        for (const char* setting :
             {"LayoutEditorPath", "AssayApplicationPath", "ReadConfigurationEditorPath"})
            setProgram(QLatin1String(setting), programOf(QLatin1String(setting)));
        m_events.clear();
        m_allow = true;
        m_secured = false;
        m_document = m_folders->root() + QStringLiteral("/My Assays/Protocols/ELISA IgG Quantitation.apr");
        LaunchContext context;
        context.canPerform = [this](const QString& operation) {
            m_events << QStringLiteral("check ") + operation;
            return m_allow;
        };
        context.audit = [this](const QString& entry) { m_events << QStringLiteral("audit ") + entry; };
        context.selectedDocumentPath = [this] { return m_document; };
        context.securityEnabled = [this] { return m_secured; };
        context.startProtocolWizard = [this] { m_events << QStringLiteral("wizard"); };
        m_launcher = std::make_unique<DocumentLauncher>(*m_paths, std::move(context));
    }

    void launchesWithTheExpectedCommandLine_data()
    {
        QTest::addColumn<QString>("procedure");
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("document");
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("audit");

        const QString protocol = QStringLiteral("/data/My Assays/Protocols/ELISA IgG Quantitation.apr");
        QTest::newRow("run, blanks unquoted")
            << "RunProtocol"
            << "AssayApplicationPath" << protocol << protocol << "Run protocol: " + protocol;
        QTest::newRow("open for edit") << "OpenProtocol"
                                       << "AssayApplicationPath" << protocol << "/edit " + protocol
                                       << "Open protocol for edit: " + protocol;
        const QString results = QStringLiteral("/data/Results/Run \"final\" 2026.ars");
        QTest::newRow("results, quotes in the path")
            << "OpenResults"
            << "AssayApplicationPath" << results << results << "Open results: " + results;
        const QString layout = QStringLiteral("/data/Layouts/Plättchen 96 – été.mlo");
        QTest::newRow("layout, non-ASCII")
            << "EditLayout"
            << "LayoutEditorPath" << layout << layout << "Edit layout: " + layout;
        const QString daq = QStringLiteral("/data/Read Configurations/Abs 450.daq");
        QTest::newRow("read configuration")
            << "OpenReadConfiguration"
            << "ReadConfigurationEditorPath" << daq << daq << "Open read configuration: " + daq;
        QTest::newRow("new read configuration") << "CreateReadConfiguration"
                                                << "ReadConfigurationEditorPath" << daq << ""
                                                << "Create new read configuration";
        QTest::newRow("new layout, no session") << "CreateLayout"
                                                << "LayoutEditorPath" << layout << ""
                                                << "Create new layout template";
    }

    void launchesWithTheExpectedCommandLine()
    {
        QFETCH(QString, procedure);
        QFETCH(QString, setting);
        QFETCH(QString, document);
        QFETCH(QString, arguments);
        QFETCH(QString, audit);
        m_document = document;
        (m_launcher.get()->*::procedure(procedure))();

        const QString program = programOf(setting);
        QCOMPARE(m_launcher->lastCommandLine().text, '"' + program + "\" " + arguments);
        QCOMPARE(m_events, QStringList({"check " + procedure, "audit " + audit}));
        QByteArrayList expected{QFile::encodeName(program)};
        if (!arguments.isEmpty())
            expected << arguments.toUtf8();
        QCOMPARE(startedArgv(), expected);
    }

    void programPathIsQuotedOnlyWithoutQuoteAtEitherEnd_data()
    {
        QTest::addColumn<QString>("form");
        QTest::addColumn<QString>("textProgram");
        QTest::newRow("plain") << "%1"
                               << "\"%1\"";
        QTest::newRow("already quoted") << "\"%1\""
                                        << "\"%1\"";
        QTest::newRow("quote at the start only") << "\"%1"
                                                 << "\"%1";
        QTest::newRow("quote at the end only") << "%1\""
                                               << "%1\"";
    }

    void programPathIsQuotedOnlyWithoutQuoteAtEitherEnd()
    {
        QFETCH(QString, form);
        QFETCH(QString, textProgram);
        const QString program = programOf(QStringLiteral("AssayApplicationPath"));
        setProgram(QStringLiteral("AssayApplicationPath"), form.arg(program));
        m_launcher->RunProtocol();
        QCOMPARE(m_launcher->lastCommandLine().text, textProgram.arg(program) + ' ' + m_document);
        QCOMPARE(startedArgv(), QByteArrayList({QFile::encodeName(program), QFile::encodeName(m_document)}));
    }

    void launchApplicationWritesTheQuotedPathBack()
    {
        QString program = QStringLiteral("/opt/Suite/Assay Application");
        QString arguments;
        test::MessageRecorder messages; // the program does not exist
        m_launcher->LaunchApplication(program, arguments);
        QCOMPARE(program, QStringLiteral("\"/opt/Suite/Assay Application\""));
        QCOMPARE(m_launcher->lastCommandLine().text, QStringLiteral("\"/opt/Suite/Assay Application\" "));
    }

    void programPathIsReadAtEachLaunch()
    {
        m_launcher->RunProtocol();
        QCOMPARE(startedArgv().value(0),
                 QFile::encodeName(programOf(QStringLiteral("AssayApplicationPath"))));
        m_programs->clear();
        const QString other = programOf(QStringLiteral("LayoutEditorPath"));
        setProgram(QStringLiteral("AssayApplicationPath"), other);
        m_launcher->RunProtocol();
        QCOMPARE(startedArgv().value(0), QFile::encodeName(other));
    }

    void deniedOperationAuditsAndStartsNothing()
    {
        m_allow = false;
        m_launcher->RunProtocol();
        m_launcher->CreateProtocol();
        QCOMPARE(m_events, QStringList({"check RunProtocol", "check CreateProtocol"}));
        QVERIFY(m_launcher->lastCommandLine().text.isEmpty());
        // A start that did happen would be recorded before this later one.
        m_allow = true;
        m_launcher->OpenResults();
        QVERIFY(m_programs->waitForRecords(1));
        QCOMPARE(m_programs->records().size(), 1);
        QCOMPARE(m_events.last(), "audit Open results: " + m_document);
    }

    void newLayoutTellsASecuredEditorWhereLayoutsLive()
    {
        m_secured = true;
        m_launcher->CreateLayout();
        const QString argument = "\"layoutsfolder:" + m_paths->LayoutsFolder() + '"';
        QCOMPARE(m_launcher->lastCommandLine().text,
                 '"' + programOf(QStringLiteral("LayoutEditorPath")) + "\" " + argument);
        QCOMPARE(startedArgv().value(1), argument.toUtf8());
    }

    void newProtocolStartsTheWizardAfterCheckAndAudit()
    {
        m_launcher->CreateProtocol();
        QCOMPARE(m_events, QStringList({"check CreateProtocol", "audit Create new protocol", "wizard"}));
    }

    void failedStartIsReportedAndTheAuditEntryStays_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("reason");
        QTest::newRow("empty") << ""
                               << "No program is set.";
        QTest::newRow("missing") << "/nonexistent/Assay Application"
                                 << "The file does not exist.";
        QTest::newRow("folder") << "/tmp"
                                << "The path names a folder, not a program.";
        QTest::newRow("not executable") << "NOT-EXECUTABLE"
                                        << "The file is not executable.";
    }

    void failedStartIsReportedAndTheAuditEntryStays()
    {
        QFETCH(QString, program);
        QFETCH(QString, reason);
        if (program == QLatin1String("NOT-EXECUTABLE")) {
            program = m_folders->root() + QStringLiteral("/Assay Application.txt");
            QFile file(program);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        }
        setProgram(QStringLiteral("AssayApplicationPath"), program);
        test::MessageRecorder messages;
        m_launcher->RunProtocol();
        QCOMPARE(m_events.last(), "audit Run protocol: " + m_document);
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().title, DocumentLauncher::startFailureTitle());
        QCOMPARE(messages.last().icon, MessageIcon::Warning);
        QVERIFY2(messages.last().text.contains(QLatin1String("AssayApplicationPath")),
                 qPrintable(messages.last().text));
        QVERIFY(messages.last().text.contains(reason));
        if (!program.isEmpty())
            QVERIFY(messages.last().text.contains(program));
    }

    void reportOpensWithTheDesktopOpenerWithoutACheck()
    {
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(m_programs->binFolder()) + ':' + path);
        m_document = QStringLiteral("/data/Reports/ELISA IgG Summary Report.mht");
        m_launcher->OpenReport();
        const QByteArrayList argv = startedArgv();
        qputenv("PATH", path);
        QCOMPARE(m_events, QStringList({"audit Open report: " + m_document}));
        QCOMPARE(argv.size(), 2);
        QVERIFY(argv[0].endsWith("xdg-open"));
        QCOMPARE(argv[1], m_document.toUtf8());
    }

    void newlyMadeProtocolOpensUnquoted()
    {
        const QString made = QStringLiteral("/data/Protocols/New Assay 1.apr");
        m_launcher->OpenNewProtocol(made);
        const QString program = programOf(QStringLiteral("AssayApplicationPath"));
        QCOMPARE(m_launcher->lastCommandLine().text, program + ' ' + made);
        QVERIFY(m_events.isEmpty());
        QCOMPARE(startedArgv(), QByteArrayList({QFile::encodeName(program), made.toUtf8()}));
    }
};

QTEST_GUILESS_MAIN(DocumentLauncherTest)
#include "DocumentLauncherTest.moc"
