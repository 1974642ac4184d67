#include "PlateLayoutViewer.h"

#include <QPainter>

namespace nebra {

PlateLayoutViewer::PlateLayoutViewer(QWidget* parent) : QWidget(parent)
{
    setAccessibleName(QStringLiteral("Plate layout viewer"));
}

void PlateLayoutViewer::setBkColour(const QColor& colour)
{
    m_bkColour = colour;
    update();
}

void PlateLayoutViewer::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), m_bkColour);
}

} // namespace nebra
