#pragma once

#include <QList>
#include <QString>

#include <array>
#include <optional>

class QByteArray;

namespace nebra {

// What a well is for. Wells a layout does not list are Empty.
enum class WellRole
{
    Empty = 0,
    Blank,
    Standard,
    Control,
    Sample
};

struct Well
{
    WellRole role = WellRole::Empty;
    QString label;
};

struct PlateFormat
{
    int rows;
    int columns;
};

// A microplate layout as stored in a ".mlo" file (format: docs/formats.md):
// a name, a plate format and the role and label of each well. Reading is
// strict: a file that breaks the format yields no layout and one sentence
// naming the line and the fault, so that a viewer can say why it shows nothing.
class PlateLayout
{
public:
    static constexpr qint64 MaximumFileSize = 1024 * 1024;
    static constexpr int RoleCount = 5;

    // The plates a layout may describe: 6, 12, 24, 48, 96, 384 and 1536 wells.
    static const std::array<PlateFormat, 7>& supportedFormats();
    static bool isSupported(int rows, int columns);

    // Reads a layout file. On failure returns nothing and sets error.
    static std::optional<PlateLayout> Load(const QString& path, QString& error);
    // Parses the text of a layout file (UTF-8; CR LF or LF line ends).
    static std::optional<PlateLayout> Parse(const QByteArray& text, QString& error);

    // A layout with every well empty; rows and columns must be a supported format.
    PlateLayout(const QString& name, int rows, int columns);

    QString name() const { return m_name; }
    int rows() const { return m_rows; }
    int columns() const { return m_columns; }
    int wellCount() const { return m_rows * m_columns; }

    // Row and column are 0-based.
    const Well& well(int row, int column) const { return m_wells[row * m_columns + column]; }
    void setWell(int row, int column, Well well) { m_wells[row * m_columns + column] = std::move(well); }
    // How many wells carry each role, indexed by the role's value.
    std::array<int, RoleCount> roleCounts() const;

    // Row names run A to Z, then AA, AB, ... ; columns count from 1: "A1", "P24", "AF48".
    static QString rowName(int row);
    static QString wellName(int row, int column);
    // Splits a well name; false when it is not letters followed by a number.
    static bool parseWellName(const QString& name, int& row, int& column);

    static QString roleName(WellRole role);
    // Case is ignored; nothing for an unknown name.
    static std::optional<WellRole> roleFromName(const QString& name);

private:
    QString m_name;
    int m_rows;
    int m_columns;
    QList<Well> m_wells;
};

} // namespace nebra
