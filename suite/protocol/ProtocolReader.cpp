#include "ProtocolReader.h"

namespace nebra {

namespace {

QString atLine(int line, const QString& what)
{
    return QStringLiteral("Line %1: %2").arg(line).arg(what);
}

} // namespace

std::optional<AssayProtocol> ProtocolReader::read(const QString& text, QString& error)
{
    if (!split(text, error))
        return std::nullopt;
    AssayProtocol protocol;
    if (!readProtocolSection(protocol, error))
        return std::nullopt;
    if (m_hasRead) {
        ReadSettings settings;
        if (!readSettings(settings, error))
            return std::nullopt;
        protocol.settings = settings;
    }
    return protocol;
}

// Splits the text into the values of [Protocol] and [Read]; other sections
// belong to later versions of the format and are passed over.
bool ProtocolReader::split(const QString& text, QString& error)
{
    const QStringList lines = text.split(QLatin1Char('\n'));
    bool signed_ = false;
    Section* section = nullptr;
    bool other = false;
    for (int i = 0; i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        if (line.isEmpty())
            continue;
        if (!signed_) {
            if (line != QLatin1String(AssayProtocol::Signature)) {
                error = atLine(i + 1, QStringLiteral("a protocol starts with \"%1\".")
                                          .arg(QLatin1String(AssayProtocol::Signature)));
                return false;
            }
            signed_ = true;
            continue;
        }
        if (line.startsWith(QLatin1Char('#')) || line.startsWith(QLatin1Char(';')))
            continue;
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            const QString name = line.mid(1, line.size() - 2).trimmed().toLower();
            other = false;
            if (name == QLatin1String("protocol") && !m_hasProtocol) {
                section = &m_protocol;
                m_hasProtocol = true;
            } else if (name == QLatin1String("read") && !m_hasRead) {
                section = &m_read;
                m_hasRead = true;
                m_readLine = i + 1;
            } else if (name == QLatin1String("protocol") || name == QLatin1String("read")) {
                error = atLine(i + 1, QStringLiteral("the section %1 appears twice.").arg(line));
                return false;
            } else {
                other = true;
            }
            continue;
        }
        if (other)
            continue;
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (!section || equals <= 0) {
            error = atLine(i + 1, section ? QStringLiteral("expected name=value.")
                                          : QStringLiteral("text before the [Protocol] section."));
            return false;
        }
        const QString key = line.left(equals).trimmed().toLower();
        if (section->contains(key)) {
            error = atLine(i + 1, QStringLiteral("\"%1\" is given twice.").arg(line.left(equals).trimmed()));
            return false;
        }
        section->insert(key, {i + 1, line.mid(equals + 1).trimmed()});
    }
    if (!signed_ || !m_hasProtocol) {
        error = signed_ ? QStringLiteral("The [Protocol] section is missing.")
                        : QStringLiteral("The file is empty.");
        return false;
    }
    return true;
}

bool ProtocolReader::readProtocolSection(AssayProtocol& protocol, QString& error) const
{
    const std::pair<const char*, QString*> required[] = {{"Name", &protocol.name},
                                                         {"Layout", &protocol.layout},
                                                         {"Read", &protocol.read},
                                                         {"Analysis", &protocol.analysis},
                                                         {"Units", &protocol.units}};
    for (const auto& [key, target] : required) {
        const Value value = m_protocol.value(QLatin1String(key).toString().toLower());
        if (value.text.isEmpty()) {
            error = QStringLiteral("The [Protocol] section gives no %1.").arg(QLatin1String(key));
            return false;
        }
        *target = value.text;
    }
    const int layoutLine = m_protocol.value(QStringLiteral("layout")).line;
    if (!protocol.layout.endsWith(QLatin1String(".mlo"), Qt::CaseInsensitive) ||
        protocol.layout.contains(QLatin1Char('/')) || protocol.layout.contains(QLatin1Char('\\'))) {
        error =
            atLine(layoutLine, QStringLiteral("the layout must be a \".mlo\" file name without a folder."));
        return false;
    }
    return true;
}

bool ProtocolReader::readSettings(ReadSettings& settings, QString& error) const
{
    return readMode(settings, error) && readTiming(settings, error) &&
           readShakingAndTemperature(settings, error);
}

