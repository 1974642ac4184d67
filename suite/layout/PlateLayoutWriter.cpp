#include "PlateLayoutWriter.h"

#include <QSaveFile>

#include <array>
#include <charconv>

namespace nebra {

namespace {
constexpr char LineEnd[] = "\r\n";

void line(QByteArray& out, const QString& text)
{
    out += text.toUtf8();
    out += LineEnd;
}

// The reader trims values and reads one line per well: line breaks become blanks.
QString oneLine(QString text)
{
    text.replace(QLatin1Char('\r'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
    return text.trimmed();
}

bool hasConcentrations(const PlateLayout& layout)
{
    for (const Well& well : layout.wells())
        if (well.concentration)
            return true;
    return false;
}
} // namespace

QString PlateLayoutWriter::formatConcentration(double value)
{
    // The shortest text that reads back as the same double, without the
    // locale: "100", "12.5", "0.001", "1e-07".
    std::array<char, 32> text{};
    const std::to_chars_result result = std::to_chars(text.data(), text.data() + text.size(), value);
    return QString::fromLatin1(text.data(), result.ptr - text.data());
}

QByteArray PlateLayoutWriter::Serialise(const PlateLayout& layout)
{
    const bool concentrations = hasConcentrations(layout);
    QByteArray out;
    out.reserve(32 + layout.wellCount() * 20);
    line(out, QStringLiteral("# Nebra microplate layout"));
    line(out, QStringLiteral("[Layout]"));
    line(out, QStringLiteral("Name=") + oneLine(layout.name()));
    if (concentrations)
        line(out, QStringLiteral("Version=%1").arg(PlateLayout::CurrentVersion));
    line(out, QStringLiteral("Rows=%1").arg(layout.rows()));
    line(out, QStringLiteral("Columns=%1").arg(layout.columns()));
    out += LineEnd;
    line(out, QStringLiteral("[Wells]"));
    for (int r = 0; r < layout.rows(); ++r) {
        for (int c = 0; c < layout.columns(); ++c) {
            const Well& well = layout.well(r, c);
            if (well.role == WellRole::Empty && well.label.isEmpty())
                continue;
            QString text = PlateLayout::wellName(r, c) + QLatin1Char('=') + PlateLayout::roleName(well.role);
            const QString label = oneLine(well.label);
            if (!label.isEmpty())
                text += QLatin1Char(',') + label;
            line(out, text);
        }
    }
    if (!concentrations)
        return out;
    out += LineEnd;
    line(out, QStringLiteral("[Concentrations]"));
    for (int r = 0; r < layout.rows(); ++r)
        for (int c = 0; c < layout.columns(); ++c)
            if (const std::optional<double> value = layout.well(r, c).concentration)
                line(out, PlateLayout::wellName(r, c) + QLatin1Char('=') + formatConcentration(*value));
    return out;
}

bool PlateLayoutWriter::Save(const PlateLayout& layout, const QString& path, QString& error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        error = file.errorString();
        return false;
    }
    const QByteArray bytes = Serialise(layout);
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        error = file.errorString();
        return false;
    }
    return true;
}

} // namespace nebra
