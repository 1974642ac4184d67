#include "WellBlock.h"

#include "PlateLayoutWriter.h"

#include <QRegularExpression>

namespace nebra {

namespace {
QString cellText(const Well& well)
{
    QString label = well.label;
    label.replace(QLatin1Char('\t'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
    return PlateLayout::roleName(well.role) + QLatin1Char(',') +
           (well.concentration ? PlateLayoutWriter::formatConcentration(*well.concentration) : QString()) +
           QLatin1Char(',') + label;
}

std::optional<Well> cellFromText(const QString& text)
{
    const qsizetype first = text.indexOf(QLatin1Char(','));
    const qsizetype second = first < 0 ? -1 : text.indexOf(QLatin1Char(','), first + 1);
    if (second < 0)
        return std::nullopt;
    const std::optional<WellRole> role = PlateLayout::roleFromName(text.left(first));
    if (!role)
        return std::nullopt;
    Well well{*role, text.mid(second + 1), {}};
    const QString concentration = text.mid(first + 1, second - first - 1);
    if (!concentration.isEmpty()) {
        bool ok = false;
        well.concentration = concentration.toDouble(&ok);
        if (!ok)
            return std::nullopt;
    }
    return well;
}
} // namespace

WellBlock WellBlock::Copy(const PlateLayout& layout, const QRect& area)
{
    WellBlock block{area.height(), area.width(), {}};
    for (int r = area.top(); r <= area.bottom(); ++r)
        for (int c = area.left(); c <= area.right(); ++c)
            block.wells.append(layout.well(r, c));
    return block;
}

QString WellBlock::toText() const
{
    QString text = QStringLiteral("# Nebra wells %1 x %2\n").arg(rows).arg(columns);
    for (int r = 0; r < rows; ++r) {
        QStringList cells;
        for (int c = 0; c < columns; ++c)
            cells.append(cellText(wells[r * columns + c]));
        text += cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    return text;
}

std::optional<WellBlock> WellBlock::FromText(const QString& text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    static const QRegularExpression header(QStringLiteral("^# Nebra wells (\\d+) x (\\d+)\\r?$"));
    const QRegularExpressionMatch match = header.match(lines.value(0));
    if (!match.hasMatch())
        return std::nullopt;
    WellBlock block{match.captured(1).toInt(), match.captured(2).toInt(), {}};
    if (block.rows < 1 || block.columns < 1 || lines.size() < block.rows + 1)
        return std::nullopt;
    for (int r = 0; r < block.rows; ++r) {
        QString line = lines[r + 1];
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        const QStringList cells = line.split(QLatin1Char('\t'));
        if (cells.size() != block.columns)
            return std::nullopt;
        for (const QString& cell : cells) {
            const std::optional<Well> well = cellFromText(cell);
            if (!well)
                return std::nullopt;
            block.wells.append(*well);
        }
    }
    return block;
}

} // namespace nebra