bool ProtocolReader::readMode(ReadSettings& settings, QString& error) const
{
    int mode = 0;
    if (!choice("Mode",
                {QStringLiteral("Absorbance"), QStringLiteral("Fluorescence intensity"),
                 QStringLiteral("Luminescence")},
                mode, error))
        return false;
    settings.mode = ReadSettings::Mode(mode);
    switch (settings.mode) {
    case ReadSettings::Mode::Absorbance:
        if (!number("Wavelength", 200, 1000, settings.wavelength, error))
            return false;
        if (m_read.contains(QStringLiteral("referencewavelength")) &&
            !number("ReferenceWavelength", 200, 1000, settings.referenceWavelength, error))
            return false;
        if (settings.referenceWavelength == settings.wavelength) {
            error = atLine(m_read.value(QStringLiteral("referencewavelength")).line,
                           QStringLiteral("the reference wavelength equals the measuring wavelength."));
            return false;
        }
        return true;
    case ReadSettings::Mode::Fluorescence:
        if (!number("Excitation", 200, 1000, settings.excitation, error) ||
            !number("Emission", 200, 1000, settings.emission, error))
            return false;
        if (settings.emission <= settings.excitation) {
            error = atLine(
                m_read.value(QStringLiteral("emission")).line,
                QStringLiteral("the emission wavelength must be longer than the excitation wavelength."));
            return false;
        }
        return true;
    case ReadSettings::Mode::Luminescence:
        return number("IntegrationTime", 10, 60000, settings.integrationTime, error);
    }
    return true;
}

bool ProtocolReader::readTiming(ReadSettings& settings, QString& error) const
{
    int timing = 0;
    if (m_read.contains(QStringLiteral("timing")) &&
        !choice("Timing", {QStringLiteral("End point"), QStringLiteral("Kinetic")}, timing, error))
        return false;
    settings.kinetic = timing == 1;
    if (!settings.kinetic)
        return true;
    return number("Reads", 2, 1000, settings.reads, error) &&
           number("Interval", 1, 86400, settings.interval, error);
}

bool ProtocolReader::readShakingAndTemperature(ReadSettings& settings, QString& error) const
{
    int shaking = 0;
    if (m_read.contains(QStringLiteral("shaking")) &&
        !choice("Shaking",
                {QStringLiteral("None"), QStringLiteral("Linear"), QStringLiteral("Orbital"),
                 QStringLiteral("Double orbital")},
                shaking, error))
        return false;
    settings.shaking = ReadSettings::Shaking(shaking);
    if (settings.shaking != ReadSettings::Shaking::None &&
        !number("ShakingTime", 1, 600, settings.shakingTime, error))
        return false;
    const Value temperature = m_read.value(QStringLiteral("temperature"));
    if (temperature.text.isEmpty() ||
        temperature.text.compare(QLatin1String("Ambient"), Qt::CaseInsensitive) == 0)
        return true;
    bool ok = false;
    const double degrees = temperature.text.toDouble(&ok);
    if (!ok || degrees < 15.0 || degrees > 45.0) {
        error = atLine(temperature.line,
                       QStringLiteral("Temperature must be Ambient or degrees Celsius from 15 to 45."));
        return false;
    }
    settings.temperature = degrees;
    return true;
}

bool ProtocolReader::number(const char* key, int low, int high, int& out, QString& error) const
{
    const Value value = m_read.value(QLatin1String(key).toString().toLower());
    bool ok = false;
    const int parsed = value.text.toInt(&ok);
    if (!ok || parsed < low || parsed > high) {
        const QString what = QStringLiteral("%1 must be a whole number from %2 to %3.")
                                 .arg(QLatin1String(key))
                                 .arg(low)
                                 .arg(high);
        error = value.line ? atLine(value.line, what)
                           : atLine(m_readLine, QStringLiteral("[Read] gives no ") + what);
        return false;
    }
    out = parsed;
    return true;
}

bool ProtocolReader::choice(const char* key, const QStringList& names, int& out, QString& error) const
{
    const Value value = m_read.value(QLatin1String(key).toString().toLower());
    for (int i = 0; i < names.size(); ++i) {
        if (value.text.compare(names[i], Qt::CaseInsensitive) == 0) {
            out = i;
            return true;
        }
    }
    const QString what =
        QStringLiteral("%1 must be one of: %2.").arg(QLatin1String(key), names.join(QStringLiteral(", ")));
    error = atLine(value.line ? value.line : m_readLine, what);
    return false;
}

} // namespace nebra
