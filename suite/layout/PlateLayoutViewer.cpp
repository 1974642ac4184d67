#include "PlateLayoutViewer.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStaticText>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace nebra {

namespace {
constexpr double Margin = 8;
// Below this cell size (pixels) the labels would be unreadable and are left out.
constexpr double LabelCell = 24;
// Below this the row and column headers are left out.
constexpr double HeaderCell = 7;

QFont pixelFont(QFont font, double pixels, bool bold = false)
{
    font.setPixelSize(std::max(1, int(pixels)));
    font.setBold(bold);
    return font;
}

QColor labelColour(WellRole role)
{
    return role == WellRole::Standard || role == WellRole::Control ? QColor(Qt::white)
                                                                   : QColor(0x1d, 0x27, 0x33);
}
} // namespace

PlateLayoutViewer::PlateLayoutViewer(QWidget* parent) : QWidget(parent)
{
    setAccessibleName(QStringLiteral("Plate layout viewer"));
    setMinimumSize(120, 90);
}

void PlateLayoutViewer::setBkColour(const QColor& colour)
{
    m_bkColour = colour;
    update();
}

bool PlateLayoutViewer::LoadFile(const QString& path)
{
    QString error;
    std::optional<PlateLayout> layout = PlateLayout::Load(path, error);
    if (!layout) {
        showError(error);
        return false;
    }
    setPlateLayout(*layout);
    return true;
}

void PlateLayoutViewer::setPlateLayout(const PlateLayout& layout)
{
    m_layout = layout;
    m_labels.clear();
    m_title = {};
    m_error.clear();
    m_message.clear();
    describe();
    update();
}

void PlateLayoutViewer::showError(const QString& reason)
{
    m_layout.reset();
    m_error = reason.isEmpty() ? QStringLiteral("The layout cannot be read.") : reason;
    m_message.clear();
    describe();
    update();
}

void PlateLayoutViewer::showMessage(const QString& text)
{
    m_layout.reset();
    m_error.clear();
    m_message = text;
    setAccessibleDescription(text);
    update();
}

void PlateLayoutViewer::clear()
{
    m_layout.reset();
    m_error.clear();
    m_message.clear();
    describe();
    update();
}

void PlateLayoutViewer::describe()
{
    if (m_layout)
        setAccessibleDescription(QStringLiteral("%1: %2 wells, %3 rows by %4 columns")
                                     .arg(m_layout->name(), QString::number(m_layout->wellCount()),
                                          QString::number(m_layout->rows()),
                                          QString::number(m_layout->columns())));
    else
        setAccessibleDescription(m_error.isEmpty() ? QString()
                                                   : unreadableTitle() + QStringLiteral(": ") + m_error);
}

QColor PlateLayoutViewer::roleColour(WellRole role)
{
    switch (role) {
    case WellRole::Blank:
        return {0xc9, 0xcf, 0xd6};
    case WellRole::Standard:
        return {0x2f, 0x6f, 0xb5};
    case WellRole::Control:
        return {0xd9, 0x6c, 0x1e};
    case WellRole::Sample:
        return {0x7c, 0xc4, 0x6a};
    case WellRole::Empty:
        break;
    }
    return Qt::white;
}

const QString& PlateLayoutViewer::elidedTitle(const QFont& font, double width) const
{
    if (width != m_title.width || font != m_title.font) {
        m_title.text = QFontMetricsF(font).elidedText(m_layout->name(), Qt::ElideRight, width);
        m_title.width = width;
        m_title.font = font;
    }
    return m_title.text;
}

PlateLayoutViewer::Geometry PlateLayoutViewer::geometry() const
{
    Geometry g;
    const QFontMetricsF metrics(font());
    const double line = metrics.height();
    g.title = QRectF(Margin, Margin, width() - 2 * Margin, line + 4);
    g.legend = QRectF(Margin, height() - Margin - line - 4, width() - 2 * Margin, line + 4);
    // One cell's room for the row names on the left and the column numbers on top.
    const double availableWidth = width() - 2 * Margin;
    const double availableHeight = g.legend.top() - g.title.bottom() - 2 * Margin;
    g.cell = std::max(
        0.0, std::min(availableWidth / (m_layout->columns() + 1), availableHeight / (m_layout->rows() + 1)));
    const QSizeF plateSize(g.cell * m_layout->columns(), g.cell * m_layout->rows());
    const double left = Margin + g.cell + (availableWidth - g.cell - plateSize.width()) / 2;
    g.plate = QRectF(QPointF(left, g.title.bottom() + Margin + g.cell), plateSize);
    return g;
}

