#pragma once

// The least a layout preview has to do, for the benchmarks' baselines: read
// and parse the layout, then paint its wells (one smoothed circle per role,
// copied to every well) and each well's label (elided to the cell) into an
// image of the viewer's size, with nothing kept from one drawing to the next.

#include "PlateLayout.h"
#include "PlateLayoutViewer.h"

#include <QFile>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <array>
#include <optional>

namespace nebra::bench {

inline void bareLayoutDraw(const PlateLayout& layout, QImage& image, const QFont& font)
{
    constexpr double Margin = 8;
    QPainter painter(&image);
    painter.fillRect(image.rect(), Qt::white);
    const double line = QFontMetricsF(font).height();
    const double width = image.width() - 2 * Margin;
    const double height = image.height() - 4 * Margin - 2 * (line + 4);
    const double cell = std::min(width / (layout.columns() + 1), height / (layout.rows() + 1));
    const double left = Margin + cell + (width - cell - cell * layout.columns()) / 2;
    const double top = 2 * Margin + line + 4 + cell;
    const double diameter = cell * 0.84;
    std::array<QImage, PlateLayout::RoleCount> sprites;
    for (int i = 0; i < PlateLayout::RoleCount; ++i) {
        const int side = int(std::ceil(diameter)) + 2;
        sprites[i] = QImage(side, side, QImage::Format_ARGB32_Premultiplied);
        sprites[i].fill(Qt::transparent);
        QPainter well(&sprites[i]);
        well.setRenderHint(QPainter::Antialiasing);
        well.setPen(QColor(0x6b, 0x77, 0x85));
        well.setBrush(PlateLayoutViewer::roleColour(static_cast<WellRole>(i)));
        well.drawEllipse(QRectF(1, 1, diameter, diameter));
    }
    const double inset = (cell - diameter) / 2 - 1;
    for (int r = 0; r < layout.rows(); ++r)
        for (int c = 0; c < layout.columns(); ++c)
            painter.drawImage(QPointF(left + c * cell + inset, top + r * cell + inset),
                              sprites[static_cast<int>(layout.well(r, c).role)]);
    if (cell < 24)
        return; // too small for labels, as in the viewer
    QFont labelFont = font;
    labelFont.setPixelSize(std::max(1, int(cell * 0.3)));
    painter.setFont(labelFont);
    const QFontMetricsF metrics(labelFont);
    for (int r = 0; r < layout.rows(); ++r)
        for (int c = 0; c < layout.columns(); ++c) {
            const QString text = metrics.elidedText(layout.well(r, c).label, Qt::ElideRight, cell * 0.8);
            if (text.isEmpty())
                continue;
            painter.setPen(Qt::black);
            painter.drawText(QRectF(left + c * cell, top + r * cell, cell, cell), Qt::AlignCenter, text);
        }
}

// Reads, parses and draws; false when the file is no layout.
inline bool bareLayoutPreview(const QString& path, QImage& image, const QFont& font)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QString error;
    const std::optional<PlateLayout> layout = PlateLayout::Parse(file.readAll(), error);
    if (!layout)
        return false;
    bareLayoutDraw(*layout, image, font);
    return true;
}

} // namespace nebra::bench
