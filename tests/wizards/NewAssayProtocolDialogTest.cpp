#include "NewAssayProtocolDialog.h"
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

#include <memory>

using namespace nebra;

class NewAssayProtocolDialogTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::RecordedSuite> m_suite;
    std::unique_ptr<SuiteSettings> m_settings;
    std::unique_ptr<WizardHost> m_host;
    std::unique_ptr<DocumentLauncher> m_launcher;
    std::unique_ptr<NewAssayProtocolDialog> m_dialog;
    QStringList m_events;
    bool m_secured = false;
    QObject m_manager;

    QString catalogueFile() const { return m_suite->folders.root() + QStringLiteral("/wizards.json"); }

    // Writes the catalogue; "Name" runs the scripted wizard, "Name=ProgID" another.
    void writeCatalogue(const QStringList& entries)
    {
        QStringList json;
        for (const QString& entry : entries) {
            const QString name = entry.section(QLatin1Char('='), 0, 0);
            const QString progId = entry.contains(QLatin1Char('=')) ? entry.section(QLatin1Char('='), 1)
                                                                    : QStringLiteral("NebraTest.Scripted");
            json << QStringLiteral(R"({"Name":"%1","ProgID":"%2"})").arg(name, progId);
            test::writeFile(indexOf(name), "<html><body><h1>" + name.toUtf8() + "</h1></body></html>");
        }
        test::writeFile(catalogueFile(),
                        QStringLiteral(R"({"wizards":[%1]})").arg(json.join(QLatin1Char(','))).toUtf8());
    }
    QString indexOf(const QString& name) const
    {
        return m_suite->paths.WizardsParentFolder() + QStringLiteral("/Wizards/") + name +
               QStringLiteral("/Index.html");
    }

    WizardHooks hooks()
    {
        WizardHooks hooks;
        hooks.closeHelpIfOpen = [this] {
            m_events << QStringLiteral("close help");
            return false;
        };
        hooks.displayHelp = [this](int topic) { m_events << QStringLiteral("help %1").arg(topic); };
        hooks.securityEnabled = [this] { return m_secured; };
        hooks.securityManager = [this] { return &m_manager; };
        hooks.handleChangedHLD = [this] { m_events << QStringLiteral("driver changed"); };
        hooks.recreateResultsNode = [this] { m_events << QStringLiteral("results"); };
        hooks.openNewProtocol = [this](const QStringList& files) {
            m_events << QStringLiteral("open ") + files.join(QStringLiteral("; "));
            m_launcher->OpenNewProtocol(files);
        };
        return hooks;
    }

    NewAssayProtocolDialog& openDialog(const QStringList& entries)
    {
        writeCatalogue(entries);
        m_dialog = std::make_unique<NewAssayProtocolDialog>(*m_host, m_suite->paths, *m_settings, hooks());
        m_dialog->LoadList();
        m_dialog->show();
        m_dialog->setResult(-1);
        return *m_dialog;
    }
    QListWidget* list() const { return m_dialog->findChild<QListWidget*>(QStringLiteral("ListView1")); }
    QListWidgetItem* item(const QString& name) const
    {
        const auto found = list()->findItems(name, Qt::MatchExactly);
        return found.isEmpty() ? nullptr : found.first();
    }
    BrowserControl* browser() const
    {
        return m_dialog->findChild<BrowserControl*>(QStringLiteral("WebBrowser1"));
    }
    void press(const char* button) { m_dialog->findChild<QPushButton*>(QLatin1String(button))->click(); }
    void clickItem(const QString& name, bool twice = false)
    {
        const QPoint centre = list()->visualItemRect(item(name)).center();
        doubleClickAt(centre, twice);
    }
    // QTest's double click sends the double-click event alone; a real one
    // comes after a press and a release.
    void doubleClickAt(const QPoint& point, bool twice = true)
    {
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, point);
        if (twice)
            QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, point);
    }
    QVariant state(const char* key) const
    {
        return static_cast<SharedWizardState*>(m_host->SharedState())->Value(QLatin1String(key));
    }
    static void script(const QByteArray& json) { qputenv("NEBRA_TEST_WIZARD_SCRIPT", json); }

