#include "LayoutEditorWindow.h"
#include "DialogScript.h"
#include "EditorPanel.h"
#include "LayoutCanvas.h"
#include "LayoutDocument.h"
#include "MessageRecorder.h"
#include "WellSelection.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace nebra;

class LayoutEditorWindowTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<LayoutDocument> m_document;
    std::unique_ptr<LayoutEditorWindow> m_window;

    LayoutCanvas* canvas() const { return m_window->canvas(); }
    WellSelection& selection() const { return m_window->selection(); }
    QString selectedWells() const
    {
        QStringList names;
        for (int index : selection().indices())
            names << PlateLayout::wellName(index / selection().columns(), index % selection().columns());
        return names.join(' ');
    }
    void clickButton(const QString& name) const
    {
        for (QPushButton* button : m_window->findChildren<QPushButton*>())
            if (button->accessibleName() == name)
                return QTest::mouseClick(button, Qt::LeftButton);
        QFAIL(qPrintable("no button " + name));
    }

private Q_SLOTS:
    void init()
    {
        m_document = std::make_unique<LayoutDocument>();
        m_document->newLayout(8, 12);
        m_window = std::make_unique<LayoutEditorWindow>(*m_document);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        m_window->activateWindow();
        canvas()->setFocus();
    }

    void cleanup()
    {
        m_window.reset();
        m_document.reset();
    }

    void selectsWithTheMouse()
    {
        QTest::mouseClick(canvas(), Qt::LeftButton, {}, canvas()->wellCentre(1, 1));
        QCOMPARE(selectedWells(), QStringLiteral("B2"));
        QTest::mouseClick(canvas(), Qt::LeftButton, Qt::ControlModifier, canvas()->wellCentre(7, 11));
        QCOMPARE(selectedWells(), QStringLiteral("B2 H12"));
        QTest::mousePress(canvas(), Qt::LeftButton, {}, canvas()->wellCentre(0, 0));
        QTest::mouseMove(canvas(), canvas()->wellCentre(1, 2));
        QTest::mouseRelease(canvas(), Qt::LeftButton, {}, canvas()->wellCentre(1, 2));
        QCOMPARE(selectedWells(), QStringLiteral("A1 A2 A3 B1 B2 B3"));
        QTest::mouseClick(canvas(), Qt::LeftButton, {}, canvas()->rowHeaderCentre(6));
        QCOMPARE(selection().count(), 12);
        QVERIFY(selection().isSelected(6, 11));
        QTest::mouseClick(canvas(), Qt::LeftButton, Qt::ControlModifier, canvas()->columnHeaderCentre(0));
        QCOMPARE(selection().count(), 12 + 7);
    }

    void editsFromTheKeyboardAlone()
    {
        QTest::keyClick(canvas(), Qt::Key_Right);
        QTest::keyClick(canvas(), Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(selectedWells(), QStringLiteral("A2 B2"));
        auto* role = m_window->panel()->roleBox();
        role->setCurrentIndex(role->findText("Control"));
        clickButton("Assign role");
        QCOMPARE(m_document->layout().well(1, 1).role, WellRole::Control);
        QVERIFY(m_window->isWindowModified());
        QVERIFY(m_window->windowTitle().startsWith("Untitled[*]"));
        // Typing a label and pressing Return labels the selection.
        m_window->panel()->labelEdit()->setFocus();
        QTest::keyClicks(m_window->panel()->labelEdit(), "PC");
        QTest::keyClick(m_window->panel()->labelEdit(), Qt::Key_Return);
        QCOMPARE(m_document->layout().well(0, 1).label, QStringLiteral("PC"));
        clickButton("Fill series");
        QCOMPARE(canvas()->accessibleDescription(),
                 QStringLiteral("Well B2: standard S2, concentration 50; 2 wells selected"));
        canvas()->setFocus();
        QTest::keyClick(m_window.get(), Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(selection().count(), 96);
        QTest::keyClick(m_window.get(), Qt::Key_4, Qt::ControlModifier);
        QCOMPARE(m_document->layout().roleCounts()[int(WellRole::Blank)], 96);
        QTest::keyClick(m_window.get(), Qt::Key_Delete);
        QCOMPARE(m_document->layout().roleCounts()[int(WellRole::Empty)], 96);
        for (int step = 0; step < 5; ++step)
            QTest::keyClick(m_window.get(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(m_document->layout().well(1, 1).role, WellRole::Empty);
        QVERIFY(!m_window->isWindowModified());
    }

    void copiesAndPastesABlock()
    {
        m_document->assignRole({0, 1}, WellRole::Blank);
        selection().selectRect(QRect(0, 0, 2, 1));
        m_window->action("Copy")->trigger();
        selection().press(5, 10, WellSelection::Extend::Replace);
        m_window->action("Paste")->trigger();
        QCOMPARE(m_document->layout().well(5, 11).role, WellRole::Blank);
        QCOMPARE(selectedWells(), QStringLiteral("F11 F12"));
        test::MessageRecorder messages;
        selection().press(5, 11, WellSelection::Extend::Replace);
        m_window->action("Paste")->trigger();
        QCOMPARE(messages.count(), 1);
        QVERIFY(messages.last().text.contains("does not fit on the plate from well F12"));
    }

    void closingWithChangesAsks_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("closed");
        QTest::addColumn<bool>("saved");
        QTest::newRow("cancel") << int(MessageButton::Cancel) << false << false;
        QTest::newRow("discard") << int(MessageButton::No) << true << false;
        QTest::newRow("save") << int(MessageButton::Yes) << true << true;
    }

    void closingWithChangesAsks()
    {
        QFETCH(int, answer);
        QFETCH(bool, closed);
        QFETCH(bool, saved);
        QTemporaryDir dir;
        const QString path = dir.filePath("Drawn.mlo");
        test::DialogScript dialogs;
        dialogs.then([&](QDialog& dialog) {
            auto* files = qobject_cast<QFileDialog*>(&dialog);
            if (!files || files->acceptMode() != QFileDialog::AcceptSave)
                return int(QDialog::Rejected);
            files->selectFile(path);
            return int(QDialog::Accepted);
        });
        test::MessageRecorder messages;
        messages.answer(answer);
        m_document->rename("Drawn");
        QCOMPARE(m_window->close(), closed);
        QCOMPARE(dialogs.shown().size(), int(saved)); // the save dialog, only when saving
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages.last().text,
                 QStringLiteral("The layout \"Untitled\" has unsaved changes.\nDo you want to save them?"));
        QCOMPARE(messages.last().buttons, MessageButton::Yes | MessageButton::No | MessageButton::Cancel);
        QCOMPARE(QFileInfo::exists(path), saved);
        if (saved)
            QCOMPARE(m_window->windowTitle(), QStringLiteral("Drawn.mlo[*] - Layout Editor"));
    }

    void everyControlHasAnAccessibleName()
    {
        const QList<QWidget*> widgets = m_window->findChildren<QWidget*>();
        int checked = 0;
        for (QWidget* widget : widgets) {
            const bool control =
                qobject_cast<QAbstractButton*>(widget) || qobject_cast<QComboBox*>(widget) ||
                qobject_cast<QAbstractSpinBox*>(widget) || widget == canvas() ||
                (qobject_cast<QLineEdit*>(widget) && !qobject_cast<QAbstractSpinBox*>(widget->parent()) &&
                 !qobject_cast<QComboBox*>(widget->parent()));
            if (!control || !widget->isVisible() || widget->focusPolicy() == Qt::NoFocus)
                continue;
            ++checked;
            QVERIFY2(!widget->accessibleName().isEmpty(), widget->metaObject()->className());
        }
        QVERIFY(checked >= 15);
    }
};

QTEST_MAIN(LayoutEditorWindowTest)
#include "LayoutEditorWindowTest.moc"
