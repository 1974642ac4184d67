#include "PlateLayout.h"

#include "RegularFile.h"

#include <QStringDecoder>

#include <algorithm>
#include <cmath>

namespace nebra {

namespace {

constexpr std::array<const char*, PlateLayout::RoleCount> RoleNames{"empty", "blank", "standard", "control",
                                                                    "sample"};

struct Entry
{
    int line = 0;
    QString key;
    QString value;
};

// The file as read, before any value is checked.
struct RawLayout
{
    bool hasLayoutSection = false;
    Entry name;
    Entry rows;
    Entry columns;
    Entry version;
    QList<Entry> wells;
    QList<Entry> concentrations;
};

QString atLine(int line, const QString& what)
{
    return QStringLiteral("Line %1: %2").arg(QString::number(line), what);
}

bool keepOnce(Entry& kept, const Entry& entry, QString& error)
{
    if (kept.line != 0) {
        error = atLine(entry.line, QStringLiteral("%1 is given a second time (first on line %2).")
                                       .arg(entry.key, QString::number(kept.line)));
        return false;
    }
    kept = entry;
    return true;
}

bool keepLayoutValue(RawLayout& raw, const Entry& entry, QString& error)
{
    const QString key = entry.key.toLower();
    if (key == QLatin1String("name"))
        return keepOnce(raw.name, entry, error);
    if (key == QLatin1String("rows"))
        return keepOnce(raw.rows, entry, error);
    if (key == QLatin1String("columns"))
        return keepOnce(raw.columns, entry, error);
    if (key == QLatin1String("version"))
        return keepOnce(raw.version, entry, error);
    // Other keys belong to later versions of the format and are passed over.
    return true;
}

enum class Section
{
    None,
    Layout,
    Wells,
    Concentrations,
    Other
};

// [Layout] opens the file and appears once: a second one would silently
// change the plate under wells already read.
bool enterSection(const QString& header, int line, Section& section, RawLayout& raw, QString& error)
{
    const QString name = header.mid(1, header.size() - 2).trimmed().toLower();
    section = name == QLatin1String("layout")           ? Section::Layout
              : name == QLatin1String("wells")          ? Section::Wells
              : name == QLatin1String("concentrations") ? Section::Concentrations
                                                        : Section::Other;
    if (section != Section::Layout && !raw.hasLayoutSection) {
        error = atLine(line, QStringLiteral("%1 comes before the [Layout] section.").arg(header));
        return false;
    }
    if (section == Section::Layout && raw.hasLayoutSection) {
        error = atLine(line, QStringLiteral("a second [Layout] section."));
        return false;
    }
    raw.hasLayoutSection = true;
    return true;
}

// Splits the text into the [Layout] values, the [Wells] and the
// [Concentrations] entries.
bool readSections(const QString& text, RawLayout& raw, QString& error)
{
    Section section = Section::None;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (int i = 0; i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')) || line.startsWith(QLatin1Char(';')))
            continue;
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            if (!enterSection(line, i + 1, section, raw, error))
                return false;
            continue;
        }
        if (section == Section::Other)
            continue;
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (section == Section::None || equals <= 0) {
            error =
                atLine(i + 1, section == Section::None ? QStringLiteral("text before the [Layout] section.")
                                                       : QStringLiteral("expected name=value."));
            return false;
        }
        const Entry entry{i + 1, line.left(equals).trimmed(), line.mid(equals + 1).trimmed()};
        if (section == Section::Wells)
            raw.wells.append(entry);
        else if (section == Section::Concentrations)
            raw.concentrations.append(entry);
        else if (!keepLayoutValue(raw, entry, error))
            return false;
    }
    return true;
}

bool readDimension(const Entry& entry, const char* what, int& value, QString& error)
{
    if (entry.line == 0) {
        error = QStringLiteral("The [Layout] section gives no %1.").arg(QLatin1String(what));
        return false;
    }
    bool ok = false;
    value = entry.value.toInt(&ok);
    if (!ok || value <= 0) {
        error = atLine(entry.line,
                       QStringLiteral("\"%1\" is not a number of %2.").arg(entry.value, QLatin1String(what)));
        return false;
    }
    return true;
}

bool wellOfPlate(const PlateLayout& layout, const Entry& entry, int& index, QString& error)
{
    int row = 0;
    int column = 0;
    if (!PlateLayout::parseWellName(entry.key, row, column) || row >= layout.rows() ||
        column >= layout.columns()) {
        error = atLine(entry.line, QStringLiteral("\"%1\" is not a well of a %2 x %3 plate.")
                                       .arg(entry.key, QString::number(layout.rows()),
                                            QString::number(layout.columns())));
        return false;
    }
    index = row * layout.columns() + column;
    return true;
}

bool placeWell(PlateLayout& layout, const Entry& entry, QList<bool>& listed, QString& error)
{
    int index = 0;
    if (!wellOfPlate(layout, entry, index, error))
        return false;
    const qsizetype comma = entry.value.indexOf(QLatin1Char(','));
    const QString roleText = (comma < 0 ? entry.value : entry.value.left(comma)).trimmed();
    const std::optional<WellRole> role = PlateLayout::roleFromName(roleText);
    if (!role) {
        error = atLine(entry.line, QStringLiteral("\"%1\" is not a well role (blank, standard, control, "
                                                  "sample or empty).")
                                       .arg(roleText));
        return false;
    }
    if (listed[index]) {
        error = atLine(entry.line, QStringLiteral("well %1 is listed twice.").arg(entry.key));
        return false;
    }
    listed[index] = true;
    layout.setWell(index, {*role, comma < 0 ? QString() : entry.value.mid(comma + 1).trimmed(), {}});
    return true;
}

bool placeConcentration(PlateLayout& layout, const Entry& entry, QList<bool>& listed, QString& error)
{
    int index = 0;
    if (!wellOfPlate(layout, entry, index, error))
        return false;
    bool ok = false;
    const double value = entry.value.toDouble(&ok);
    if (!ok || !std::isfinite(value) || value < 0) {
        error =
            atLine(entry.line,
                   QStringLiteral("\"%1\" is not a concentration (a number, 0 or more).").arg(entry.value));
        return false;
    }
    if (listed[index]) {
        error = atLine(entry.line, QStringLiteral("the concentration of %1 is given twice.").arg(entry.key));
        return false;
    }
    listed[index] = true;
    Well well = layout.wells()[index];
    well.concentration = value;
    layout.setWell(index, std::move(well));
    return true;
}

bool readVersion(const Entry& entry, QString& error)
{
    // Any later version is read as far as this reader understands it.
    bool ok = false;
    if (entry.line != 0 && (entry.value.toInt(&ok) < 1 || !ok)) {
        error = atLine(entry.line, QStringLiteral("\"%1\" is not a format version.").arg(entry.value));
        return false;
    }
    return true;
}

int lettersToRow(QStringView letters)
{
    // Bijective base 26: A = 1 ... Z = 26, AA = 27.
    int value = 0;
    for (const QChar c : letters) {
        value = value * 26 + (c.unicode() - 'A' + 1);
        if (value > 1000)
            return -1;
    }
    return value - 1;
}

} // namespace

