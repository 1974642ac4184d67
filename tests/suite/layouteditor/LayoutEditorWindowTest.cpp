#include "LayoutEditorWindow.h"
#include "Accessibility.h"
#include "DialogScript.h"
#include "EditorPanel.h"
#include "LayoutCanvas.h"
#include "LayoutDocument.h"
#include "MessageRecorder.h"
#include "WellSelection.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

using namespace nebra;

namespace {

// The editor's window on a new 96-well layout, shown, the canvas focused.
struct Editor
{
    LayoutDocument document;
    LayoutEditorWindow window{(document.newLayout(8, 12), document)}; // the layout made first

    Editor()
    {
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.activateWindow();
        canvas()->setFocus();
    }

    LayoutCanvas* canvas() const { return window.canvas(); }
    WellSelection& selection() const { return window.selection(); }
    QString selectedWells() const
    {
        QStringList names;
        for (int index : selection().indices())
            names << PlateLayout::wellName(index / selection().columns(), index % selection().columns());
        return names.join(' ');
    }
    void clickButton(const QString& name) const
    {
        for (QPushButton* button : window.findChildren<QPushButton*>())
            if (button->accessibleName() == name)
                return QTest::mouseClick(button, Qt::LeftButton);
        QFAIL(qPrintable("no button " + name));
    }
};

} // namespace

class LayoutEditorWindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selectsWithTheMouseEditsFromTheKeyboardCopiesAndPastesAndNamesEveryControl()
    {
        Editor o;
        QTest::mouseClick(o.canvas(), Qt::LeftButton, {}, o.canvas()->wellCentre(1, 1));
        QCOMPARE(o.selectedWells(), QStringLiteral("B2"));
        QTest::mouseClick(o.canvas(), Qt::LeftButton, Qt::ControlModifier, o.canvas()->wellCentre(7, 11));
        QCOMPARE(o.selectedWells(), QStringLiteral("B2 H12"));
        QTest::mousePress(o.canvas(), Qt::LeftButton, {}, o.canvas()->wellCentre(0, 0));
        QTest::mouseMove(o.canvas(), o.canvas()->wellCentre(1, 2));
        QTest::mouseRelease(o.canvas(), Qt::LeftButton, {}, o.canvas()->wellCentre(1, 2));
        QCOMPARE(o.selectedWells(), QStringLiteral("A1 A2 A3 B1 B2 B3"));
        QTest::mouseClick(o.canvas(), Qt::LeftButton, {}, o.canvas()->rowHeaderCentre(6));
        QCOMPARE(o.selection().count(), 12);
        QVERIFY(o.selection().isSelected(6, 11));
        QTest::mouseClick(o.canvas(), Qt::LeftButton, Qt::ControlModifier, o.canvas()->columnHeaderCentre(0));
        QCOMPARE(o.selection().count(), 12 + 7);
        // Edits from the keyboard, copies and pastes.
        o.selection().press(0, 0, WellSelection::Extend::Replace);
        QTest::keyClick(o.canvas(), Qt::Key_Right);
        QTest::keyClick(o.canvas(), Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(o.selectedWells(), QStringLiteral("A2 B2"));
        auto* role = o.window.panel()->roleBox();
        role->setCurrentIndex(role->findText("Control"));
        o.clickButton("Assign role");
        QCOMPARE(o.document.layout().well(1, 1).role, WellRole::Control);
        QVERIFY(o.window.isWindowModified() && o.window.windowTitle().startsWith("Untitled[*]"));
        // Typing a label and pressing Return labels the selection.
        o.window.panel()->labelEdit()->setFocus();
        QTest::keyClicks(o.window.panel()->labelEdit(), "PC");
        QTest::keyClick(o.window.panel()->labelEdit(), Qt::Key_Return);
        QCOMPARE(o.document.layout().well(0, 1).label, QStringLiteral("PC"));
        o.clickButton("Fill series");
        QCOMPARE(o.canvas()->accessibleDescription(),
                 QStringLiteral("Well B2: standard S2, concentration 50; 2 wells selected"));
        o.canvas()->setFocus();
        QTest::keyClick(&o.window, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(o.selection().count(), 96);
        QTest::keyClick(&o.window, Qt::Key_4, Qt::ControlModifier);
        QCOMPARE(o.document.layout().roleCounts()[int(WellRole::Blank)], 96);
        QTest::keyClick(&o.window, Qt::Key_Delete);
        QCOMPARE(o.document.layout().roleCounts()[int(WellRole::Empty)], 96);
        for (int step = 0; step < 5; ++step)
            QTest::keyClick(&o.window, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(o.document.layout().well(1, 1).role, WellRole::Empty);
        QVERIFY(!o.window.isWindowModified());
        // Copy and paste.
        o.document.assignRole({0, 1}, WellRole::Blank);
        o.selection().selectRect(QRect(0, 0, 2, 1));
        o.window.action("Copy")->trigger();
        o.selection().press(5, 10, WellSelection::Extend::Replace);
        o.window.action("Paste")->trigger();
        QCOMPARE(o.document.layout().well(5, 11).role, WellRole::Blank);
        QCOMPARE(o.selectedWells(), QStringLiteral("F11 F12"));
        // A block that does not fit is refused with LayoutDocument's reason, in a message.
        test::MessageRecorder messages;
        o.selection().press(5, 11, WellSelection::Extend::Replace);
        o.window.action("Paste")->trigger();
        QCOMPARE(messages.count(), 1);
        test::verifyAccessibleNames(o.window, 15, {o.canvas()});
    }

    // Cancel keeps the window; No closes it unsaved; Yes saves through the save dialog.
    void closingWithChangesAsks()
    {
        // clang-format off
        for (const auto& [answer, closed, saved] : {std::tuple{int(MessageButton::Cancel), false, false}, {int(MessageButton::No), true, false}, {int(MessageButton::Yes), true, true}}) {
            // clang-format on
            Editor o;
            QTemporaryDir dir;
            const QString path = dir.filePath("Drawn.mlo");
            test::DialogScript dialogs;
            dialogs.chooseFile(path, true);
            test::MessageRecorder messages;
            messages.answer(answer);
            o.document.rename("Drawn");
            QCOMPARE(o.window.close(), closed);
            QCOMPARE(dialogs.shown().size(), int(saved)); // the save dialog, only when saving
            QCOMPARE(messages.count(), 1);
            QCOMPARE(messages.last().text,
                     "The layout \"Untitled\" has unsaved changes.\nDo you want to save them?");
            QCOMPARE(messages.last().buttons, MessageButton::Yes | MessageButton::No | MessageButton::Cancel);
            QCOMPARE(QFileInfo::exists(path), saved);
            if (saved)
                QCOMPARE(o.window.windowTitle(), QStringLiteral("Drawn.mlo[*] - Layout Editor"));
        }
    }
};

QTEST_MAIN(LayoutEditorWindowTest)
#include "LayoutEditorWindowTest.moc"