void PlateLayoutViewer::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), m_bkColour);
    if (!m_layout) {
        if (!m_error.isEmpty())
            drawError(painter);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(QRectF(rect()).adjusted(Margin * 2, Margin * 2, -Margin * 2, -Margin * 2),
                         Qt::AlignCenter | Qt::TextWordWrap, m_message);
        return;
    }
    const Geometry g = geometry();
    painter.setPen(palette().color(QPalette::WindowText));
    painter.setFont(pixelFont(font(), QFontMetricsF(font()).ascent(), true));
    painter.drawText(g.title, Qt::AlignLeft | Qt::AlignVCenter, elidedTitle(painter.font(), g.title.width()));
    if (g.cell < 1)
        return;
    drawPlate(painter, g);
    if (g.cell >= HeaderCell)
        drawHeaders(painter, g);
    if (g.cell >= LabelCell)
        drawLabels(painter, g);
    drawLegend(painter, g);
}

void PlateLayoutViewer::drawPlate(QPainter& painter, const Geometry& g) const
{
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(QPen(QColor(0x9a, 0xa5, 0xb1), 1));
    painter.setBrush(QColor(0xf4, 0xf6, 0xf8));
    const double pad = g.cell * 0.2;
    painter.drawRoundedRect(g.plate.adjusted(-pad, -pad, pad, pad), pad, pad);
    painter.setRenderHint(QPainter::Antialiasing, false);
    // Each role's well is drawn once and copied: far cheaper than a
    // smoothed circle per well on a 1536-well plate.
    const double diameter = g.cell * 0.84;
    const double inset = (g.cell - diameter) / 2 - 1;
    const qreal ratio = painter.device()->devicePixelRatioF();
    std::array<QImage, PlateLayout::RoleCount> sprites;
    for (int i = 0; i < PlateLayout::RoleCount; ++i)
        sprites[i] = wellSprite(roleColour(static_cast<WellRole>(i)), diameter, g.cell < 10 ? 0.5 : 1, ratio);
    for (int r = 0; r < m_layout->rows(); ++r)
        for (int c = 0; c < m_layout->columns(); ++c)
            painter.drawImage(
                QPointF(g.plate.left() + c * g.cell + inset, g.plate.top() + r * g.cell + inset),
                sprites[static_cast<int>(m_layout->well(r, c).role)]);
}

