#include "DocumentLauncher.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace nebra;

namespace {
const QString Editor = QStringLiteral(NEBRA_LAYOUT_EDITOR);

// The start-up report the editor writes instead of waiting for a user, as key=value pairs.
QMultiHash<QString, QString> readReport(const QString& path)
{
    QMultiHash<QString, QString> report;
    for (const QString& line : QString::fromUtf8(test::readFile(path)).split('\n', Qt::SkipEmptyParts))
        report.insert(line.section('=', 0, 0), line.section('=', 1));
    return report;
}
} // namespace

// The editor's command line, as a user types it and as the Organiser sends it, on the real program.
class LayoutEditorProcessTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    const QString m_report = m_dir.filePath("report.txt");
    const QString m_layout = m_dir.filePath("My Layouts/Two words.mlo"); // its path holds blanks

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("NEBRA_LAYOUT_EDITOR_REPORT", QFile::encodeName(m_report));
        test::writeFile(m_layout, "[Layout]\nName=Two words\nRows=4\nColumns=6\n[Wells]\nA1=blank\n");
    }

    void init() { QFile::remove(m_report); }

    void startedByHand_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("wells");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("message");
        const QString folder = m_dir.filePath("My Layouts");
        const QString untitled = QStringLiteral("Untitled[*] - Layout Editor");
        const QString opened = QStringLiteral("Two words.mlo[*] - Layout Editor");
        // clang-format off
        QTest::newRow("nothing: untitled") << QStringList() << untitled << "96" << "" << "";
        QTest::newRow("a path") << QStringList{m_layout} << opened << "24" << "" << "";
        QTest::newRow("a path in pieces") << m_layout.split(' ') << opened << "24" << "" << "";
        QTest::newRow("the layouts folder, quoted") << QStringList{"\"layoutsfolder:" + folder + '"'} << untitled << "96" << folder << "";
        QTest::newRow("a missing layouts folder") << QStringList{"\"layoutsfolder:" + folder + "/gone\""} << untitled << "96" << folder + "/gone" << "The layouts folder \"" + folder + "/gone\" does not exist.";
        QTest::newRow("a missing file") << QStringList{m_dir.filePath("none.mlo")} << untitled << "96" << "" << "does not exist or is not a file";
        QTest::newRow("an unknown option") << QStringList{"--frobnicate"} << untitled << "96" << "" << "\"--frobnicate\" is not an option";
        // clang-format on
    }

    void startedByHand()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, title);
        QFETCH(QString, wells);
        QFETCH(QString, folder);
        QFETCH(QString, message);
        QProcess editor;
        editor.start(Editor, arguments);
        QVERIFY(editor.waitForFinished(20000));
        QCOMPARE(editor.exitCode(), 0);
        const auto report = readReport(m_report);
        QCOMPARE(report.value("title"), title);
        QCOMPARE(report.value("wells"), wells);
        QCOMPARE(report.value("folder"), folder);
        QCOMPARE(report.values("message").size(), message.isEmpty() ? 0 : 1);
        QVERIFY2(report.value("message").contains(message), qPrintable(report.value("message")));
    }

    void answersHelpAndVersionWithoutAWindow()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "none-at-all"); // a window would fail to start
                                                              // clang-format off
        for (const auto& [option, output] : {std::pair{"--help", "Usage: nebra-layout-editor [LAYOUT | \"layoutsfolder:FOLDER\""}, {"--version", "nebra-layout-editor " NEBRA_VERSION "\n"}}) {
            // clang-format on
            QProcess editor;
            editor.setProcessEnvironment(environment);
            editor.start(Editor, {QLatin1String(option)});
            QVERIFY(editor.waitForFinished(20000));
            QCOMPARE(editor.exitCode(), 0);
            QVERIFY(QString::fromUtf8(editor.readAllStandardOutput()).startsWith(QLatin1String(output)));
            QVERIFY(!QFileInfo::exists(m_report));
        }
    }

    // A new layout, a new layout in a security session, a layout edited.
    void startedByTheOrganisersLauncher()
    {
        for (const auto& [edit, secured] : {std::pair{false, false}, {false, true}, {true, false}}) {
            QFile::remove(m_report);
            test::UserFolders folders;
            SettingsStore store(folders.settingsFile());
            SuitePaths paths(store);
            QVERIFY(paths.SetParentDirectory(m_dir.filePath("Data")) && QDir().mkpath(paths.LayoutsFolder()));
            QVERIFY(store.setValue("Paths/LayoutEditorPath", Editor));
            LaunchContext context;
            context.canPerform = [](const QString&) { return true; };
            context.selectedDocumentPath = [this] { return m_layout; };
            context.securityEnabled = [secured] { return secured; };
            DocumentLauncher launcher(paths, std::move(context));
            edit ? launcher.EditLayout() : launcher.CreateLayout();
            QMultiHash<QString, QString> report;
            QTRY_VERIFY_WITH_TIMEOUT(!(report = readReport(m_report)).isEmpty(), 20000);
            QCOMPARE(report.value("path"), edit ? m_layout : QString());
            QCOMPARE(report.value("folder"), secured ? paths.LayoutsFolder() : QString());
            // Where the Organiser lists it, whether or not the folder was handed over.
            QCOMPARE(report.value("saveas"), edit ? QFileInfo(m_layout).path() : paths.LayoutsFolder());
            QCOMPARE(report.values("message"), QStringList());
        }
    }
};

QTEST_GUILESS_MAIN(LayoutEditorProcessTest)
#include "LayoutEditorProcessTest.moc"
