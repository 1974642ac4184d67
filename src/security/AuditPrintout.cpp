#include "AuditPrintout.h"

#include "AuditTrailModel.h"
#include "DocumentSignature.h"

#include <QFontMetricsF>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QTextOption>

#include <array>

namespace nebra {

namespace {

// Shares of the page's width, in the order of the columns.
constexpr std::array<qreal, 6> ColumnShares{0.08, 0.19, 0.11, 0.13, 0.11, 0.38};
const QStringList ColumnTitles{QStringLiteral("Sequence"),    QStringLiteral("Time"), QStringLiteral("User"),
                               QStringLiteral("Workstation"), QStringLiteral("Area"), QStringLiteral("Text")};

QTextOption wrapping()
{
    QTextOption option(Qt::AlignLeft | Qt::AlignTop);
    // A path or a long user name wraps inside its column instead of running into the next.
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    return option;
}

} // namespace

// Where the current reading has got to.
struct AuditPrintout::Pass
{
    bool draw = false;
    qint64 counted = 0; // by the counting pass, when drawing
    int page = 1;
    qreal y = 0;
    qint64 count = 0;
    qint64 first = 0;
    qint64 last = 0;
};

AuditPrintout::AuditPrintout(AuditPrintoutTitle title, AuditEntrySource entries)
    : m_title(std::move(title)), m_entries(std::move(entries))
{
}

QString AuditPrintout::localTime(const QDateTime& time)
{
    return AuditTrailModel::localTimeText(time.toUTC().toString(Qt::ISODateWithMs));
}

QStringList AuditPrintout::cellsOf(const AuditEntry& e)
{
    return {QString::number(e.sequence),
            AuditTrailModel::localTimeText(e.utc),
            e.userName,
            e.workstation,
            e.area,
            SignatureEntries::shownText(e)};
}

bool AuditPrintout::paint(QPainter& painter, QPagedPaintDevice& device, QString* error)
{
    setUpPage(painter, device);
    if (!run(painter, device, false, error))
        return false;
    const qint64 counted = m_count;
    const qint64 first = m_firstSequence;
    const qint64 last = m_lastSequence;
    const int pages = m_pages;
    if (!run(painter, device, true, error))
        return false;
    if (m_count != counted || m_firstSequence != first || m_lastSequence != last || m_pages != pages) {
        *error = QStringLiteral("The audit trail changed while it was being printed; please try again.");
        return false;
    }
    return true;
}

// Sizes follow the device's resolution, so the PDF and the printer get the same page.
void AuditPrintout::setUpPage(QPainter& painter, QPagedPaintDevice& device)
{
    m_page = QRectF(0, 0, device.width(), device.height());
    m_bodyFont = QFont(QStringLiteral("DejaVu Sans"));
    m_bodyFont.setPointSizeF(8);
    m_headFont = m_bodyFont;
    m_headFont.setBold(true);
    m_titleFont = m_headFont;
    m_titleFont.setPointSizeF(14);
    m_padding = device.logicalDpiY() / 36.0; // 0.7 mm
    painter.setFont(m_headFont);
    m_columnTitlesHeight = painter.fontMetrics().height() + 2 * m_padding;
    painter.setFont(m_bodyFont);
    m_footerHeight = painter.fontMetrics().height() + 4 * m_padding;
}

bool AuditPrintout::run(QPainter& painter, QPagedPaintDevice& device, bool draw, QString* error)
{
    Pass pass;
    pass.draw = draw;
    pass.counted = m_count;
    pass.y = drawTitleBlock(painter, draw);
    startTable(painter, pass);
    const bool read =
        m_entries([&](const AuditEntry& entry) { return place(painter, device, pass, entry); }, error);
    if (!read)
        return false;
    if (draw) {
        if (pass.count == 0)
            drawRow(painter, {{}, {}, {}, {}, {}, QStringLiteral("No entries.")}, pass.y,
                    m_columnTitlesHeight);
        drawFooter(painter, pass.page);
    }
    m_count = pass.count;
    m_pages = pass.page;
    m_firstSequence = pass.first;
    m_lastSequence = pass.last;
    return true;
}

void AuditPrintout::startTable(QPainter& painter, Pass& pass) const
{
    if (pass.draw)
        drawColumnTitles(painter, pass.y);
    pass.y += m_columnTitlesHeight;
}

bool AuditPrintout::place(QPainter& painter, QPagedPaintDevice& device, Pass& pass,
                          const AuditEntry& entry) const
{
    // Drawing never runs past what the counting laid out; one more entry is
    // enough to tell that the trail has changed.
    if (pass.draw && pass.count == pass.counted) {
        ++pass.count;
        return false;
    }
    const QStringList cells = cellsOf(entry);
    const qreal bottom = m_page.bottom() - m_footerHeight;
    // An entry taller than a page is cut at the page's foot.
    const qreal height = std::min(rowHeight(painter, cells), bottom - m_columnTitlesHeight);
    if (pass.y + height > bottom && pass.y > m_columnTitlesHeight) {
        if (pass.draw) {
            drawFooter(painter, pass.page);
            device.newPage();
        }
        ++pass.page;
        pass.y = 0;
        startTable(painter, pass);
    }
    if (pass.draw)
        drawRow(painter, cells, pass.y, height);
    pass.y += height;
    pass.first = pass.count == 0 ? entry.sequence : pass.first;
    pass.last = entry.sequence;
    ++pass.count;
    return true;
}

qreal AuditPrintout::drawTitleBlock(QPainter& painter, bool draw) const
{
    const QList<QPair<QString, QString>> lines = {
        {QStringLiteral("Site"), m_title.site},
        {QStringLiteral("Printed by"), m_title.printedBy},
        {QStringLiteral("Printed"), localTime(m_title.printedAt)},
        {QStringLiteral("Filter"), m_title.filter},
        {QStringLiteral("Chain"), m_title.chainStatus},
    };
    painter.setFont(m_titleFont);
    qreal y = 0;
    const qreal titleHeight = painter.fontMetrics().height();
    if (draw)
        painter.drawText(QRectF(0, y, m_page.width(), titleHeight), Qt::AlignLeft | Qt::AlignTop,
                         QStringLiteral("Audit Trail"));
    y += titleHeight + 2 * m_padding;
    painter.setFont(m_bodyFont);
    const qreal labelWidth = m_page.width() * ColumnShares[0] * 1.5;
    for (const auto& [label, value] : lines) {
        const QRectF valueRect(labelWidth, y, m_page.width() - labelWidth, m_page.height());
        const qreal height = painter.boundingRect(valueRect, value, wrapping()).height();
        if (draw) {
            painter.setFont(m_headFont);
            painter.drawText(QRectF(0, y, labelWidth, height), label + QLatin1Char(':'), wrapping());
            painter.setFont(m_bodyFont);
            painter.drawText(valueRect, value, wrapping());
        }
        y += std::max(height, qreal(painter.fontMetrics().height())) + m_padding;
    }
    return y + 3 * m_padding;
}

void AuditPrintout::drawColumnTitles(QPainter& painter, qreal top) const
{
    painter.setFont(m_headFont);
    drawRow(painter, ColumnTitles, top, m_columnTitlesHeight);
    painter.drawLine(QPointF(0, top + m_columnTitlesHeight),
                     QPointF(m_page.width(), top + m_columnTitlesHeight));
    painter.setFont(m_bodyFont);
}

void AuditPrintout::drawFooter(QPainter& painter, int page) const
{
    painter.setFont(m_bodyFont);
    const QRectF foot(0, m_page.bottom() - m_footerHeight + 2 * m_padding, m_page.width(),
                      m_footerHeight - 2 * m_padding);
    painter.drawText(foot, Qt::AlignHCenter | Qt::AlignBottom,
                     QStringLiteral("Page %1 of %2").arg(page).arg(m_pages));
}

qreal AuditPrintout::rowHeight(QPainter& painter, const QStringList& cells) const
{
    qreal left = 0;
    const QFontMetricsF metrics(painter.font(), painter.device());
    qreal height = metrics.height();
    for (qsizetype i = 0; i < cells.size(); ++i) {
        const qreal width = m_page.width() * ColumnShares[size_t(i)];
        const QRectF cell(left + m_padding, 0, width - 2 * m_padding, m_page.height());
        // Most cells fit on one line; only the others are laid out line by line.
        if (metrics.horizontalAdvance(cells[i]) > cell.width())
            height = std::max(height, painter.boundingRect(cell, cells[i], wrapping()).height());
        left += width;
    }
    return height + 2 * m_padding;
}

void AuditPrintout::drawRow(QPainter& painter, const QStringList& cells, qreal top, qreal height) const
{
    qreal left = 0;
    const QFontMetricsF metrics(painter.font(), painter.device());
    for (qsizetype i = 0; i < cells.size(); ++i) {
        const qreal width = m_page.width() * ColumnShares[size_t(i)];
        const QRectF cell(left + m_padding, top + m_padding, width - 2 * m_padding, height - 2 * m_padding);
        left += width;
        if (metrics.horizontalAdvance(cells[i]) <= cell.width()) {
            painter.drawText(cell, Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine, cells[i]);
            continue;
        }
        // A wrapped text that would run past a page's foot is cut at the row's edge.
        painter.save();
        painter.setClipRect(cell);
        painter.drawText(cell, cells[i], wrapping());
        painter.restore();
    }
}

} // namespace nebra
