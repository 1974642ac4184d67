#pragma once

#include "PlateLayoutViewer.h"

namespace nebra {

class LayoutDocument;
class WellSelection;

// The editor's plate: the viewer's drawing of the layout, with the selected
// wells shaded and the keyboard cursor framed over it. Wells are selected
// with the mouse (click, drag a rectangle, click a row or column header, Ctrl
// to add, Shift to stretch from the last well) and the keyboard (arrows,
// Shift+arrows). The zoom enlarges the drawing inside a scroll area.
class LayoutCanvas : public PlateLayoutViewer
{
    Q_OBJECT
public:
    LayoutCanvas(LayoutDocument& document, WellSelection& selection, QWidget* parent = nullptr);

    void setZoom(double zoom);
    double zoom() const { return m_zoom; }

    // Where a point of the widget lies: a well, a row header (column -1), a
    // column header (row -1), or nothing (false).
    bool hitTest(const QPoint& point, int& row, int& column) const;
    // The centre of a well, for tests and tooltips.
    QPoint wellCentre(int row, int column) const;
    QPoint rowHeaderCentre(int row) const;
    QPoint columnHeaderCentre(int column) const;
    // "B3: standard S2, concentration 50", as the tool tip and screen readers give it.
    QString wellText(int row, int column) const;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void drawSelection(QPainter& painter, const Geometry& g) const;
    void describeSelection();

    LayoutDocument& m_document;
    WellSelection& m_selection;
    double m_zoom = 1;
    bool m_dragging = false;
};

} // namespace nebra
