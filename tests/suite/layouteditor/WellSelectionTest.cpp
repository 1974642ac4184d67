#include "WellSelection.h"
#include "PlateLayout.h"

#include <QtTest>

using namespace nebra;

namespace {
// Runs a script of steps separated by ";", each a verb and its well, row or column:
// "press B2", "ctrl B2", "shift B2", "drag C4", "row C", "ctrlrow C", "column 3",
// "ctrlcolumn 3", "all", "key down" / "shiftkey right" (arrows).
void run(WellSelection& selection, const QString& script)
{
    for (const QString& step : script.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QStringList words = step.simplified().split(QLatin1Char(' '));
        const QString verb = words.value(0);
        const QString what = words.value(1);
        int row = 0, column = 0;
        PlateLayout::parseWellName(what, row, column);
        const auto add = WellSelection::Extend::Add;
        const auto replace = WellSelection::Extend::Replace;
        static const QHash<QString, QPoint> arrows{
            {"up", {0, -1}}, {"down", {0, 1}}, {"left", {-1, 0}}, {"right", {1, 0}}};
        if (verb == "press" || verb == "ctrl")
            selection.press(row, column, verb == "ctrl" ? add : replace);
        else if (verb == "shift")
            selection.pressExtending(row, column);
        else if (verb == "drag")
            selection.dragTo(row, column);
        else if (verb.endsWith("row"))
            selection.selectRow(PlateLayout::parseWellName(what + "1", row, column) ? row : -1,
                                verb.startsWith("ctrl") ? add : replace);
        else if (verb.endsWith("column"))
            selection.selectColumn(what.toInt() - 1, verb.startsWith("ctrl") ? add : replace);
        else if (verb == "all")
            selection.selectAll();
        else if (verb.endsWith("key"))
            selection.moveCursor(arrows[what].y(), arrows[what].x(), verb.startsWith("shift"));
        else
            QFAIL(qPrintable("unknown step " + step));
    }
}

QString selectedNames(const WellSelection& selection)
{
    QStringList names;
    for (int index : selection.indices())
        names << PlateLayout::wellName(index / selection.columns(), index % selection.columns());
    return names.join(QLatin1Char(' '));
}
} // namespace

class WellSelectionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selectsByMouseAndKeyboard_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("cursor");
        // On a 24-well plate: rows A-D, columns 1-6.
        // clang-format off
        QTest::newRow("start") << "" << "A1" << "A1";
        QTest::newRow("click") << "press B2" << "B2" << "B2";
        QTest::newRow("click replaces") << "press B2; press C3" << "C3" << "C3";
        QTest::newRow("drag a rectangle") << "press B2; drag C4" << "B2 B3 B4 C2 C3 C4" << "C4";
        QTest::newRow("drag backwards") << "press C4; drag B3" << "B3 B4 C3 C4" << "B3";
        QTest::newRow("drag shrinks again") << "press A1; drag C3; drag A2" << "A1 A2" << "A2";
        QTest::newRow("ctrl adds") << "press A1; ctrl D6" << "A1 D6" << "D6";
        QTest::newRow("ctrl toggles off") << "press A1; ctrl B1; ctrl A1" << "B1" << "A1";
        QTest::newRow("ctrl on the only well keeps it") << "press A1; ctrl A1" << "A1" << "A1";
        QTest::newRow("ctrl drag adds a rectangle") << "press A1; ctrl C5; drag D6" << "A1 C5 C6 D5 D6" << "D6";
        QTest::newRow("shift click stretches") << "press B2; shift C3" << "B2 B3 C2 C3" << "C3";
        QTest::newRow("row header") << "press A1; row C" << "C1 C2 C3 C4 C5 C6" << "C1";
        QTest::newRow("column header") << "column 5" << "A5 B5 C5 D5" << "A5";
        QTest::newRow("ctrl adds a row") << "press A1; ctrlrow D" << "A1 D1 D2 D3 D4 D5 D6" << "D1";
        QTest::newRow("ctrl adds a column") << "column 1; ctrlcolumn 6" << "A1 A6 B1 B6 C1 C6 D1 D6" << "A6";
        QTest::newRow("select all") << "press B2; all" << "A1 A2 A3 A4 A5 A6 B1 B2 B3 B4 B5 B6 C1 C2 C3 C4 C5 C6 D1 D2 D3 D4 D5 D6" << "B2";
        QTest::newRow("arrow moves") << "press B2; key right; key down" << "C3" << "C3";
        QTest::newRow("arrow stops at the edge") << "press A1; key up; key left" << "A1" << "A1";
        QTest::newRow("shift arrows stretch") << "press B2; shiftkey right; shiftkey down" << "B2 B3 C2 C3" << "C3";
        QTest::newRow("shift arrows shrink back") << "press B2; shiftkey right; shiftkey left" << "B2" << "B2";
        QTest::newRow("arrow after a rectangle") << "press A1; drag B2; key right" << "B3" << "B3";
        QTest::newRow("shift after a header") << "row B; shiftkey down" << "B1 C1" << "C1";
        // clang-format on
    }

    void selectsByMouseAndKeyboard()
    {
        QFETCH(QString, script);
        QFETCH(QString, selected);
        QFETCH(QString, cursor);
        WellSelection selection(4, 6);
        run(selection, script);
        QCOMPARE(selectedNames(selection), selected);
        QCOMPARE(PlateLayout::wellName(selection.cursorRow(), selection.cursorColumn()), cursor);
    }

    void boundsAndResetFollowThePlate()
    {
        WellSelection selection(32, 48);
        QSignalSpy changed(&selection, &WellSelection::changed);
        run(selection, "press B3; ctrl AF48");
        QCOMPARE(selection.bounds(), QRect(QPoint(2, 1), QPoint(47, 31)));
        QCOMPARE(changed.count(), 2);
        selection.reset(2, 3);
        QCOMPARE(selectedNames(selection), QStringLiteral("A1"));
        selection.selectAll();
        QCOMPARE(selection.count(), 6);
    }
};

QTEST_GUILESS_MAIN(WellSelectionTest)
#include "WellSelectionTest.moc"
