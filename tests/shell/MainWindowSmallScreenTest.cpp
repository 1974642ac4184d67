#include "Accessibility.h"
#include "AuditTrailWindow.h"
#include "BrowserControl.h"
#include "FileListControl.h"
#include "FileListFilterBox.h"
#include "FolderTreeControl.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "ShortcutsBar.h"
#include "TestFiles.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>
#include <QTest>
#include <QTreeView>

using namespace nebra;
using namespace nebra::test;

namespace {

// What is cut in a shown window: the window beyond the screen, a label
// narrower than its text, a column beyond its view or narrower than its
// caption and its entries on screen, a line editor narrower than its text.
QStringList cutParts(const QWidget& window)
{
    QStringList cut;
    const QRect screen = window.screen()->availableGeometry();
    if (!screen.contains(window.frameGeometry()))
        cut << QStringLiteral("the window %1 beyond the screen").arg(window.accessibleName());
    for (const QLabel* label : window.findChildren<QLabel*>())
        if (label->isVisibleTo(&window) && !label->wordWrap() && !label->text().isEmpty() &&
            label->width() < label->sizeHint().width())
            cut << QStringLiteral("the label \"%1\"").arg(label->text());
    for (const QLineEdit* edit : window.findChildren<QLineEdit*>())
        if (edit->isVisibleTo(&window) && !qobject_cast<const QAbstractSpinBox*>(edit->parentWidget()) &&
            !qobject_cast<const QComboBox*>(edit->parentWidget()) &&
            edit->width() < edit->fontMetrics().horizontalAdvance(edit->text()) + 12)
            cut << QStringLiteral("the editor \"%1\"").arg(edit->accessibleName());
    for (const QAbstractItemView* view : window.findChildren<QAbstractItemView*>()) {
        const auto* table = qobject_cast<const QTableView*>(view);
        const auto* tree = qobject_cast<const QTreeView*>(view);
        QHeaderView* header = table ? table->horizontalHeader() : tree ? tree->header() : nullptr;
        if (!header || !view->isVisibleTo(&window))
            continue;
        const int last = header->logicalIndex(header->count() - 1);
        for (int column = 0; column < header->count(); ++column) {
            if (header->isSectionHidden(column))
                continue;
            const int right = header->sectionViewportPosition(column) + header->sectionSize(column);
            const int caption = header->isHidden() ? 0 : header->sectionSizeHint(column);
            const int needed = std::max(view->sizeHintForColumn(column), caption);
            // Names may be elided and the last column takes what is left; the others show their entries
            // whole.
            const bool whole = column != last && column != header->logicalIndex(0);
            if (right > view->viewport()->width() || header->sectionSize(column) < (whole ? needed : caption))
                cut << QStringLiteral("the column \"%1\" of %2")
                           .arg(view->model()->headerData(column, Qt::Horizontal).toString(),
                                view->accessibleName());
        }
    }
    return cut;
}

void verifyNothingCut(QWidget& window)
{
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QStringList cut = cutParts(window);
    QVERIFY2(cut.isEmpty(), qPrintable(cut.join(", ")));
}

} // namespace

