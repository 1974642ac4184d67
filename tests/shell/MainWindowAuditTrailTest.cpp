#include "AuditChainStatus.h"
#include "AuditFilterBar.h"
#include "AuditTrailWindow.h"
#include "Authorisation.h"
#include "CommandDispatcher.h"
#include "DialogScript.h"
#include "MainWindow.h"
#include "MessageRecorder.h"
#include "NebraSecurityManager.h"
#include "SecurityFixture.h"
#include "TestFiles.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QAbstractItemModel>
#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

// Tools > Audit Trail... in the running Organiser, on a real security store:
// shown only in a session, refused without the right, recorded when opened;
// the viewer's filter, chain status, exports and printing; closed at log-out.
class MainWindowAuditTrailTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<SecuritySite> m_site;
    std::unique_ptr<MessageRecorder> m_messages;
    std::unique_ptr<DialogScript> m_dialogs;
    std::unique_ptr<MainWindow> m_window;
    int m_processEnds = 0;

    void load(bool security, const QStringList& rights)
    {
        m_site = std::make_unique<SecuritySite>(rights);
        if (security)
            m_dialogs->logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
        SettingsStore().setValue(QStringLiteral("Settings/SecurityConfigured"), security);
        MainWindowOptions options;
        options.instanceName =
            QStringLiteral("MainWindowAuditTrailTest-%1").arg(QCoreApplication::applicationPid());
        options.endProcess = [this] { ++m_processEnds; };
        m_window = std::make_unique<MainWindow>(options);
        QCOMPARE(m_window->Load(), MainWindow::LoadOutcome::Loaded);
    }

    QAction* command() const
    {
        return part<ToolBarsControl>(*m_window).action(QStringLiteral("ID_AuditTrail"));
    }

    // Opens the viewer with the right granted and waits for its first rows and chain check.
    AuditTrailWindow* openViewer()
    {
        load(true, {QStringLiteral("Security/ViewAuditTrail")});
        command()->trigger();
        AuditTrailWindow* viewer = m_window->findChild<AuditTrailWindow*>();
        if (viewer && !QTest::qWaitFor([viewer] { return !viewer->chainStatus().checking(); }, 10000))
            qWarning("The chain check did not end");
        return viewer;
    }

    static int rows(const AuditTrailWindow& viewer) { return viewer.table().model()->rowCount(); }

    // Answers the next file dialog with path.
    void chooseFile(const QString& path)
    {
        m_dialogs->then([path](QDialog& dialog) {
            auto* files = qobject_cast<QFileDialog*>(&dialog);
            if (!files)
                return int(QDialog::Rejected);
            files->selectFile(path);
            return int(QDialog::Accepted);
        });
    }

    static QString pdfText(const QString& file)
    {
        QProcess pdftotext;
        pdftotext.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), file, QStringLiteral("-")});
        if (!pdftotext.waitForFinished(30000))
            return {};
        return QString::fromUtf8(pdftotext.readAllStandardOutput());
    }