private Q_SLOTS:
    void init()
    {
        m_suite = std::make_unique<test::RecordedSuite>();
        QVERIFY(m_suite->store.setValue(QStringLiteral("Paths/WizardsParentFolder"),
                                        m_suite->folders.root() + "/suite"));
        m_settings = std::make_unique<SuiteSettings>(m_suite->store);
        QVERIFY(m_settings->SetCurrentHLD(1));
        m_host = std::make_unique<WizardHost>(m_suite->paths, *m_settings, catalogueFile(),
                                              QStringLiteral(NEBRA_TEST_WIZARD_PLUGINS));
        m_launcher = std::make_unique<DocumentLauncher>(m_suite->paths, LaunchContext{});
        m_events.clear();
        m_secured = false;
        script("{}");
    }
    void cleanup()
    {
        m_dialog.reset();
        m_launcher.reset();
        m_host.reset();
        m_settings.reset();
        m_suite.reset();
    }

    void loadingTheList_data()
    {
        QTest::addColumn<QStringList>("catalogue");
        QTest::addColumn<QString>("selected"); // empty: none, and nothing previewed
        QTest::addColumn<bool>("missingBox");
        QTest::newRow("Generic among others")
            << QStringList{"Kinetic", "Generic", "ELISA"} << "Generic" << false;
        QTest::newRow("Generic alone") << QStringList{"Generic"} << "Generic" << false;
        QTest::newRow("others only") << QStringList{"Kinetic", "ELISA"} << "" << true;
        QTest::newRow("case differs") << QStringList{"generic"} << "" << true;
        QTest::newRow("empty catalogue") << QStringList{} << "" << true;
        QTest::newRow("Generic's plug-in missing")
            << QStringList{"Generic=NebraTest.NotInstalled"} << "Generic" << false;
    }
    void loadingTheList()
    {
        QFETCH(QStringList, catalogue);
        QFETCH(QString, selected);
        QFETCH(bool, missingBox);
        test::MessageRecorder messages;
        NewAssayProtocolDialog& dialog = openDialog(catalogue);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Select New Assay Protocol Wizard"));

        QStringList listed;
        QStringList selectedNames;
        for (int row = 0; row < list()->count(); ++row) {
            listed << list()->item(row)->text();
            if (list()->item(row)->isSelected())
                selectedNames << list()->item(row)->text();
        }
        QStringList names;
        for (const QString& entry : catalogue)
            names << entry.section(QLatin1Char('='), 0, 0);
        QCOMPARE(listed, names);
        QCOMPARE(selectedNames, selected.isEmpty() ? QStringList{} : QStringList{selected});
        if (selected.isEmpty())
            QCOMPARE(browser()->LocationURL(), QUrl());
        else
            QTRY_COMPARE_WITH_TIMEOUT(browser()->LocationURL(), QUrl::fromLocalFile(indexOf(selected)),
                                      10000);
        QCOMPARE(messages.count(), missingBox ? 1 : 0);
        if (missingBox) {
            QCOMPARE(messages.last().text, QStringLiteral("No Wizard plug-ins were found on your system."));
            QCOMPARE(messages.last().title, QStringLiteral("Missing Wizards"));
            QCOMPARE(messages.last().icon, MessageIcon::Warning);
            QCOMPARE(messages.last().buttons, int(MessageButton::Ok));
        }
    }

    void okWithoutSelectionSaysSoAndStays()
    {
        test::MessageRecorder messages;
        openDialog({});
        messages.clear();
        press("OKButton");
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().text, QStringLiteral("No item is selected in the list."));
        QCOMPARE(messages.last().icon, MessageIcon::NoIcon);
        QCOMPARE(messages.last().title, Messages::applicationTitle());
        QVERIFY(m_dialog->isVisible());
        QVERIFY(m_events.isEmpty());
    }

    // In a security session the wizard is given the session's manager.
    void okRunsTheSelectedItemNotTheClickedOne()
    {
        test::MessageRecorder messages;
        m_secured = true;
        openDialog({"Kinetic", "Generic", "ELISA"});
        clickItem(QStringLiteral("ELISA"));
        QCOMPARE(m_dialog->ClickedItem(), item(QStringLiteral("ELISA")));
        QTRY_COMPARE_WITH_TIMEOUT(browser()->LocationURL(),
                                  QUrl::fromLocalFile(indexOf(QStringLiteral("ELISA"))), 10000);
        list()->setCurrentItem(item(QStringLiteral("Kinetic")));
        press("OKButton");
        QCOMPARE(state("LastRun").toString(), QStringLiteral("Kinetic"));
        QVERIFY(state("Secured").toBool());
    }

    void resultCodes_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("boxText"); // empty: no box
        QTest::addColumn<bool>("closed");
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<QByteArrayList>("editorArgs"); // the editor's arguments; empty: not started
        const QString apr = QStringLiteral("/data/My Assays/Protocols/New Assay.apr");
        // clang-format off
        QTest::newRow("0: abandoned") << QByteArray(R"({"result":0})") << "" << false
            << QStringList{"close help", "results"} << QByteArrayList{};
        QTest::newRow("1, not in the editor") << QByteArray(R"({"result":1,"newFile":"/data/My Assays/Protocols/New Assay.apr"})")
            << "The new Assay Protocol file is stored at: \r\n\r\n" + apr << true
            << QStringList{"close help", "results"} << QByteArrayList{};
        QTest::newRow("1, in the editor") << QByteArray(R"({"result":1,"openInEditor":true,"newFile":"/data/My Assays/Protocols/New Assay.apr"})")
            << "" << true << QStringList{"close help", "open " + apr, "results"} << QByteArrayList{apr.toUtf8()};
        QTest::newRow("1, in the editor, second file") << QByteArray(R"({"result":1,"openInEditor":true,"newFile":"/p/A.apr","secondFile":"/p/B.mlo"})")
            << "" << true << QStringList{"close help", "open /p/A.apr; /p/B.mlo", "results"} << QByteArrayList{"/p/A.apr; /p/B.mlo"};
        QTest::newRow("2: failed") << QByteArray(R"({"result":2})") << "Error in Wizard" << false
            << QStringList{"close help", "results"} << QByteArrayList{};
        QTest::newRow("-1: failed") << QByteArray(R"({"result":-1,"openInEditor":true,"newFile":"/p/A.apr"})")
            << "Error in Wizard" << false << QStringList{"close help", "results"} << QByteArrayList{};
        QTest::newRow("driver changed") << QByteArray(R"({"result":0,"hld":2})") << "" << false
            << QStringList{"close help", "driver changed", "results"} << QByteArrayList{};
        QTest::newRow("driver set to the same") << QByteArray(R"({"result":0,"hld":1})") << "" << false
            << QStringList{"close help", "results"} << QByteArrayList{};
        QTest::newRow("broken plug-in") << QByteArray(R"({"result":1})") << "Error in Wizard" << false
            << QStringList{"close help", "results"} << QByteArrayList{};
        // clang-format on
    }
    void resultCodes()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, boxText);
        QFETCH(bool, closed);
        QFETCH(QStringList, events);
        QFETCH(QByteArrayList, editorArgs);
        test::MessageRecorder messages;
        const bool broken = QTest::currentDataTag() == QByteArray("broken plug-in");
        openDialog({broken ? "Generic=NebraTest.WrongInterface" : "Generic"});
        NewAssayProtocolDialogTest::script(script);
        if (broken) // the loader's reason, for support
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral(
                                                   "^Log note: .*does not implement the wizard interface")));
        press("OKButton");

        QCOMPARE(m_events, events);
        QCOMPARE(messages.count(), boxText.isEmpty() ? 0 : 1);
        if (!boxText.isEmpty()) {
            QCOMPARE(messages.last().text, boxText);
            QCOMPARE(messages.last().title, Messages::applicationTitle());
            QCOMPARE(messages.last().icon, closed ? MessageIcon::Information : MessageIcon::NoIcon);
        }
        QCOMPARE(m_dialog->result() == QDialog::Accepted, closed);
        QCOMPARE(m_dialog->isVisible(), !closed);
        if (!editorArgs.isEmpty()) {
            QVERIFY(m_suite->programs.waitForRecords(1));
            QCOMPARE(m_suite->programs.records().first().mid(1), editorArgs);
        } else {
            QCOMPARE(m_suite->programs.records().size(), 0);
        }
    }

    void doubleClicks_data()
    {
        QTest::addColumn<bool>("onItem");
        QTest::newRow("on an item runs it") << true;
        QTest::newRow("on empty space does nothing") << false;
    }
    void doubleClicks()
    {
        QFETCH(bool, onItem);
        test::MessageRecorder messages;
        openDialog({"Generic", "Kinetic"});
        m_dialog->resize(600, 600);
        clickItem(QStringLiteral("Kinetic"));
        QVERIFY(m_dialog->ItemClicked());
        if (onItem) {
            clickItem(QStringLiteral("Kinetic"), true);
        } else {
            const QPoint empty(list()->viewport()->width() - 3, list()->viewport()->height() - 3);
            QVERIFY(!list()->itemAt(empty));
            doubleClickAt(empty);
        }
        QCOMPARE(m_events, onItem ? QStringList({"close help", "results"}) : QStringList());
        QCOMPARE(m_host->HasSharedState() ? state("LastRun").toString() : QString(),
                 onItem ? QStringLiteral("Kinetic") : QString());
    }

    void cancelAndHelp()
    {
        test::MessageRecorder messages;
        openDialog({"Generic"});
        press("cmdHelp");
        QCOMPARE(m_events, QStringList{"help 9007"});
        press("CancelButton");
        QCOMPARE(m_dialog->result(), int(QDialog::Rejected));
        QVERIFY(!m_host->HasSharedState());
    }

    void everyControlIsNamedForAccessibility()
    {
        test::MessageRecorder messages;
        openDialog({"Generic"});
        for (const char* name :
             {"SSSplitter1", "ListView1", "WebBrowser1", "OKButton", "CancelButton", "cmdHelp"}) {
            auto* control = m_dialog->findChild<QWidget*>(QLatin1String(name));
            QVERIFY2(control && !control->accessibleName().isEmpty(), name);
        }
    }

    // The picker opens through the dialog seam, previewed, and is gone afterwards.
    void showNewMakesAFreshPickerEachTime()
    {
        test::MessageRecorder messages;
        test::DialogScript dialogs;
        writeCatalogue({"Kinetic"});
        QPointer<QDialog> first;
        dialogs.then([&](QDialog& dialog) {
            first = &dialog;
            return int(QDialog::Rejected);
        });
        dialogs.cancel();
        NewAssayProtocolDialog::ShowNew(*m_host, m_suite->paths, *m_settings, hooks(), nullptr);
        QVERIFY(first.isNull());
        NewAssayProtocolDialog::ShowNew(*m_host, m_suite->paths, *m_settings, hooks(), nullptr);
        QCOMPARE(dialogs.shown(), (QStringList{"frmNewAssayProtocol", "frmNewAssayProtocol"}));
        QCOMPARE(messages.count(), 2); // "Missing Wizards" at every creation
    }

    void mainWindowVariantTitlesItsBoxInformation()
    {
        test::MessageRecorder messages;
        writeCatalogue({"Generic"});
        script(R"({"result":1,"newFile":"/p/A.apr"})");
        WizardRunner runner(*m_host, *m_settings, hooks(), QStringLiteral("Information"));
        QWidget window;
        window.setObjectName(QStringLiteral("frmNMain"));
        runner.RunSelectedWizard({QStringLiteral("Generic"), QStringLiteral("NebraTest.Scripted")}, &window,
                                 {});
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().title, QStringLiteral("Information"));
        QCOMPARE(state("Owner").toString(), QStringLiteral("frmNMain"));
    }
};

NEBRA_WEBENGINE_TEST_MAIN(NewAssayProtocolDialogTest)
#include "NewAssayProtocolDialogTest.moc"
