#include "LockPicture.h"

#include <QPainter>
#include <QPainterPath>

namespace nebra {

QPixmap lockPicture(int size)
{
    QPixmap picture(size, size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal unit = size / 16.0;

    // The shackle: an arch over the body.
    QPen shackle(QColor(0x60, 0x60, 0x60), 1.6 * unit);
    painter.setPen(shackle);
    painter.setBrush(Qt::NoBrush);
    painter.drawArc(QRectF(4.5 * unit, 1.5 * unit, 7 * unit, 8 * unit), 0, 180 * 16);
    painter.drawLine(QPointF(4.5 * unit, 5.5 * unit), QPointF(4.5 * unit, 7.5 * unit));
    painter.drawLine(QPointF(11.5 * unit, 5.5 * unit), QPointF(11.5 * unit, 7.5 * unit));

    // The body, with a keyhole.
    painter.setPen(QPen(QColor(0x80, 0x60, 0x10), 0.8 * unit));
    painter.setBrush(QColor(0xe8, 0xb8, 0x30));
    painter.drawRoundedRect(QRectF(2.5 * unit, 7 * unit, 11 * unit, 8 * unit), unit, unit);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x40, 0x30, 0x10));
    painter.drawEllipse(QPointF(8 * unit, 10.2 * unit), 1.2 * unit, 1.2 * unit);
    painter.drawRect(QRectF(7.4 * unit, 10.5 * unit, 1.2 * unit, 2.8 * unit));
    return picture;
}

} // namespace nebra