// Every window and dialog a user can open from the Organiser, on a small
// screen or with large text (the screen and the scale are the test's
// environment): everything fits, each control reached by the keyboard has a
// name a person hears, never a code name, and the keys reach every pane. (The
// names in the help window and the time-out warning and the tree's own keys
// are HelpWindowTest's, SecuritySessionTest's and FolderTreeControlTest's.)
class MainWindowSmallScreenTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyWindowFitsAndNamesItsControls()
    {
        LoadedOrganiser site;
        writeFile(site.doc("Protocols/Enzyme linked immunosorbent assay, plate 12.apr"));
        site.secure({"Security/ViewAuditTrail", "AuthorisationsGeneral/CreateProtocol", "Documents/Sign"},
                    false);
        QStringList walked;
        // The log-in, with a wrong password first: it is asked again.
        for (const char* password : {"wrong horse", "correct horse"})
            site.dialogs.then([&walked, password](QDialog& dialog) {
                verifyAccessibleNames(dialog, 4);
                walked << dialog.windowTitle();
                dialog.findChild<QLineEdit*>("txtUserName")->setText("jsmith");
                dialog.findChild<QLineEdit*>("txtPassword")->setText(QLatin1String(password));
                return int(QDialog::Accepted);
            });
        MainWindow& window = site.load();
        verifyAccessibleNames(window, 6);
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        tree.setCurrentNode(branch(tree, DocumentType::Protocols));
        verifyNothingCut(window);
        // The documents, not the tree, take the room.
        QVERIFY(part<FileListControl>(window).width() > tree.width());

        // Each dialog is read while it is shown, then left as a user would leave it.
        const auto readThen = [&](CommandId command, int minimum, bool fits = false) {
            site.dialogs.then([&walked, minimum, fits](QDialog& dialog) {
                verifyAccessibleNames(dialog, minimum);
                // It fits, and opens centred on the window it belongs to.
                const auto centred = [&dialog] {
                    dialog.show();
                    verifyNothingCut(dialog);
                    const QRect owner = dialog.parentWidget()->window()->frameGeometry();
                    if (owner.width() > dialog.frameGeometry().width() + 40)
                        QVERIFY((dialog.frameGeometry().center() - owner.center()).manhattanLength() < 40);
                };
                if (fits)
                    centred();
                walked << dialog.windowTitle();
                dialog.hide();
                return int(QDialog::Rejected);
            });
            tool(window, command).trigger();
        };

        readThen(CommandId::Options, 4, true);
        readThen(CommandId::ChangePassword, 4);
        readThen(CommandId::New, 2, true);
        // Signing the protocol the list selected.
        QTRY_VERIFY(tool(window, CommandId::Sign).isEnabled());
        readThen(CommandId::Sign, 5);
        QCOMPARE(walked.size(), 6); // every dialog above was shown, the log-in twice

        tool(window, CommandId::AuditTrail).trigger();
        QTRY_VERIFY(shownWindow<AuditTrailWindow>());
        verifyAccessibleNames(*shownWindow<AuditTrailWindow>(), 4);
        verifyNothingCut(*shownWindow<AuditTrailWindow>());

        // Tab goes tree, documents, preview, shortcuts, filter; each list shows where the keys are.
        shownWindow<AuditTrailWindow>()->close();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QVERIFY(part<BrowserControl>(window).WaitUntilComplete());
        tree.setFocus();
        const auto tab = [](int times = 1) {
            QStringList heard;
            for (int step = 0; step < times; ++step) {
                QWidget* before = QApplication::focusWidget();
                QTest::keyClick(before, Qt::Key_Tab);
                // The page takes the key first and hands the focus on when it has no link to go to.
                static_cast<void>(
                    QTest::qWaitFor([before] { return QApplication::focusWidget() != before; }, 5000));
                // What a screen reader says for the focus: the nearest accessible name.
                const QWidget* widget = QApplication::focusWidget();
                while (widget && widget->accessibleName().isEmpty())
                    widget = widget->parentWidget();
                heard << (widget ? widget->accessibleName() : QString());
            }
            return heard;
        };
        QCOMPARE(tab(7), QStringList({"File list", "Preview", "Tasks", "Tasks", "Folders", "File list filter",
                                      "Folder tree"}));
        // The group with the layouts and the instrument data opens from the keyboard.
        tab(4);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QCOMPARE(tab(1), QStringList{"Folders"});
        QVERIFY(part<ShortcutsBar>(window).keyboardStops().contains(QApplication::focusWidget()));

        // The pane that takes the keys shows it: its selection or current item stands out.
        QWidget* elsewhere = part<FileListControl>(window).filterBox();
        for (const char* name : {"Folder tree", "File list", "Tasks"}) {
            QAbstractItemView* view = nullptr;
            for (QAbstractItemView* candidate : window.findChildren<QAbstractItemView*>())
                if (candidate->accessibleName() == QLatin1String(name))
                    view = candidate;
            view->setFocus();
            const QImage focused = view->viewport()->grab().toImage();
            elsewhere->setFocus();
            QVERIFY2(view->viewport()->grab().toImage() != focused, name);
        }
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowSmallScreenTest)
#include "MainWindowSmallScreenTest.moc"
