#include "NewAssayProtocolDialog.h"
#include "Accessibility.h"
#include "BrowserControl.h"
#include "DialogScript.h"
#include "DocumentLauncher.h"
#include "MessageRecorder.h"
#include "RecordedSuite.h"
#include "SharedWizardState.h"
#include "SuiteSettings.h"
#include "TestFiles.h"
#include "WebEngineTestMain.h"
#include "WizardHost.h"

#include <QListWidget>
#include <QPushButton>
#include <QtTest>

using namespace nebra;

namespace {

// The picker over a recorded suite, its wizards from a catalogue the test
// writes, its hooks logged in events.
struct Picker
{
    test::RecordedSuite suite;
    test::MessageRecorder messages;
    bool ready = suite.store.setValue("Paths/WizardsParentFolder", suite.folders.root() + "/suite");
    SuiteSettings settings{suite.store};
    WizardHost host{suite.paths, settings, catalogueFile(), QStringLiteral(NEBRA_TEST_WIZARD_PLUGINS)};
    DocumentLauncher launcher{suite.paths, LaunchContext{}};
    std::unique_ptr<NewAssayProtocolDialog> dialog;
    QStringList events;
    bool secured = false;
    QObject manager;

    Picker()
    {
        QVERIFY(ready);
        QVERIFY(settings.SetCurrentHLD(1));
        script("{}");
    }

    QString catalogueFile() const { return suite.folders.root() + "/wizards.json"; }

    // Writes the catalogue; "Name" runs the scripted wizard, "Name=ProgID" another.
    void writeCatalogue(const QStringList& entries)
    {
        QStringList json;
        for (const QString& entry : entries) {
            const QString name = entry.section('=', 0, 0);
            const QString progId = entry.contains('=') ? entry.section('=', 1) : "NebraTest.Scripted";
            json << QStringLiteral(R"({"Name":"%1","ProgID":"%2"})").arg(name, progId);
            test::writeFile(indexOf(name), "<html><body><h1>" + name.toUtf8() + "</h1></body></html>");
        }
        test::writeFile(catalogueFile(), QStringLiteral(R"({"wizards":[%1]})").arg(json.join(',')).toUtf8());
    }
    QString indexOf(const QString& name) const
    {
        return suite.paths.WizardsParentFolder() + "/Wizards/" + name + "/Index.html";
    }

    WizardHooks hooks()
    {
        WizardHooks hooks;
        hooks.closeHelpIfOpen = [this] {
            events << "close help";
            return false;
        };
        hooks.displayHelp = [this](int topic) { events << QStringLiteral("help %1").arg(topic); };
        hooks.securityEnabled = [this] { return secured; };
        hooks.securityManager = [this] { return &manager; };
        hooks.handleChangedHLD = [this] { events << "driver changed"; };
        hooks.recreateResultsNode = [this] { events << "results"; };
        hooks.protocolMade = [this](const QStringList& files) { events << "made " + files.join(", "); };
        hooks.openNewProtocol = [this](const QStringList& files) {
            events << "open " + files.join("; ");
            launcher.OpenNewProtocol(files);
        };
        return hooks;
    }

    NewAssayProtocolDialog& openDialog(const QStringList& entries)
    {
        writeCatalogue(entries);
        dialog = std::make_unique<NewAssayProtocolDialog>(host, suite.paths, settings, hooks());
        dialog->LoadList();
        dialog->show();
        dialog->setResult(-1);
        return *dialog;
    }
    QListWidget* list() const { return dialog->findChild<QListWidget*>("ListView1"); }
    QListWidgetItem* item(const QString& name) const
    {
        const auto found = list()->findItems(name, Qt::MatchExactly);
        return found.isEmpty() ? nullptr : found.first();
    }
    BrowserControl* browser() const { return dialog->findChild<BrowserControl*>("WebBrowser1"); }
    void press(const char* button) { dialog->findChild<QPushButton*>(QLatin1String(button))->click(); }
    // A click on the point, or a double click: QTest's double click sends the
    // double-click event alone; a real one comes after a press and a release.
    void clickAt(const QPoint& point, bool twice)
    {
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, point);
        if (twice)
            QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, point);
    }
    QVariant state(const char* key)
    {
        return static_cast<SharedWizardState*>(host.SharedState())->Value(QLatin1String(key));
    }
    static void script(const QByteArray& json) { qputenv("NEBRA_TEST_WIZARD_SCRIPT", json); }
};

} // namespace

class NewAssayProtocolDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loadingTheList_data()
    {
        QTest::addColumn<QStringList>("catalogue");
        QTest::addColumn<QString>("selected"); // empty: none, and nothing previewed
        QTest::addColumn<bool>("missingBox");
        // clang-format off
        QTest::newRow("Generic among others") << QStringList{"Kinetic", "Generic", "ELISA"} << "Generic" << false;
        QTest::newRow("Generic alone") << QStringList{"Generic"} << "Generic" << false;
        QTest::newRow("others only") << QStringList{"Kinetic", "ELISA"} << "" << true;
        QTest::newRow("case differs") << QStringList{"generic"} << "" << true;
        QTest::newRow("empty catalogue") << QStringList{} << "" << true;
        QTest::newRow("Generic's plug-in missing") << QStringList{"Generic=NebraTest.NotInstalled"} << "Generic" << false;
        // clang-format on
    }
    void loadingTheList()
    {
        QFETCH(QStringList, catalogue);
        QFETCH(QString, selected);
        QFETCH(bool, missingBox);
        Picker o;
        QCOMPARE(o.openDialog(catalogue).windowTitle(), "Select New Assay Protocol Wizard");

        QStringList listed; // the selected item marked with a star
        for (int row = 0; row < o.list()->count(); ++row)
            listed << o.list()->item(row)->text() + (o.list()->item(row)->isSelected() ? "*" : "");
        QStringList names;
        for (const QString& entry : catalogue)
            names << entry.section(QLatin1Char('='), 0, 0) +
                         (entry.startsWith(selected) && !selected.isEmpty() ? "*" : "");
        QCOMPARE(listed, names);
        const QUrl previewed = selected.isEmpty() ? QUrl() : QUrl::fromLocalFile(o.indexOf(selected));
        QTRY_COMPARE_WITH_TIMEOUT(o.browser()->LocationURL(), previewed, 10000);
        QCOMPARE(o.messages.count(), missingBox ? 1 : 0);
        if (missingBox) {
            QCOMPARE(o.messages.last().text + '|' + o.messages.last().title,
                     "No Wizard plug-ins were found on your system.|Missing Wizards");
            QCOMPARE(o.messages.last().icon, MessageIcon::Warning);
            QCOMPARE(o.messages.last().buttons, int(MessageButton::Ok));
        }
    }

    void resultCodes_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("boxText"); // empty: no box
        QTest::addColumn<bool>("closed");
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<QByteArrayList>("editorArgs"); // the editor's arguments; empty: not started
        const QString apr = "/data/My Assays/Protocols/New Assay.apr";
        // clang-format off
        QTest::newRow("0: abandoned") << QByteArray(R"({"result":0})") << "" << false << QStringList{"close help", "results"} << QByteArrayList{};
        QTest::newRow("1, not in the editor") << QByteArray(R"({"result":1,"newFile":"/data/My Assays/Protocols/New Assay.apr"})") << "The new Assay Protocol file is stored at: \r\n\r\n" + apr << true << QStringList{"close help", "made " + apr, "results"} << QByteArrayList{};
        QTest::newRow("1, in the editor") << QByteArray(R"({"result":1,"openInEditor":true,"newFile":"/data/My Assays/Protocols/New Assay.apr"})") << "" << true << QStringList{"close help", "made " + apr, "open " + apr, "results"} << QByteArrayList{apr.toUtf8()};
        QTest::newRow("1, in the editor, second file") << QByteArray(R"({"result":1,"openInEditor":true,"newFile":"/p/A.apr","secondFile":"/p/B.mlo"})") << "" << true << QStringList{"close help", "made /p/A.apr, /p/B.mlo", "open /p/A.apr; /p/B.mlo", "results"} << QByteArrayList{"/p/A.apr; /p/B.mlo"};
        QTest::newRow("2: failed") << QByteArray(R"({"result":2})") << "Error in Wizard" << false << QStringList{"close help", "results"} << QByteArrayList{};
        QTest::newRow("-1: failed") << QByteArray(R"({"result":-1,"openInEditor":true,"newFile":"/p/A.apr"})") << "Error in Wizard" << false << QStringList{"close help", "results"} << QByteArrayList{};
        QTest::newRow("driver changed") << QByteArray(R"({"result":0,"hld":2})") << "" << false << QStringList{"close help", "driver changed", "results"} << QByteArrayList{};
        QTest::newRow("driver set to the same") << QByteArray(R"({"result":0,"hld":1})") << "" << false << QStringList{"close help", "results"} << QByteArrayList{};
        QTest::newRow("broken plug-in") << QByteArray(R"({"result":1})") << "Error in Wizard" << false << QStringList{"close help", "results"} << QByteArrayList{};
        // clang-format on
    }
    void resultCodes()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, boxText);
        QFETCH(bool, closed);
        QFETCH(QStringList, events);
        QFETCH(QByteArrayList, editorArgs);
        Picker o;
        const bool broken = QTest::currentDataTag() == QByteArray("broken plug-in");
        o.openDialog({broken ? "Generic=NebraTest.WrongInterface" : "Generic"});
        Picker::script(script);
        if (broken) // the loader's reason, for support
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral(
                                                   "^Log note: .*does not implement the wizard interface")));
        o.press("OKButton");

        QCOMPARE(o.events, events);
        QCOMPARE(o.messages.count(), boxText.isEmpty() ? 0 : 1);
        if (!boxText.isEmpty()) {
            QCOMPARE(o.messages.last().text + '|' + o.messages.last().title,
                     boxText + '|' + Messages::applicationTitle());
            QCOMPARE(o.messages.last().icon, closed ? MessageIcon::Information : MessageIcon::NoIcon);
        }
        QCOMPARE(o.dialog->result() == QDialog::Accepted, closed);
        QCOMPARE(o.dialog->isVisible(), !closed);
        if (!editorArgs.isEmpty()) {
            QVERIFY(o.suite.programs.waitForRecords(1));
            QCOMPARE(o.suite.programs.records().first().mid(1), editorArgs);
        } else {
            QCOMPARE(o.suite.programs.records().size(), 0);
        }
    }

    // OK runs the selected item, not the clicked one; a double click on empty
    // space does nothing, on an item it runs it. In a security session the
    // wizard is given the session's manager.
    void okRunsTheSelectedItemAndADoubleClickTheClickedOne()
    {
        Picker o;
        o.secured = true;
        o.openDialog({"Kinetic", "Generic", "ELISA"});
        o.dialog->resize(600, 600);
        o.clickAt(o.list()->visualItemRect(o.item("ELISA")).center(), false);
        QVERIFY(o.dialog->ItemClicked());
        QCOMPARE(o.dialog->ClickedItem(), o.item("ELISA"));
        QTRY_COMPARE_WITH_TIMEOUT(o.browser()->LocationURL(), QUrl::fromLocalFile(o.indexOf("ELISA")), 10000);
        const QPoint empty(o.list()->viewport()->width() - 3, o.list()->viewport()->height() - 3);
        QVERIFY(!o.list()->itemAt(empty));
        o.clickAt(empty, true);
        QCOMPARE(o.events, QStringList());
        QVERIFY(!o.host.HasSharedState());
        o.list()->setCurrentItem(o.item("Kinetic"));
        o.press("OKButton");
        QCOMPARE(o.state("LastRun").toString(), "Kinetic");
        QVERIFY(o.state("Secured").toBool());
        o.clickAt(o.list()->visualItemRect(o.item("ELISA")).center(), true);
        QCOMPARE(o.events, QStringList({"close help", "results", "close help", "results"}));
        QCOMPARE(o.state("LastRun").toString(), "ELISA");
    }

    // OK without a selection says so and stays; Help shows the picker's
    // topic; Cancel runs nothing.
    // The picker opens through the dialog seam, previewed, and is gone
    // afterwards; the main window's runner titles its box "Information".
    void theButtonsShowNewAndTheWindowsRunner()
    {
        Picker o;
        o.openDialog({});
        o.messages.clear();
        o.press("OKButton");
        QCOMPARE(o.messages.count(), 1);
        QCOMPARE(o.messages.last().text + '|' + o.messages.last().title,
                 "No item is selected in the list.|" + Messages::applicationTitle());
        QCOMPARE(o.messages.last().icon, MessageIcon::NoIcon);
        QVERIFY(o.dialog->isVisible());
        o.press("cmdHelp");
        QCOMPARE(o.events, QStringList{"help 9007"});
        o.press("CancelButton");
        QCOMPARE(o.dialog->result(), int(QDialog::Rejected));
        QVERIFY(!o.host.HasSharedState());
        test::DialogScript dialogs;
        o.writeCatalogue({"Kinetic"});
        QPointer<QDialog> first;
        dialogs.then([&](QDialog& dialog) {
            first = &dialog;
            return int(QDialog::Rejected);
        });
        dialogs.cancel();
        NewAssayProtocolDialog::ShowNew(o.host, o.suite.paths, o.settings, o.hooks(), nullptr);
        QVERIFY(first.isNull());
        NewAssayProtocolDialog::ShowNew(o.host, o.suite.paths, o.settings, o.hooks(), nullptr);
        QCOMPARE(dialogs.shown(), (QStringList{"frmNewAssayProtocol", "frmNewAssayProtocol"}));
        QCOMPARE(o.messages.count(), 3); // "Missing Wizards" at every creation

        o.script(R"({"result":1,"newFile":"/p/A.apr"})");
        WizardRunner runner(o.host, o.settings, o.hooks(), "Information");
        QWidget window;
        window.setObjectName("frmNMain");
        runner.RunSelectedWizard({"Generic", "NebraTest.Scripted"}, &window, {});
        QCOMPARE(o.messages.count(), 4);
        QCOMPARE(o.messages.last().title, "Information");
        QCOMPARE(o.state("Owner").toString(), "frmNMain");
    }
};

NEBRA_WEBENGINE_TEST_MAIN(NewAssayProtocolDialogTest)
#include "NewAssayProtocolDialogTest.moc"
