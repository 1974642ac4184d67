#include "BrowserControl.h"
#include "FileListControl.h"
#include "FolderTreeControl.h"
#include "LoadedOrganiser.h"
#include "MainWindow.h"
#include "ShortcutsBar.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QApplication>
#include <QTest>

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

// The main window from the keyboard: what a screen reader says at each stop
// (every dialog's names are checked with its fit, in MainWindowSmallScreenTest).
class MainWindowAccessibilityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
