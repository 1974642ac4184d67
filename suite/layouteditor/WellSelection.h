#pragma once

#include <QList>
#include <QObject>
#include <QRect>

namespace nebra {

// The wells selected on a plate, with the keyboard cursor and the anchor
// that Shift and mouse drags stretch a rectangle from. Rows and columns are
// 0-based; a QRect here counts wells (x = column, y = row).
//
// A selection is never empty while the plate has wells: clearing it leaves
// the cursor's well selected, so that a command always has wells to act on.
class WellSelection : public QObject
{
    Q_OBJECT
public:
    enum class Extend
    {
        Replace, // the new wells replace the selection
        Add,     // Ctrl: added to (or, for one well, toggled in) the selection
    };

    explicit WellSelection(int rows, int columns, QObject* parent = nullptr);

    void reset(int rows, int columns);
    int rows() const { return m_rows; }
    int columns() const { return m_columns; }

    bool isSelected(int row, int column) const { return m_selected[row * m_columns + column]; }
    // Well indices (row * columns + column) in row order.
    QList<int> indices() const;
    int count() const;
    // The smallest rectangle holding every selected well.
    QRect bounds() const;
    int cursorRow() const { return m_cursorRow; }
    int cursorColumn() const { return m_cursorColumn; }

    // Mouse: a press on a well, then moves of the drag to other wells.
    void press(int row, int column, Extend extend);
    // Shift+click: the rectangle from the anchor to the well.
    void pressExtending(int row, int column);
    void dragTo(int row, int column);
    void selectRow(int row, Extend extend);
    void selectColumn(int column, Extend extend);
    void selectAll();
    void selectRect(const QRect& wells);

    // Keyboard: the arrows move the cursor; with Shift the rectangle from
    // the anchor to the cursor is selected.
    void moveCursor(int rowStep, int columnStep, bool extend);

Q_SIGNALS:
    void changed();

private:
    void setRect(const QRect& wells, bool keepBase);
    QRect anchorRect(int row, int column) const;
    void setCursor(int row, int column);

    int m_rows = 0;
    int m_columns = 0;
    QList<bool> m_selected;
    QList<bool> m_base; // the selection before a Ctrl-drag began
    int m_cursorRow = 0;
    int m_cursorColumn = 0;
    int m_anchorRow = 0;
    int m_anchorColumn = 0;
};

} // namespace nebra