QImage PlateLayoutViewer::wellSprite(const QColor& fill, double diameter, double outlineWidth, qreal ratio)
{
    const int side = int(std::ceil(diameter)) + 2;
    QImage image(QSize(side, side) * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(QPen(QColor(0x6b, 0x77, 0x85), outlineWidth));
    painter.setBrush(fill);
    painter.drawEllipse(QRectF(1, 1, diameter, diameter));
    return image;
}

void PlateLayoutViewer::drawHeaders(QPainter& painter, const Geometry& g) const
{
    painter.setFont(pixelFont(font(), std::min(g.cell * 0.5, 13.0)));
    painter.setPen(palette().color(QPalette::WindowText));
    for (int c = 0; c < m_layout->columns(); ++c)
        painter.drawText(QRectF(g.plate.left() + c * g.cell, g.plate.top() - g.cell, g.cell, g.cell * 0.8),
                         Qt::AlignHCenter | Qt::AlignBottom, QString::number(c + 1));
    for (int r = 0; r < m_layout->rows(); ++r)
        painter.drawText(QRectF(g.plate.left() - g.cell, g.plate.top() + r * g.cell, g.cell * 0.8, g.cell),
                         Qt::AlignRight | Qt::AlignVCenter, PlateLayout::rowName(r));
}

void PlateLayoutViewer::drawLabels(QPainter& painter, const Geometry& g) const
{
    const QFont labelFont = pixelFont(font(), g.cell * 0.3);
    painter.setFont(labelFont);
    // Laid out once per layout and size; repaints only place them.
    if (m_labelCell != g.cell || m_labels.size() != m_layout->wellCount()) {
        const QFontMetricsF metrics(labelFont);
        m_labels.clear();
        for (int r = 0; r < m_layout->rows(); ++r) {
            for (int c = 0; c < m_layout->columns(); ++c) {
                QStaticText text(
                    metrics.elidedText(m_layout->well(r, c).label, Qt::ElideRight, g.cell * 0.8));
                text.setTextFormat(Qt::PlainText);
                text.prepare(QTransform(), labelFont);
                m_labels.append(text);
            }
        }
        m_labelCell = g.cell;
    }
    for (int r = 0; r < m_layout->rows(); ++r) {
        for (int c = 0; c < m_layout->columns(); ++c) {
            const QStaticText& text = m_labels[r * m_layout->columns() + c];
            if (text.text().isEmpty())
                continue;
            painter.setPen(labelColour(m_layout->well(r, c).role));
            const QSizeF size = text.size();
            painter.drawStaticText(QPointF(g.plate.left() + c * g.cell + (g.cell - size.width()) / 2,
                                           g.plate.top() + r * g.cell + (g.cell - size.height()) / 2),
                                   text);
        }
    }
}

void PlateLayoutViewer::drawLegend(QPainter& painter, const Geometry& g) const
{
    const std::array<int, PlateLayout::RoleCount> counts = m_layout->roleCounts();
    painter.setFont(font());
    const QFontMetricsF metrics(font());
    const double swatch = metrics.ascent();
    double x = g.legend.left();
    painter.setRenderHint(QPainter::Antialiasing, true);
    for (WellRole role :
         {WellRole::Sample, WellRole::Standard, WellRole::Control, WellRole::Blank, WellRole::Empty}) {
        QString text = PlateLayout::roleName(role);
        text[0] = text[0].toUpper();
        text += QStringLiteral(" (%1)").arg(counts[static_cast<int>(role)]);
        painter.setPen(QColor(0x6b, 0x77, 0x85));
        painter.setBrush(roleColour(role));
        painter.drawEllipse(QRectF(x, g.legend.center().y() - swatch / 2, swatch, swatch));
        painter.setPen(palette().color(QPalette::WindowText));
        const double textWidth = metrics.horizontalAdvance(text);
        painter.drawText(QRectF(x + swatch + 4, g.legend.top(), textWidth + 1, g.legend.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, text);
        x += swatch + 4 + textWidth + 14;
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void PlateLayoutViewer::drawError(QPainter& painter) const
{
    const QRectF area = QRectF(rect()).adjusted(Margin * 2, Margin * 2, -Margin * 2, -Margin * 2);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.setFont(pixelFont(font(), QFontMetricsF(font()).ascent() * 1.3, true));
    const double titleHeight = QFontMetricsF(painter.font()).height() * 1.6;
    painter.drawText(QRectF(area.left(), area.center().y() - titleHeight, area.width(), titleHeight),
                     Qt::AlignHCenter | Qt::AlignBottom, unreadableTitle());
    painter.setFont(font());
    painter.drawText(QRectF(area.left(), area.center().y() + 4, area.width(), area.height() / 2 - 4),
                     Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_error);
}

QString PlateLayoutViewer::wellAt(const QPoint& point) const
{
    if (!m_layout)
        return {};
    const Geometry g = geometry();
    if (g.cell < 1 || !g.plate.contains(point))
        return {};
    const int column = std::min(m_layout->columns() - 1, int((point.x() - g.plate.left()) / g.cell));
    const int row = std::min(m_layout->rows() - 1, int((point.y() - g.plate.top()) / g.cell));
    return PlateLayout::wellName(row, column);
}

bool PlateLayoutViewer::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        int row = 0;
        int column = 0;
        const QString name = wellAt(help->pos());
        if (!name.isEmpty() && PlateLayout::parseWellName(name, row, column)) {
            const Well& well = m_layout->well(row, column);
            QToolTip::showText(
                help->globalPos(),
                QStringLiteral("%1: %2 %3").arg(name, PlateLayout::roleName(well.role), well.label).trimmed(),
                this);
        } else {
            QToolTip::hideText();
        }
        return true;
    }
    return QWidget::event(event);
}

} // namespace nebra
