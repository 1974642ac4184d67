#include "OptionsDialog.h"
#include "Accessibility.h"
#include "Controls.h"
#include "DataFolders.h"
#include "DialogScript.h"
#include "HLDCollection.h"
#include "ManagerSite.h"
#include "MessageRecorder.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"
#include "TestFiles.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

namespace {

// The dialog over a real settings file, real data folders and a driver
// catalogue in one temporary folder; the permission hook goes to a real
// security manager when a session has been started.
struct Fixture
{
    QTemporaryDir dir;
    SettingsStore store{dir.filePath("Suite.ini")};
    SuiteSettings settings{store};
    SuitePaths paths{store};
    QString catalogue = dir.filePath("drivers.json");
    int catalogueReads = 0;
    QList<int> helpTopics;
    int driverChanges = 0;
    std::unique_ptr<SecuritySite> site;
    std::unique_ptr<NebraSecurityManager> manager;
    DataFolders folders{paths, settings, [this]() -> const HLDCollection& { return noDrivers; }};
    HLDCollection noDrivers;
    OptionsDialog dialog{settings, paths, folders, [this] {
                             OptionsDialogHooks h;
                             h.freshDrivers = [this] {
                                 ++catalogueReads;
                                 return HLDCollection(catalogue);
                             };
                             h.isAllowed = [this](const QString& area, const QString& operation) {
                                 return !manager || manager->IsOperationAllowed(area, operation);
                             };
                             h.displayHelpContext = [this](int topic) { helpTopics.append(topic); };
                             h.handleChangedHLD = [this] { ++driverChanges; };
                             return h;
                         }()};

    Fixture()
    {
        paths.Initialise();
        paths.SetParentDirectory(dir.filePath("Parent"));
        folders.CreateAnyMissingNebraDirectories();
    }

    void setDrivers(const QStringList& names)
    {
        QByteArray json = "{\"drivers\":[";
        for (const QString& name : names)
            json += (name == names.first() ? "" : ",") + ("{\"FullName\":\"" + name.toUtf8() + "\"}");
        writeFile(catalogue, json + "]}");
    }

    template <typename T> T* control(const char* name) const { return test::control<T>(dialog, name); }
    QListWidget* list() const { return control<QListWidget>("lstHLDs"); }
    QLineEdit* text() const { return control<QLineEdit>("txtParentDirectoryPath"); }
    void openDrivers() const
    {
        control<QTabWidget>("tabOptions")->setCurrentIndex(OptionsDialog::DriversTab);
    }
    void press(const char* button) const { control<QPushButton>(button)->click(); }

    // Runs the dialog once; the step plays the user and the dialog's own state says how it closed.
    // The folder chooser, when it is shown, chooses the file given.
    QStringList shown; // the dialogs of the last run
    bool run(const std::function<void()>& user, const QString& chosen = {})
    {
        DialogScript script;
        script.then([&user](QDialog& shown) {
            user();
            return shown.result();
        });
        script.chooseFile(chosen);
        const bool ok = dialog.run();
        shown = script.shown();
        return ok;
    }
};

} // namespace

class OptionsDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The deliberate coupling: the driver list follows the data-folder
    // permission, the driver permission only shows its notice. The dialog
    // sees only the answers, so both allowed is the row without a session.
    void eachShowingAsksBothPermissions()
    {
        // clang-format off
        for (const auto& [session, rights, dataAllowed, driverAllowed] : std::initializer_list<std::tuple<bool, QStringList, bool, bool>>{
            {false, QStringList(), true, true}, // no session
            {true, QStringList{"Instrumentation/SelectDriver"}, false, true}, // driver only
            {true, QStringList{"ParentDirectoryDataFiles/Edit"}, true, false}, // data only
            {true, QStringList(), false, false} // neither
        }) {
            // clang-format on
            Fixture f;
            if (session) { // a session of jsmith with the rights given
                f.site = std::make_unique<SecuritySite>(rights);
                QVERIFY(f.manager = loggedInManager());
            }
            f.setDrivers({"Reader One", "Reader Two"});
            f.settings.SetShowPreviewPane(false);
            f.settings.SetShowShortcuts(true);
            f.run([&] {
                QCOMPARE(f.control<QCheckBox>("chkPreview")->isChecked(), false);
                QCOMPARE(f.control<QCheckBox>("chkShortcuts")->isChecked(), true);
                QCOMPARE(f.text()->text(), f.paths.ParentDirectory());
                QCOMPARE(f.text()->isEnabled(), dataAllowed);
                QCOMPARE(f.control<QPushButton>("cmdBrowseParentDirectory")->isEnabled(), dataAllowed);
                QCOMPARE(f.control<QLabel>("LabelSecurity")->isHidden(), dataAllowed);
                QCOMPARE(f.control<QLabel>("ImageSecurity")->isHidden(), dataAllowed);
                QCOMPARE(f.control<QLabel>("LabelSecurityDrivers")->isHidden(), driverAllowed);
                QCOMPARE(f.control<QLabel>("ImageSecurityDrivers")->isHidden(), driverAllowed);
                QCOMPARE(f.control<QLabel>("LabelSecurity")->text(),
                         QStringLiteral("Security restrictions do not allow you to edit this setting"));
                f.openDrivers();
                QCOMPARE(f.list()->count(), 2);
                QCOMPARE(f.list()->isEnabled(), dataAllowed);
                f.press("CancelButton");
            });
        }
    }

    // OK stores the driver only when the list was filled in this showing and
    // the user picked another line.
    void theDriverChangesOnlyByAChoice_data()
    {
        QTest::addColumn<QStringList>("drivers");
        QTest::addColumn<int>("current");
        QTest::addColumn<bool>("visit");
        QTest::addColumn<int>("selectedOnOpening");
        QTest::addColumn<int>("pick"); // -1: the user picks nothing
        QTest::addColumn<int>("currentAfter");
        const QStringList two = {"Reader One", "Reader Two"};
        // clang-format off
        QTest::newRow("Drivers not visited") << two << 2 << false << -1 << -1 << 2;
        QTest::newRow("visited, kept") << two << 2 << true << 1 << -1 << 2;
        QTest::newRow("visited, another picked") << two << 2 << true << 1 << 0 << 1;
        QTest::newRow("no drivers installed") << QStringList() << 1 << true << -1 << -1 << 1;
        // No line selected is the index -1: the driver becomes 0, a change handled like any other.
        QTest::newRow("current beyond the catalogue") << two << 5 << true << -1 << -1 << 0;
        QTest::newRow("beyond, then picked") << two << 5 << true << -1 << 1 << 2;
        // clang-format on
    }

    void theDriverChangesOnlyByAChoice()
    {
        QFETCH(QStringList, drivers);
        QFETCH(int, current);
        QFETCH(bool, visit);
        QFETCH(int, selectedOnOpening);
        QFETCH(int, pick);
        QFETCH(int, currentAfter);
        Fixture f;
        f.setDrivers(drivers);
        f.settings.SetCurrentHLD(current);
        const bool ok = f.run([&] {
            if (visit) {
                f.openDrivers();
                QCOMPARE(f.list()->count(), drivers.size());
                QCOMPARE(f.list()->isEnabled(), !drivers.isEmpty());
                QCOMPARE(f.list()->currentRow(), selectedOnOpening);
                if (pick >= 0)
                    f.list()->setCurrentRow(pick);
            }
            f.press("OKButton");
        });
        QVERIFY(ok);
        QCOMPARE(f.catalogueReads, int(visit));
        QCOMPARE(f.settings.CurrentHLD(), currentAfter);
        QCOMPARE(f.driverChanges, int(currentAfter != current));
    }

    // The catalogue is read once per showing, afresh at each, so a driver
    // installed meanwhile is listed and an earlier showing's lines never count.
    // The folder chooser fills the text box.
    void theCatalogueIsReadOncePerShowingAndTheChooserFillsTheTextBox()
    {
        Fixture f;
        f.setDrivers({"Reader One"});
        f.run([&] {
            f.openDrivers();
            f.control<QTabWidget>("tabOptions")->setCurrentIndex(0);
            f.openDrivers();
            QCOMPARE(f.catalogueReads, 1);
            QVERIFY(f.dialog.DriversListed());
            f.press("CancelButton");
        });
        f.setDrivers({"Reader One", "Reader Two", "Reader Three"});
        f.settings.SetCurrentHLD(3);
        // The dialog opens on the tab it was left on: the list is read at once.
        f.run([&] {
            QCOMPARE(f.catalogueReads, 2);
            QCOMPARE(f.list()->count(), 3);
            QCOMPARE(f.list()->currentItem()->text(), QStringLiteral("Reader Three"));
            f.press("OKButton");
        });
        QCOMPARE(f.driverChanges, 0);

        // The chooser fills the text box; OK validates the text as if typed.
        const QString chosen = f.dir.filePath("Chosen");
        makeFolder(chosen);
        MessageRecorder recorder;
        recorder.answer(MessageButton::Yes);
        QVERIFY(f.run(
            [&] {
                f.press("cmdBrowseParentDirectory");
                QCOMPARE(f.text()->text(), chosen);
                f.press("cmdBrowseParentDirectory"); // cancelled: the text stays
                QCOMPARE(f.text()->text(), chosen);
                f.press("Help");
                f.press("OKButton");
            },
            chosen));
        QCOMPARE(f.shown, (QStringList{"frmOptions", "dlgParentDirectory", "dlgParentDirectory"}));
        QCOMPARE(f.paths.ParentDirectory(), chosen);
        QCOMPARE(f.helpTopics, QList<int>{OptionsDialog::HelpTopic});
    }

    // OK applies the parent directory first; a refused one keeps the dialog
    // open with nothing else applied. Cancel never undoes an earlier OK. Why
    // a folder is refused is the data folders' business, tested there.
    void okAppliesTheParentDirectory()
    {
        // What is typed (%1: the test's folder), the answer to the question, whether OK closed the dialog
        // and the parent directory after.
        // clang-format off
        for (const auto& [typed, answer, closed, parentAfter] : std::initializer_list<std::tuple<QString, int, bool, QString>>{
            {"%1/Parent", 0, true, "Parent"}, // unchanged
            {" %1/Fresh/ ", int(MessageButton::Yes), true, "Fresh"}, // new, created
            {"%1/Fresh", int(MessageButton::No), false, "Parent"} // new, refused
        }) {
            // clang-format on
            Fixture f;
            f.setDrivers({"Reader One", "Reader Two"});
            const QStringList before = QDir(f.dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
            MessageRecorder recorder;
            if (answer)
                recorder.answer(answer);
            bool stayedOpen = false;
            const bool ok = f.run([&] {
                f.openDrivers();
                f.list()->setCurrentRow(1);
                f.text()->setText(typed.arg(f.dir.path()));
                f.press("OKButton");
                stayedOpen = f.dialog.result() != QDialog::Accepted;
                if (stayedOpen)
                    f.press("CancelButton");
            });
            QCOMPARE(ok, closed);
            QCOMPARE(stayedOpen, !closed);
            QCOMPARE(recorder.count(), answer ? 1 : 0); // the question about the new folder
            QCOMPARE(f.paths.ParentDirectory(), f.dir.filePath(parentAfter));
            QCOMPARE(f.settings.CurrentHLD(), closed ? 2 : 1); // the driver only after an accepted folder
            if (closed)
                QCOMPARE(f.text()->text(), f.paths.ParentDirectory());
            else
                QCOMPARE(QDir(f.dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
            // Cancel at the next showing keeps what this OK accepted.
            f.run([&] {
                f.text()->setText(f.dir.filePath("Other"));
                f.press("CancelButton");
            });
            QCOMPARE(f.paths.ParentDirectory(), f.dir.filePath(parentAfter));
            QVERIFY(!f.dialog.OKPressed());
        }
    }

    // Every control is reached by Tab and heard by its caption, the access
    // keys reach the tabs, Escape cancels and Enter confirms.
    void theKeyboardReachesEverything()
    {
        Fixture f;
        f.setDrivers({"Reader One"});
        for (const auto& [key, okPressed] : {std::pair(Qt::Key_Escape, false), {Qt::Key_Return, true}}) {
            const bool ok = f.run([&] {
                f.dialog.show();
                QApplication::setActiveWindow(&f.dialog);
                QVERIFY(QTest::qWaitForWindowActive(&f.dialog));
                QTest::keyClick(&f.dialog, Qt::Key_R, Qt::AltModifier);
                QCOMPARE(f.control<QTabWidget>("tabOptions")->currentIndex(), int(OptionsDialog::DriversTab));
                // Tab from the tab bar through each page in turn reaches every control it shows.
                auto* tabs = f.control<QTabWidget>("tabOptions");
                int checked = 0;
                for (int page = 0; page < tabs->count(); ++page) {
                    tabs->setCurrentIndex(page);
                    verifyAccessibleNames(f.dialog, 4);
                    tabs->tabBar()->setFocus();
                    QSet<QWidget*> reached;
                    for (int i = 0; i < 8; ++i) {
                        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
                        reached.insert(QApplication::focusWidget());
                    }
                    for (QWidget* control : f.dialog.findChildren<QWidget*>()) {
                        if (control->isVisible() && (control->focusPolicy() & Qt::TabFocus) &&
                            !control->focusProxy()) {
                            QVERIFY2(reached.contains(control), qPrintable(control->objectName()));
                            ++checked;
                        }
                    }
                }
                QVERIFY2(checked >= 10, qPrintable(QString::number(checked))); // each page's and the buttons
                f.list()->setFocus();
                QTest::keyClick(f.list(), key);
            });
            QCOMPARE(ok, okPressed);
            QVERIFY(f.dialog.isHidden());
        }
    }
};

QTEST_MAIN(OptionsDialogTest)
#include "OptionsDialogTest.moc"
