#include "Controls.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "FolderTreeModel.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "OptionsDialog.h"
#include "PanesGeometry.h"
#include "ShortcutsBar.h"
#include "ToolBarsControl.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>

using namespace nebra;
using namespace nebra::test;

namespace {

const QStringList Kinds = {"Microplate Layouts", "Read Configurations", "Results", "Reports", "Protocols"};

// The Organiser with two complete data trees, "Lab Data" (the current
// parent directory) and "Other", and a catalogue of two drivers.
struct Site : LoadedOrganiser
{
    QString data = folders.root() + QStringLiteral("/Lab Data");
    QString other = folders.root() + QStringLiteral("/Other");

    Site()
    {
        for (const QString& parent : {data, other}) {
            for (const QString& kind : Kinds)
                makeFolder(parent + QStringLiteral("/My Assays/") + kind);
            makeFolder(parent + QStringLiteral("/My Assays/Protocols/Batch 1"));
            for (const char* driver : {"Reader One", "Reader Two"})
                makeFolder(parent + QStringLiteral("/My Assays/Read Configurations/") +
                           QLatin1String(driver));
        }
        writeFile(other + QStringLiteral("/My Assays/Read Configurations/Reader Two/plate.daq"));
        const QString catalogue = folders.root() + QStringLiteral("/drivers.json");
        writeFile(catalogue, R"({"drivers":[{"FullName":"Reader One"},{"FullName":"Reader Two"}]})");
        set(QStringLiteral("Paths/DriverCatalogue"), catalogue);
    }
};

FolderNode nodeOf(MainWindow& window, const QString& folder)
{
    const FolderTreeModel& nodes = part<FolderTreeControl>(window).nodes();
    for (int i = 0; i < nodes.count(); ++i)
        if (nodes.node(i).folderPath() == folder)
            return nodes.node(i);
    return {};
}

} // namespace

class MainWindowOptionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The Options command in the running Organiser: the view options, the
    // parent directory and the driver reach the panes, the tree and the
    // settings, and the panes come back as they were left after a restart.
    void optionsChangeTheRunningOrganiser()
    {
        Site site;
        {
            MainWindow& window = site.load();
            part<FolderTreeControl>(window).setCurrentNode(
                nodeOf(window, site.data + "/My Assays/Protocols/Batch 1"));
            const int listWidth = part<FileListControl>(window).width();
            const int listHeight = part<FileListControl>(window).height();

            DialogScript& script = site.dialogs;
            script.then([&](QDialog& dialog) {
                control<QCheckBox>(dialog, "chkShortcuts")->setChecked(false);
                control<QCheckBox>(dialog, "chkPreview")->setChecked(false);
                control<QLineEdit>(dialog, "txtParentDirectoryPath")->setText(site.other);
                control<QTabWidget>(dialog, "tabOptions")->setCurrentIndex(OptionsDialog::DriversTab);
                control<QListWidget>(dialog, "lstHLDs")->setCurrentRow(1);
                control<QPushButton>(dialog, "OKButton")->click();
                return dialog.result();
            });
            tool(window, CommandId::Options).trigger();
            QCOMPARE(site.messages.count(), 0);
            OptionsDialog* dialog = window.findChild<OptionsDialog*>();
            QVERIFY(dialog && dialog->isHidden());
            QCOMPARE(dialog->windowIcon().cacheKey(), QApplication::windowIcon().cacheKey());

            // The panes left take the room of the hidden ones.
            QVERIFY(part<ShortcutsBar>(window).isHidden());
            QVERIFY(window.findChild<QWidget*>(QStringLiteral("previewArea"))->isHidden());
            QTRY_VERIFY_WITH_TIMEOUT(part<FileListControl>(window).width() > listWidth, 2000);
            QTRY_VERIFY_WITH_TIMEOUT(part<FileListControl>(window).height() > listHeight, 2000);
            // The tree was built anew and shows the same place under the new parent.
            const auto instrumentNode = [&window] {
                return branch(window, DocumentType::ReadConfigurations);
            };
            // The new tree is read on the readers: the place is selected once it has arrived.
            QTRY_COMPARE_WITH_TIMEOUT(part<FolderTreeControl>(window).currentNode().folderPath(),
                                      site.other + QStringLiteral("/My Assays/Protocols/Batch 1"), 5000);
            QCOMPARE(instrumentNode().folderPath(),
                     site.other + QStringLiteral("/My Assays/Read Configurations/Reader Two"));
            QCOMPARE(instrumentNode().text(), QStringLiteral("Reader Two"));
            // The watches moved with the parent: folders made there appear in every branch.
            const QString run = site.other + QStringLiteral("/My Assays/Results/Run 9");
            const QString plates = site.other + QStringLiteral("/My Assays/Microplate Layouts/Plates 9");
            makeFolder(run);
            makeFolder(plates);
            QTRY_VERIFY_WITH_TIMEOUT(nodeOf(window, run).isValid() && nodeOf(window, plates).isValid(), 5000);

            // With the instrument node selected, a driver change re-selects it and the list follows.
            part<FolderTreeControl>(window).setCurrentNode(instrumentNode());
            script.then([&](QDialog& shown) {
                control<QTabWidget>(shown, "tabOptions")->setCurrentIndex(OptionsDialog::DriversTab);
                control<QListWidget>(shown, "lstHLDs")->setCurrentRow(0);
                control<QPushButton>(shown, "OKButton")->click();
                return shown.result();
            });
            tool(window, CommandId::Options).trigger();
            QCOMPARE(part<FolderTreeControl>(window).currentNode(), instrumentNode());
            QCOMPARE(part<FileListControl>(window).folder(),
                     site.other + QStringLiteral("/My Assays/Read Configurations/Reader One"));

            QCOMPARE(window.findChild<OptionsDialog*>(), dialog); // the same dialog again
            QCOMPARE(script.shown(), QStringList({"frmOptions", "frmOptions"}));

            // A forced log-out while the dialog is open closes and unloads it.
            const QPointer<OptionsDialog> open = dialog;
            script.then([&](QDialog& shown) {
                shown.show();
                window.UnloadAllExceptMain();
                return shown.result();
            });
            tool(window, CommandId::Options).trigger();
            QTRY_VERIFY_WITH_TIMEOUT(!open, 2000);
            window.close();
        }
        QCOMPARE(site.stored(QStringLiteral("Paths/ParentDirectory")).toString(), site.other);
        QCOMPARE(site.stored(QStringLiteral("Settings/CurrentHLD")).toInt(), 1);

        MainWindow& restarted = site.load();
        QVERIFY(part<ShortcutsBar>(restarted).isHidden());
        QVERIFY(restarted.findChild<QWidget*>(QStringLiteral("previewArea"))->isHidden());
        QVERIFY(part<FolderTreeControl>(restarted).isVisible());
        restarted.close();
    }

    // The resize rule on a real window: the panes follow the window above
    // the thresholds, keep their size below them and when minimised.
    void thePanesFollowTheWindowAboveTheThresholds()
    {
        Site site;
        MainWindow& window = site.load();
        // The first change of state after loading is taken back, the second one holds.
        window.showNormal();
        window.showNormal();
        QTRY_VERIFY_WITH_TIMEOUT(!window.isMaximized(), 2000);
        window.resize(900, 640);
        QTRY_COMPARE_WITH_TIMEOUT(panes(window).width(), window.centralWidget()->width(), 2000);
        const PanesGeometry geometry(window.logicalDpiX(), window.logicalDpiY());
        QCOMPARE(panes(window).y(), geometry.topPixels());
        QVERIFY(panes(window).geometry().bottom() <= window.centralWidget()->height());
        const QSize large = panes(window).size();

        // The menu, tool and status bars keep the window above the thresholds
        // unless its minimum size is lifted, as a window manager may do.
        window.setMinimumSize(1, 1);
        const int belowHeight = geometry.toPixelsY(PanesGeometry::MinimumOuterHeight) - 2;
        const int belowWidth = geometry.toPixelsX(PanesGeometry::MinimumOuterWidth) - 2;
        for (const QSize below : {QSize(700, belowHeight), QSize(belowWidth, 500)}) {
            window.resize(below - (window.frameGeometry().size() - window.size()));
            QTRY_COMPARE_WITH_TIMEOUT(window.frameGeometry().size(), below, 2000);
            QCOMPARE(panes(window).size(), large);
        }

        window.resize(1000, 700);
        QTRY_COMPARE_WITH_TIMEOUT(panes(window).width(), window.centralWidget()->width(), 2000);
        const QRect before = panes(window).geometry();
        window.showMinimized();
        QTRY_VERIFY_WITH_TIMEOUT(window.isMinimized(), 2000);
        QCOMPARE(panes(window).geometry(), before);
        window.showNormal();
        QTRY_VERIFY_WITH_TIMEOUT(!window.isMinimized(), 2000);
        QCOMPARE(panes(window).geometry(), before);
        window.close();
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowOptionsTest)
#include "MainWindowOptionsTest.moc"
