#include "WellSelection.h"

#include <algorithm>

namespace nebra {

WellSelection::WellSelection(int rows, int columns, QObject* parent) : QObject(parent)
{
    reset(rows, columns);
}

void WellSelection::reset(int rows, int columns)
{
    m_rows = rows;
    m_columns = columns;
    m_selected = QList<bool>(rows * columns, false);
    m_base = m_selected;
    m_cursorRow = m_cursorColumn = m_anchorRow = m_anchorColumn = 0;
    if (!m_selected.isEmpty())
        m_selected[0] = true;
    Q_EMIT changed();
}

QList<int> WellSelection::indices() const
{
    QList<int> result;
    for (int i = 0; i < m_selected.size(); ++i)
        if (m_selected[i])
            result.append(i);
    return result;
}

int WellSelection::count() const
{
    return int(std::count(m_selected.cbegin(), m_selected.cend(), true));
}

QRect WellSelection::bounds() const
{
    QRect result;
    for (int i = 0; i < m_selected.size(); ++i)
        if (m_selected[i])
            result |= QRect(i % m_columns, i / m_columns, 1, 1);
    return result;
}

void WellSelection::setCursor(int row, int column)
{
    m_cursorRow = std::clamp(row, 0, m_rows - 1);
    m_cursorColumn = std::clamp(column, 0, m_columns - 1);
}

QRect WellSelection::anchorRect(int row, int column) const
{
    return QRect(QPoint(std::min(m_anchorColumn, column), std::min(m_anchorRow, row)),
                 QPoint(std::max(m_anchorColumn, column), std::max(m_anchorRow, row)));
}

void WellSelection::setRect(const QRect& wells, bool keepBase)
{
    m_selected = keepBase ? m_base : QList<bool>(m_rows * m_columns, false);
    const QRect clipped = wells & QRect(0, 0, m_columns, m_rows);
    for (int r = clipped.top(); r <= clipped.bottom(); ++r)
        std::fill_n(m_selected.begin() + r * m_columns + clipped.left(), clipped.width(), true);
    Q_EMIT changed();
}

void WellSelection::press(int row, int column, Extend extend)
{
    setCursor(row, column);
    m_anchorRow = m_cursorRow;
    m_anchorColumn = m_cursorColumn;
    const int index = m_cursorRow * m_columns + m_cursorColumn;
    if (extend == Extend::Add) {
        // Ctrl+click toggles the well; a drag that follows adds its rectangle.
        m_selected[index] = !m_selected[index];
        m_base = m_selected;
        if (count() == 0)
            m_selected[index] = true;
        Q_EMIT changed();
        return;
    }
    m_base = QList<bool>(m_rows * m_columns, false);
    setRect(QRect(m_cursorColumn, m_cursorRow, 1, 1), false);
}

void WellSelection::pressExtending(int row, int column)
{
    setCursor(row, column);
    setRect(anchorRect(m_cursorRow, m_cursorColumn), false);
}

void WellSelection::dragTo(int row, int column)
{
    setCursor(row, column);
    setRect(anchorRect(m_cursorRow, m_cursorColumn), true);
}

void WellSelection::selectRow(int row, Extend extend)
{
    m_base = extend == Extend::Add ? m_selected : QList<bool>(m_rows * m_columns, false);
    setCursor(row, 0);
    m_anchorRow = m_cursorRow;
    m_anchorColumn = 0;
    setRect(QRect(0, m_cursorRow, m_columns, 1), true);
}

void WellSelection::selectColumn(int column, Extend extend)
{
    m_base = extend == Extend::Add ? m_selected : QList<bool>(m_rows * m_columns, false);
    setCursor(0, column);
    m_anchorRow = 0;
    m_anchorColumn = m_cursorColumn;
    setRect(QRect(m_cursorColumn, 0, 1, m_rows), true);
}

void WellSelection::selectAll()
{
    setRect(QRect(0, 0, m_columns, m_rows), false);
}

void WellSelection::selectRect(const QRect& wells)
{
    m_anchorRow = std::clamp(wells.top(), 0, m_rows - 1);
    m_anchorColumn = std::clamp(wells.left(), 0, m_columns - 1);
    setCursor(wells.bottom(), wells.right());
    setRect(wells, false);
}

void WellSelection::moveCursor(int rowStep, int columnStep, bool extend)
{
    setCursor(m_cursorRow + rowStep, m_cursorColumn + columnStep);
    if (extend) {
        setRect(anchorRect(m_cursorRow, m_cursorColumn), false);
        return;
    }
    m_anchorRow = m_cursorRow;
    m_anchorColumn = m_cursorColumn;
    setRect(QRect(m_cursorColumn, m_cursorRow, 1, 1), false);
}

} // namespace nebra
