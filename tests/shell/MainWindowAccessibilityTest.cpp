#include "Accessibility.h"
#include "AuditTrailWindow.h"
#include "BrowserControl.h"
#include "FileListControl.h"
#include "FileListFilterBox.h"
#include "FolderTreeControl.h"
#include "HelpWindow.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "SecuritySession.h"
#include "ShortcutsBar.h"
#include "TestFiles.h"
#include "TimeOutWarning.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QTreeView>

using namespace nebra;
using namespace nebra::test;

namespace {

// What a screen reader says for the focus: the nearest accessible name.
QString spokenName(const QWidget* widget)
{
    while (widget && widget->accessibleName().isEmpty())
        widget = widget->parentWidget();
    return widget ? widget->accessibleName() : QString();
}

} // namespace

// What a screen reader says in every window and dialog a user can open from
// the Organiser: each control reached by the keyboard has a name a person
// hears, never a code name.
class MainWindowAccessibilityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyWindowAndDialogNamesItsControls()
    {
        LoadedOrganiser site;
        writeFile(site.doc(QStringLiteral("Protocols/Elisa.apr")));
        site.secure({QStringLiteral("Security/ViewAuditTrail"),
                     QStringLiteral("AuthorisationsGeneral/CreateProtocol"),
                     QStringLiteral("Documents/Sign")},
                    false);
        QStringList walked;
        // Each dialog is read while it is shown, then left as a user would leave it.
        const auto readThen = [&](int minimum, int answer) {
            site.dialogs.then([&walked, minimum, answer](QDialog& dialog) {
                verifyAccessibleNames(dialog, minimum);
                walked << dialog.windowTitle();
                return answer;
            });
        };
        // The log-in, with a wrong password first: it is asked again.
        for (const char* password : {"wrong horse", "correct horse"})
            site.dialogs.then([&walked, password](QDialog& dialog) {
                verifyAccessibleNames(dialog, 4);
                walked << dialog.windowTitle();
                dialog.findChild<QLineEdit*>(QStringLiteral("txtUserName"))
                    ->setText(QStringLiteral("jsmith"));
                dialog.findChild<QLineEdit*>(QStringLiteral("txtPassword"))->setText(QLatin1String(password));
                return int(QDialog::Accepted);
            });
        site.set(QStringLiteral("Security/TimeOutMinutes"), 10);
        MainWindow& window = site.load();
        verifyAccessibleNames(window, 6);

        readThen(4, QDialog::Rejected);
        tool(window, CommandId::Options).trigger();
        readThen(4, QDialog::Rejected);
        tool(window, CommandId::ChangePassword).trigger();
        part<FolderTreeControl>(window).setCurrentNode(branch(window, DocumentType::Protocols));
        readThen(2, QDialog::Rejected);
        tool(window, CommandId::New).trigger();
        // Signing the protocol the list selected.
        QTRY_VERIFY(tool(window, CommandId::Sign).isEnabled());
        readThen(5, QDialog::Rejected);
        tool(window, CommandId::Sign).trigger();

        tool(window, CommandId::AuditTrail).trigger();
        QTRY_VERIFY(shownWindow<AuditTrailWindow>());
        verifyAccessibleNames(*shownWindow<AuditTrailWindow>(), 4);
        tool(window, CommandId::ContentsIndex).trigger();
        QTRY_VERIFY(shownWindow<HelpWindow>());
        verifyAccessibleNames(*shownWindow<HelpWindow>(), 2);
        // The time-out warning, shown when the session has been left idle for nine minutes.
        site.now += 9 * 60 * 1000;
        TimeOutWarning* warning = part<SecuritySession>(window).timeOutWarning();
        QTRY_VERIFY(warning->isVisible());
        verifyAccessibleNames(*warning, 2);

        QCOMPARE(walked.size(), 6); // every dialog above was shown, the log-in twice
    }

    // Tab goes tree, documents, preview, shortcuts, filter; each list shows where the keys are.
    void theKeysReachEveryPaneAndShowWhereTheyAre()
    {
        LoadedOrganiser site;
        writeFile(site.doc(QStringLiteral("Protocols/Elisa.apr")));
        MainWindow& window = site.load();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        FolderTreeControl& tree = part<FolderTreeControl>(window);
        tree.setCurrentNode(branch(tree, DocumentType::Protocols));
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
                heard << spokenName(QApplication::focusWidget());
            }
            return heard;
        };
        QCOMPARE(tab(7), QStringList({"File list", "Preview", "Tasks", "Tasks", "Folders", "File list filter",
                                      "Folder tree"}));
        // The tree's own Back, Forward and Up have keys.
        for (const auto& [key, type] :
             {std::pair{Qt::Key_Up, DocumentType::None}, std::pair{Qt::Key_Left, DocumentType::Protocols},
              std::pair{Qt::Key_Right, DocumentType::None}}) {
            QTest::keyClick(QApplication::focusWidget(), key, Qt::AltModifier);
            QVERIFY2(tree.currentNode() == branch(tree, type), qPrintable(QKeySequence(key).toString()));
        }
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

NEBRA_WEBENGINE_TEST_MAIN(MainWindowAccessibilityTest)
#include "MainWindowAccessibilityTest.moc"