const std::array<PlateFormat, 7>& PlateLayout::supportedFormats()
{
    static const std::array<PlateFormat, 7> formats{
        {{2, 3}, {3, 4}, {4, 6}, {6, 8}, {8, 12}, {16, 24}, {32, 48}}};
    return formats;
}

bool PlateLayout::isSupported(int rows, int columns)
{
    for (const PlateFormat& format : supportedFormats())
        if (format.rows == rows && format.columns == columns)
            return true;
    return false;
}

PlateLayout::PlateLayout(const QString& name, int rows, int columns)
    : m_name(name), m_rows(rows), m_columns(columns), m_wells(rows * columns)
{
}

std::optional<PlateLayout> PlateLayout::Load(const QString& path, QString& error)
{
    QByteArray text;
    QString reason;
    switch (RegularFile::read(path, MaximumFileSize, text, reason)) {
    case RegularFile::Status::Read:
        return Parse(text, error);
    case RegularFile::Status::TooLarge:
        error = QStringLiteral("The file is too large for a plate layout (more than %1 bytes).")
                    .arg(MaximumFileSize);
        break;
    case RegularFile::Status::NotAFile:
        error = QStringLiteral("This is not a file that can be read (a folder, pipe, socket or device).");
        break;
    default:
        error = QStringLiteral("The file cannot be read: %1").arg(reason);
        break;
    }
    return std::nullopt;
}

