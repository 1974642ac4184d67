#include "AuditFilterBar.h"
#include "AuditTrailWindow.h"
#include "Authorisation.h"
#include "LoadedOrganiser.h"
#include "NebraSecurityManager.h"
#include "SecondProcess.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QAction>
#include <QLineEdit>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

namespace {

// The Organiser in a session of jsmith, who holds the rights given.
struct Site : LoadedOrganiser
{
    explicit Site(const QStringList& rights = {QStringLiteral("Security/ViewAuditTrail")})
    {
        secure(rights);
        load();
    }

    QAction* command() const
    {
        return part<ToolBarsControl>(*window).action(QStringLiteral("ID_AuditTrail"));
    }

    // Opens the viewer and waits for its first rows and chain check.
    AuditTrailWindow* openViewer()
    {
        command()->trigger();
        AuditTrailWindow* viewer = window->findChild<AuditTrailWindow*>();
        if (viewer && !QTest::qWaitFor([viewer] { return !viewer->chainStatus().checking(); }, 10000))
            qWarning("The chain check did not end");
        return viewer;
    }
};

int rows(const AuditTrailWindow& viewer)
{
    return viewer.table().model()->rowCount();
}

} // namespace

// Tools > Audit Trail... in the running Organiser, on a real security store
// (shown only in a session: SecuritySessionTest): refused without the right, recorded when opened;
// the viewer's filter, chain status, exports and printing; closed at log-out.
class MainWindowAuditTrailTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusedWithoutTheRight()
    {
        Site site(QStringList{});
        const int entries = site.security->auditTexts().size();
        site.command()->trigger();
        QVERIFY(!site.window->findChild<AuditTrailWindow*>());
        QCOMPARE(site.messages.count(), 1);
        QCOMPARE(site.messages.last().text, Authorisation::permissionDeniedText());
        QCOMPARE(site.security->auditTexts().size(), entries);
    }

    void opensRecordedFiltersAndClosesAtLogOut()
    {
        Site site;
        AuditTrailWindow* viewer = site.openViewer();
        QVERIFY(viewer);
        QPointer<AuditTrailWindow> open(viewer);
        QVERIFY(viewer->isVisible());
        QCOMPARE(site.security->auditTexts().last(), QStringLiteral("Audit trail viewer opened"));
        const int all = site.security->auditTexts().size();
        QTRY_COMPARE_WITH_TIMEOUT(rows(*viewer), all, 5000);
        // Newest first: the opening itself heads the table.
        QCOMPARE(viewer->table().model()->index(0, 5).data().toString(),
                 QStringLiteral("Audit trail viewer opened"));
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

        part<ToolBarsControl>(*site.window).action(QStringLiteral("ID_LogOut"))->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(site.processEnds, 1, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(open.isNull(), 5000);
        QVERIFY(!site.command()->isEnabled());
    }

    void aTamperedTrailShowsItsFirstBadEntry()
    {
        Site site;
        AuditTrailWindow* viewer = site.openViewer();
        QVERIFY(viewer);
        site.security->tamper(
            {QStringLiteral("DROP TRIGGER audit_trail_no_update"),
             QStringLiteral("UPDATE audit_trail SET text = 'User added: mallory' WHERE seq = 2")});
        viewer->findChild<QPushButton*>(QStringLiteral("cmdCheckAgain"))->click();
        QTRY_VERIFY_WITH_TIMEOUT(!viewer->chainStatus().checking(), 10000);
        QVERIFY2(viewer->chainStatus().statusText().startsWith(QStringLiteral("NOT intact from entry 2: ")),
                 qPrintable(viewer->chainStatus().statusText()));
    }

    // What an export writes is the export's own test; here each way out of the viewer reaches it.
    void exportsAreRecordedOrNotMade_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("auditFull");
        // clang-format off
        QTest::newRow("csv") << "csv" << false;
        QTest::newRow("pdf") << "pdf" << false;
        QTest::newRow("print") << "print" << false;
        QTest::newRow("print, trail full") << "print" << true;
        // clang-format on
    }

    void exportsAreRecordedOrNotMade()
    {
        QFETCH(QString, kind);
        QFETCH(bool, auditFull);
        Site site;
        AuditTrailWindow* viewer = site.openViewer();
        QVERIFY(viewer);
        const QString file =
            site.folders.root() + QStringLiteral("/trail.") + (kind == "csv" ? "csv" : "pdf");
        if (auditFull)
            site.security->fillUp(QStringLiteral("Security"));
        const int entries = site.security->auditTexts().size();
        if (kind == QLatin1String("print")) {
            site.dialogs.then([file](QDialog& dialog) {
                auto* print = qobject_cast<QPrintDialog*>(&dialog);
                if (!print)
                    return int(QDialog::Rejected);
                print->printer()->setOutputFormat(QPrinter::PdfFormat);
                print->printer()->setOutputFileName(file);
                return int(QDialog::Accepted);
            });
            viewer->Print();
        } else {
            site.dialogs.chooseFile(file);
            kind == QLatin1String("csv") ? viewer->ExportCsv() : viewer->ExportPdf();
        }
        QCOMPARE(QFileInfo::exists(file), !auditFull);
        QCOMPARE(site.security->auditTexts().size(), entries + (auditFull ? 0 : 1));
        if (auditFull) {
            // The manager has said why; nothing else is shown.
            QCOMPARE(site.messages.count(), 1);
            QVERIFY(site.messages.last().text.startsWith(NebraSecurityManager::auditWriteFailureText()));
            return;
        }
        QCOMPARE(site.messages.count(), 0);
        const QString recorded = site.security->auditTexts().last();
        QVERIFY2(recorded.contains(
                     QStringLiteral("\"%1\": %2 entries, filter: all entries").arg(file).arg(entries)),
                 qPrintable(recorded));
        if (kind != QLatin1String("csv"))
            QVERIFY(runProgram(QStringLiteral("pdftotext"), {file, QStringLiteral("-")})
                        .out.contains("jsmith (Jane Smith)"));
    }

    void replacingAFileAsksFirst_data()
    {
        QTest::addColumn<int>("answer");
        // clang-format off
        QTest::newRow("yes") << int(MessageButton::Yes);
        QTest::newRow("no") << int(MessageButton::No);
        // clang-format on
    }

    void replacingAFileAsksFirst()
    {
        QFETCH(int, answer);
        Site site;
        AuditTrailWindow* viewer = site.openViewer();
        QVERIFY(viewer);
        const QString file = site.folders.root() + QStringLiteral("/trail.csv");
        writeFile(file, "old");
        site.dialogs.chooseFile(file);
        site.messages.answer(answer);
        viewer->ExportCsv();
        QCOMPARE(site.messages.count(), 1);
        QCOMPARE(site.messages.last().text,
                 QStringLiteral("\"%1\" already exists.\nDo you want to replace it?").arg(file));
        QCOMPARE(site.messages.last().defaultButton, int(MessageButton::No));
        QCOMPARE(readFile(file).startsWith("Sequence,"), answer == MessageButton::Yes);
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowAuditTrailTest)
#include "MainWindowAuditTrailTest.moc"
