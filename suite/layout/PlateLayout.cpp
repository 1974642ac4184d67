#include "PlateLayout.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

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
    QString name;
    Entry rows;
    Entry columns;
    QList<Entry> wells;
};

QString atLine(int line, const QString& what)
{
    return QStringLiteral("Line %1: %2").arg(line).arg(what);
}

void keepLayoutValue(RawLayout& raw, const Entry& entry)
{
    const QString key = entry.key.toLower();
    if (key == QLatin1String("name"))
        raw.name = entry.value;
    else if (key == QLatin1String("rows"))
        raw.rows = entry;
    else if (key == QLatin1String("columns"))
        raw.columns = entry;
    // Other keys belong to later versions of the format and are passed over.
}

// Splits the text into the [Layout] values and the [Wells] entries.
bool readSections(const QString& text, RawLayout& raw, QString& error)
{
    enum class Section
    {
        None,
        Layout,
        Wells,
        Other
    } section = Section::None;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (int i = 0; i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')) || line.startsWith(QLatin1Char(';')))
            continue;
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            const QString name = line.mid(1, line.size() - 2).trimmed().toLower();
            section = name == QLatin1String("layout")  ? Section::Layout
                      : name == QLatin1String("wells") ? Section::Wells
                                                       : Section::Other;
            raw.hasLayoutSection = raw.hasLayoutSection || section == Section::Layout;
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
        if (section == Section::Layout)
            keepLayoutValue(raw, entry);
        else
            raw.wells.append(entry);
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

bool placeWell(PlateLayout& layout, const Entry& entry, QList<bool>& listed, QString& error)
{
    int row = 0;
    int column = 0;
    if (!PlateLayout::parseWellName(entry.key, row, column) || row >= layout.rows() ||
        column >= layout.columns()) {
        error = atLine(entry.line, QStringLiteral("\"%1\" is not a well of a %2 x %3 plate.")
                                       .arg(entry.key)
                                       .arg(layout.rows())
                                       .arg(layout.columns()));
        return false;
    }
    const qsizetype comma = entry.value.indexOf(QLatin1Char(','));
    const QString roleText = (comma < 0 ? entry.value : entry.value.left(comma)).trimmed();
    const std::optional<WellRole> role = PlateLayout::roleFromName(roleText);
    if (!role) {
        error = atLine(entry.line, QStringLiteral("\"%1\" is not a well role (blank, standard, control, "
                                                  "sample or empty).")
                                       .arg(roleText));
        return false;
    }
    const int index = row * layout.columns() + column;
    if (listed[index]) {
        error = atLine(entry.line, QStringLiteral("well %1 is listed twice.").arg(entry.key));
        return false;
    }
    listed[index] = true;
    layout.setWell(row, column, {*role, comma < 0 ? QString() : entry.value.mid(comma + 1).trimmed()});
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
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("The file cannot be read: %1").arg(file.errorString());
        return std::nullopt;
    }
    if (file.size() > MaximumFileSize) {
        error = QStringLiteral("The file is too large for a plate layout (%1 bytes).").arg(file.size());
        return std::nullopt;
    }
    const QByteArray text = file.read(MaximumFileSize + 1);
    if (file.error() != QFileDevice::NoError) {
        error = QStringLiteral("The file cannot be read: %1").arg(file.errorString());
        return std::nullopt;
    }
    return Parse(text, error);
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
    if (!readDimension(raw.rows, "rows", rows, error) ||
        !readDimension(raw.columns, "columns", columns, error))
        return std::nullopt;
    if (!isSupported(rows, columns)) {
        error = QStringLiteral("A plate of %1 x %2 wells is not supported (plates of 6, 12, 24, 48, 96, 384 "
                               "and 1536 wells are).")
                    .arg(rows)
                    .arg(columns);
        return std::nullopt;
    }
    PlateLayout layout(raw.name, rows, columns);
    QList<bool> listed(layout.wellCount(), false);
    for (const Entry& entry : std::as_const(raw.wells))
        if (!placeWell(layout, entry, listed, error))
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
    const QString upper = name.trimmed().toUpper();
    qsizetype letters = 0;
    while (letters < upper.size() && upper[letters] >= QLatin1Char('A') && upper[letters] <= QLatin1Char('Z'))
        ++letters;
    if (letters == 0 || letters == upper.size())
        return false;
    bool ok = false;
    const int number = QStringView(upper).mid(letters).toInt(&ok);
    if (!ok || number < 1 || !upper[letters].isDigit())
        return false;
    row = lettersToRow(QStringView(upper).left(letters));
    column = number - 1;
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