private Q_SLOTS:
    void init()
    {
        m_messages = std::make_unique<MessageRecorder>();
        m_dialogs = std::make_unique<DialogScript>();
        m_processEnds = 0;
    }

    void cleanup()
    {
        m_window.reset();
        m_dialogs.reset();
        m_messages.reset();
        m_site.reset();
    }

    void theCommandIsOnlyInASession_data()
    {
        QTest::addColumn<bool>("security");
        QTest::newRow("no session") << false;
        QTest::newRow("session") << true;
    }

    void theCommandIsOnlyInASession()
    {
        QFETCH(bool, security);
        load(security, {QStringLiteral("Security/ViewAuditTrail")});
        QCOMPARE(command()->isVisible(), security);
        QCOMPARE(command()->isEnabled(), security);
        QCOMPARE(part<ToolBarsControl>(*m_window).menu(QStringLiteral("ID_Tools"))->menuAction()->isVisible(),
                 security);
        if (!security) {
            part<CommandDispatcher>(*m_window).ToolClick(QStringLiteral("ID_AuditTrail"));
            QVERIFY(!m_window->findChild<AuditTrailWindow*>());
        }
    }

    void refusedWithoutTheRight()
    {
        load(true, {});
        const int entries = m_site->fixture.auditTexts().size();
        command()->trigger();
        QVERIFY(!m_window->findChild<AuditTrailWindow*>());
        QCOMPARE(m_messages->count(), 1);
        QCOMPARE(m_messages->last().text, Authorisation::permissionDeniedText());
        QCOMPARE(m_messages->last().title, QStringLiteral("Security Manager"));
        QCOMPARE(m_messages->last().icon, MessageIcon::Information);
        QCOMPARE(m_site->fixture.auditTexts().size(), entries);
    }

    void opensRecordedFiltersAndClosesAtLogOut()
    {
        AuditTrailWindow* viewer = openViewer();
        QVERIFY(viewer);
        QPointer<AuditTrailWindow> open(viewer);
        QVERIFY(viewer->isVisible());
        QCOMPARE(m_site->fixture.auditTexts().last(), QStringLiteral("Audit trail viewer opened"));
        const int all = m_site->fixture.auditTexts().size();
        QTRY_COMPARE_WITH_TIMEOUT(rows(*viewer), all, 5000);
        // Newest first: the opening itself heads the table.
        const QModelIndex top = viewer->table().model()->index(0, 5);
        QCOMPARE(top.data().toString(), QStringLiteral("Audit trail viewer opened"));
        QVERIFY(viewer->chainStatus().statusText().startsWith(QStringLiteral("Intact, %1 entries").arg(all)));

        auto* text = viewer->filterBar().findChild<QLineEdit*>(QStringLiteral("txtText"));
        QSignalSpy filtered(&viewer->filterBar(), &AuditFilterBar::filterChanged);
        QTest::keyClicks(text, QStringLiteral("WELCOME"));
        QTRY_COMPARE_WITH_TIMEOUT(rows(*viewer), 1, 5000);
        QCOMPARE(filtered.size(), 1); // once typing pauses, not at every key
        QCOMPARE(viewer->table().model()->index(0, 5).data().toString(),
                 QStringLiteral("Launch Welcome screen"));
        viewer->filterBar().findChild<QPushButton*>(QStringLiteral("cmdClear"))->click();
        QTRY_COMPARE_WITH_TIMEOUT(rows(*viewer), all, 5000);

        part<ToolBarsControl>(*m_window).action(QStringLiteral("ID_LogOut"))->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(m_processEnds, 1, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(open.isNull(), 5000);
        QVERIFY(!command()->isEnabled());
    }

    void aTamperedTrailShowsItsFirstBadEntry()
    {
        AuditTrailWindow* viewer = openViewer();
        QVERIFY(viewer);
        m_site->fixture.tamper(
            {QStringLiteral("DROP TRIGGER audit_trail_no_update"),
             QStringLiteral("UPDATE audit_trail SET text = 'User added: mallory' WHERE seq = 2")});
        viewer->findChild<QPushButton*>(QStringLiteral("cmdCheckAgain"))->click();
        QTRY_VERIFY_WITH_TIMEOUT(!viewer->chainStatus().checking(), 10000);
        QVERIFY2(viewer->chainStatus().statusText().startsWith(QStringLiteral("NOT intact from entry 2: ")),
                 qPrintable(viewer->chainStatus().statusText()));
    }

    void exportsAreRecordedOrNotMade_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("auditFull");
        QTest::newRow("csv") << "csv" << false;
        QTest::newRow("pdf") << "pdf" << false;
        QTest::newRow("print") << "print" << false;
        QTest::newRow("csv, trail full") << "csv" << true;
        QTest::newRow("print, trail full") << "print" << true;
    }

    void exportsAreRecordedOrNotMade()
    {
        QFETCH(QString, kind);
        QFETCH(bool, auditFull);
        AuditTrailWindow* viewer = openViewer();
        QVERIFY(viewer);
        const QString file =
            m_site->folders.root() + QStringLiteral("/trail.") + (kind == "csv" ? "csv" : "pdf");
        if (auditFull)
            m_site->fixture.fillUp(QStringLiteral("Security"));
        const int entries = m_site->fixture.auditTexts().size();
        if (kind == QLatin1String("print")) {
            m_dialogs->then([file](QDialog& dialog) {
                auto* print = qobject_cast<QPrintDialog*>(&dialog);
                if (!print)
                    return int(QDialog::Rejected);
                print->printer()->setOutputFormat(QPrinter::PdfFormat);
                print->printer()->setOutputFileName(file);
                return int(QDialog::Accepted);
            });
            viewer->Print();
        } else {
            chooseFile(file);
            kind == QLatin1String("csv") ? viewer->ExportCsv() : viewer->ExportPdf();
        }
        QCOMPARE(QFileInfo::exists(file), !auditFull);
        if (auditFull) {
            // The manager has said why; nothing else is shown.
            QCOMPARE(m_messages->count(), 1);
            QVERIFY(m_messages->last().text.startsWith(NebraSecurityManager::auditWriteFailureText()));
            QCOMPARE(m_site->fixture.auditTexts().size(), entries);
            return;
        }
        QCOMPARE(m_messages->count(), 0);
        const QString recorded = m_site->fixture.auditTexts().last();
        QVERIFY2(recorded.contains(
                     QStringLiteral("\"%1\": %2 entries, filter: all entries").arg(file).arg(entries)),
                 qPrintable(recorded));
        if (kind != QLatin1String("csv")) {
            const QString text = pdfText(file);
            QVERIFY2(text.contains(QStringLiteral("Printed by:")) &&
                         text.contains(QStringLiteral("jsmith (Jane Smith)")),
                     qPrintable(text));
            QVERIFY(text.contains(QStringLiteral("Page 1 of 1")));
            QVERIFY(text.contains(QStringLiteral("Audit trail viewer opened")));
        }
    }

    void replacingAFileAsksFirst_data()
    {
        QTest::addColumn<int>("answer");
        QTest::newRow("yes") << int(MessageButton::Yes);
        QTest::newRow("no") << int(MessageButton::No);
    }

    void replacingAFileAsksFirst()
    {
        QFETCH(int, answer);
        AuditTrailWindow* viewer = openViewer();
        QVERIFY(viewer);
        const QString file = m_site->folders.root() + QStringLiteral("/trail.csv");
        writeFile(file, "old");
        chooseFile(file);
        m_messages->answer(answer);
        viewer->ExportCsv();
        QCOMPARE(m_messages->count(), 1);
        QCOMPARE(m_messages->last().text,
                 QStringLiteral("\"%1\" already exists.\nDo you want to replace it?").arg(file));
        QCOMPARE(m_messages->last().defaultButton, int(MessageButton::No));
        QFile csv(file);
        QVERIFY(csv.open(QIODevice::ReadOnly));
        QCOMPARE(csv.readAll().startsWith("Sequence,"), answer == MessageButton::Yes);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowAuditTrailTest)
#include "MainWindowAuditTrailTest.moc"
