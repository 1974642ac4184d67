#include "LayoutCanvas.h"

#include "LayoutDocument.h"
#include "PlateLayoutWriter.h"
#include "WellSelection.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <cmath>

namespace nebra {

LayoutCanvas::LayoutCanvas(LayoutDocument& document, WellSelection& selection, QWidget* parent)
    : PlateLayoutViewer(parent), m_document(document), m_selection(selection)
{
    setAccessibleName(QStringLiteral("Plate wells"));
    setFocusPolicy(Qt::StrongFocus);
    setPlateLayout(document.layout());
    connect(&document, &LayoutDocument::layoutChanged, this, [this] {
        setPlateLayout(m_document.layout());
        describeSelection();
    });
    connect(&selection, &WellSelection::changed, this, [this] {
        describeSelection();
        update();
    });
    describeSelection();
}

void LayoutCanvas::setZoom(double zoom)
{
    m_zoom = std::clamp(zoom, 1.0, 8.0);
    setMinimumSize(QSize(480, 340) * m_zoom);
    updateGeometry();
}

QString LayoutCanvas::wellText(int row, int column) const
{
    const Well& well = m_document.layout().well(row, column);
    QString text = QStringLiteral("%1: %2 %3")
                       .arg(PlateLayout::wellName(row, column), PlateLayout::roleName(well.role), well.label);
    if (well.concentration)
        text = text.trimmed() + QStringLiteral(", concentration %1")
                                    .arg(PlateLayoutWriter::formatConcentration(*well.concentration));
    return text.trimmed();
}

bool LayoutCanvas::event(QEvent* event)
{
    // The viewer's tool tip, with the concentration that only the editor shows.
    if (event->type() != QEvent::ToolTip)
        return PlateLayoutViewer::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    int row = 0;
    int column = 0;
    if (hitTest(help->pos(), row, column) && row >= 0 && column >= 0)
        QToolTip::showText(help->globalPos(), wellText(row, column), this);
    else
        QToolTip::hideText();
    return true;
}

void LayoutCanvas::describeSelection()
{
    // Screen readers hear where the cursor is and how much is selected.
    const int row = m_selection.cursorRow();
    const int column = m_selection.cursorColumn();
    if (row >= m_document.layout().rows() || column >= m_document.layout().columns())
        return;
    setAccessibleDescription(
        QStringLiteral("Well %1; %2 wells selected").arg(wellText(row, column)).arg(m_selection.count()));
}

bool LayoutCanvas::hitTest(const QPoint& point, int& row, int& column) const
{
    if (!hasPlateLayout())
        return false;
    const Geometry g = geometry();
    if (g.cell < 1)
        return false;
    const QRectF headers = g.plate.adjusted(-g.cell, -g.cell, 0, 0);
    if (!headers.contains(point))
        return false;
    row = int(std::floor((point.y() - g.plate.top()) / g.cell));
    column = int(std::floor((point.x() - g.plate.left()) / g.cell));
    row = std::min(row, plateLayout()->rows() - 1);
    column = std::min(column, plateLayout()->columns() - 1);
    return !(row < 0 && column < 0);
}

QPoint LayoutCanvas::wellCentre(int row, int column) const
{
    const Geometry g = geometry();
    return QPointF(g.plate.left() + (column + 0.5) * g.cell, g.plate.top() + (row + 0.5) * g.cell).toPoint();
}

QPoint LayoutCanvas::rowHeaderCentre(int row) const
{
    return wellCentre(row, -1);
}

QPoint LayoutCanvas::columnHeaderCentre(int column) const
{
    return wellCentre(-1, column);
}

void LayoutCanvas::paintEvent(QPaintEvent* event)
{
    PlateLayoutViewer::paintEvent(event);
    if (!hasPlateLayout() || m_selection.rows() != plateLayout()->rows() ||
        m_selection.columns() != plateLayout()->columns())
        return;
    const Geometry g = geometry();
    if (g.cell < 1)
        return;
    QPainter painter(this);
    drawSelection(painter, g);
}

void LayoutCanvas::drawSelection(QPainter& painter, const Geometry& g) const
{
    // One rectangle per run of selected wells in a row: a full plate is 32 rectangles, not 1,536.
    const QColor shade = palette().color(QPalette::Highlight);
    QColor fill = shade;
    fill.setAlpha(90);
    for (int r = 0; r < m_selection.rows(); ++r) {
        for (int c = 0; c < m_selection.columns();) {
            if (!m_selection.isSelected(r, c)) {
                ++c;
                continue;
            }
            const int start = c;
            while (c < m_selection.columns() && m_selection.isSelected(r, c))
                ++c;
            painter.fillRect(QRectF(g.plate.left() + start * g.cell, g.plate.top() + r * g.cell,
                                    (c - start) * g.cell, g.cell),
                             fill);
        }
    }
    painter.setPen(
        QPen(shade.darker(140), std::max(1.0, g.cell / 12), hasFocus() ? Qt::SolidLine : Qt::DashLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(g.plate.left() + m_selection.cursorColumn() * g.cell,
                            g.plate.top() + m_selection.cursorRow() * g.cell, g.cell, g.cell)
                         .adjusted(1, 1, -1, -1));
}

void LayoutCanvas::mousePressEvent(QMouseEvent* event)
{
    int row = 0;
    int column = 0;
    if (event->button() != Qt::LeftButton || !hitTest(event->position().toPoint(), row, column))
        return PlateLayoutViewer::mousePressEvent(event);
    setFocus(Qt::MouseFocusReason);
    const auto extend = event->modifiers().testFlag(Qt::ControlModifier) ? WellSelection::Extend::Add
                                                                         : WellSelection::Extend::Replace;
    if (row < 0)
        m_selection.selectColumn(column, extend);
    else if (column < 0)
        m_selection.selectRow(row, extend);
    else if (event->modifiers().testFlag(Qt::ShiftModifier))
        m_selection.pressExtending(row, column);
    else
        m_selection.press(row, column, extend);
    m_dragging = row >= 0 && column >= 0;
}

void LayoutCanvas::mouseMoveEvent(QMouseEvent* event)
{
    int row = 0;
    int column = 0;
    if (!m_dragging || !(event->buttons() & Qt::LeftButton) ||
        !hitTest(event->position().toPoint(), row, column))
        return;
    const int previousRow = m_selection.cursorRow();
    const int previousColumn = m_selection.cursorColumn();
    if (std::max(row, 0) != previousRow || std::max(column, 0) != previousColumn)
        m_selection.dragTo(std::max(row, 0), std::max(column, 0));
}

void LayoutCanvas::mouseReleaseEvent(QMouseEvent* event)
{
    m_dragging = false;
    PlateLayoutViewer::mouseReleaseEvent(event);
}

void LayoutCanvas::keyPressEvent(QKeyEvent* event)
{
    const bool extend = event->modifiers().testFlag(Qt::ShiftModifier);
    switch (event->key()) {
    case Qt::Key_Left:
        return m_selection.moveCursor(0, -1, extend);
    case Qt::Key_Right:
        return m_selection.moveCursor(0, 1, extend);
    case Qt::Key_Up:
        return m_selection.moveCursor(-1, 0, extend);
    case Qt::Key_Down:
        return m_selection.moveCursor(1, 0, extend);
    case Qt::Key_Home:
        return m_selection.moveCursor(0, -m_selection.columns(), extend);
    case Qt::Key_End:
        return m_selection.moveCursor(0, m_selection.columns(), extend);
    default:
        PlateLayoutViewer::keyPressEvent(event);
    }
}

} // namespace nebra