std::optional<PlateLayout> PlateLayout::Parse(const QByteArray& bytes, QString& error)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError() || text.contains(QChar(0))) {
        error = QStringLiteral("The file is not a text file in UTF-8.");
        return std::nullopt;
    }
    RawLayout raw;
    if (!readSections(text, raw, error))
        return std::nullopt;
    if (!raw.hasLayoutSection) {
        error = QStringLiteral("The file has no [Layout] section.");
        return std::nullopt;
    }
    int rows = 0;
    int columns = 0;
    if (!readVersion(raw.version, error) || !readDimension(raw.rows, "rows", rows, error) ||
        !readDimension(raw.columns, "columns", columns, error))
        return std::nullopt;
    if (!isSupported(rows, columns)) {
        error = QStringLiteral("A plate of %1 x %2 wells is not supported (plates of 6, 12, 24, 48, 96, 384 "
                               "and 1536 wells are).")
                    .arg(QString::number(rows), QString::number(columns));
        return std::nullopt;
    }
    PlateLayout layout(raw.name.value, rows, columns);
    QList<bool> listed(layout.wellCount(), false);
    for (const Entry& entry : std::as_const(raw.wells))
        if (!placeWell(layout, entry, listed, error))
            return std::nullopt;
    listed.fill(false);
    for (const Entry& entry : std::as_const(raw.concentrations))
        if (!placeConcentration(layout, entry, listed, error))
            return std::nullopt;
    return layout;
}

std::array<int, PlateLayout::RoleCount> PlateLayout::roleCounts() const
{
    std::array<int, RoleCount> counts{};
    for (const Well& well : m_wells)
        ++counts[static_cast<int>(well.role)];
    return counts;
}

QString PlateLayout::rowName(int row)
{
    QString name;
    for (int n = row + 1; n > 0; n = (n - 1) / 26)
        name.prepend(QChar('A' + (n - 1) % 26));
    return name;
}

QString PlateLayout::wellName(int row, int column)
{
    return rowName(row) + QString::number(column + 1);
}

bool PlateLayout::parseWellName(const QString& name, int& row, int& column)
{
    // Only ASCII letters and digits are looked at: case folding first would
    // turn some other letters (a dotless i, for one) into A to Z.
    const QString trimmed = name.trimmed();
    const auto isLetter = [](QChar c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); };
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    qsizetype letters = 0;
    while (letters < trimmed.size() && isLetter(trimmed[letters]))
        ++letters;
    const QStringView number = QStringView(trimmed).mid(letters);
    // The column is written as a plain number: no sign, no leading zero.
    if (letters == 0 || number.isEmpty() || number.size() > 4 || number[0] == u'0' ||
        !std::all_of(number.begin(), number.end(), isDigit))
        return false;
    row = lettersToRow(QStringView(trimmed).left(letters).toString().toUpper());
    column = number.toInt() - 1;
    return row >= 0;
}

QString PlateLayout::roleName(WellRole role)
{
    return QLatin1String(RoleNames[static_cast<int>(role)]);
}

std::optional<WellRole> PlateLayout::roleFromName(const QString& name)
{
    for (int i = 0; i < RoleCount; ++i)
        if (name.compare(QLatin1String(RoleNames[i]), Qt::CaseInsensitive) == 0)
            return static_cast<WellRole>(i);
    return std::nullopt;
}

} // namespace nebra
