#include "AssayProtocol.h"

#include "ProtocolReader.h"

#include <QFile>
#include <QStringDecoder>

namespace nebra {

namespace {

QString wholeOrDecimal(double value)
{
    return QString::number(value, 'f', value == int(value) ? 0 : 1);
}

QString timingSummary(const ReadSettings& s)
{
    return s.kinetic ? QStringLiteral(", %1 reads every %2 s").arg(s.reads).arg(s.interval) : QString();
}

QString escaped(const QString& text)
{
    return text.toHtmlEscaped();
}

} // namespace

QString ReadSettings::modeName(Mode mode)
{
    switch (mode) {
    case Mode::Absorbance:
        return QStringLiteral("Absorbance");
    case Mode::Fluorescence:
        return QStringLiteral("Fluorescence intensity");
    case Mode::Luminescence:
        return QStringLiteral("Luminescence");
    }
    return {};
}

QString ReadSettings::shakingName(Shaking shaking)
{
    static const char* const names[] = {"None", "Linear", "Orbital", "Double orbital"};
    return QLatin1String(names[int(shaking)]);
}

QString ReadSettings::Summary() const
{
    QString text;
    switch (mode) {
    case Mode::Absorbance:
        text = QStringLiteral("Absorbance %1 nm").arg(wavelength);
        if (referenceWavelength > 0)
            text += QStringLiteral(", reference %1 nm").arg(referenceWavelength);
        break;
    case Mode::Fluorescence:
        text = QStringLiteral("Fluorescence Ex %1 nm / Em %2 nm").arg(excitation).arg(emission);
        break;
    case Mode::Luminescence:
        text = QStringLiteral("Luminescence, %1 ms").arg(integrationTime);
        break;
    }
    return text + timingSummary(*this);
}

std::optional<AssayProtocol> AssayProtocol::Load(const QString& path, QString& error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("The protocol cannot be read: %1").arg(file.errorString());
        return std::nullopt;
    }
    if (file.size() > MaximumFileSize) {
        error = QStringLiteral("The file is too large to be a protocol.");
        return std::nullopt;
    }
    return Parse(file.readAll(), error);
}

std::optional<AssayProtocol> AssayProtocol::Parse(const QByteArray& content, QString& error)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder(content);
    if (decoder.hasError()) {
        error = QStringLiteral("The file is not UTF-8 text.");
        return std::nullopt;
    }
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    ProtocolReader reader;
    return reader.read(text, error);
}

QByteArray AssayProtocol::Serialise() const
{
    QString text = QLatin1String(Signature) + QLatin1Char('\n');
    text += QStringLiteral("[Protocol]\nName=%1\nLayout=%2\nRead=%3\nAnalysis=%4\nUnits=%5\n")
                .arg(name, layout, read, analysis, units);
    if (settings) {
        const ReadSettings& s = *settings;
        text += QStringLiteral("\n[Read]\nMode=%1\n").arg(ReadSettings::modeName(s.mode));
        if (s.mode == ReadSettings::Mode::Absorbance) {
            text += QStringLiteral("Wavelength=%1\n").arg(s.wavelength);
            if (s.referenceWavelength > 0)
                text += QStringLiteral("ReferenceWavelength=%1\n").arg(s.referenceWavelength);
        } else if (s.mode == ReadSettings::Mode::Fluorescence) {
            text += QStringLiteral("Excitation=%1\nEmission=%2\n").arg(s.excitation).arg(s.emission);
        } else {
            text += QStringLiteral("IntegrationTime=%1\n").arg(s.integrationTime);
        }
        text += s.kinetic
                    ? QStringLiteral("Timing=Kinetic\nReads=%1\nInterval=%2\n").arg(s.reads).arg(s.interval)
                    : QStringLiteral("Timing=End point\n");
        text += QStringLiteral("Shaking=%1\n").arg(ReadSettings::shakingName(s.shaking));
        if (s.shaking != ReadSettings::Shaking::None)
            text += QStringLiteral("ShakingTime=%1\n").arg(s.shakingTime);
        text += QStringLiteral("Temperature=%1\n")
                    .arg(s.temperature ? wholeOrDecimal(*s.temperature) : QStringLiteral("Ambient"));
    }
    return text.toUtf8();
}

// The same single-part archive as the example protocols' previews.
QByteArray AssayProtocol::PreviewPage() const
{
    QString rows = QStringLiteral("<tr><th>Layout</th><td>%1</td></tr>\r\n<tr><th>Read</th><td>%2</td></tr>"
                                  "<tr><th>Analysis</th><td>%3</td></tr><tr><th>Units</th><td>%4</td></tr>")
                       .arg(escaped(layout), escaped(read), escaped(analysis), escaped(units));
    if (settings) {
        rows += QStringLiteral("<tr><th>Shaking</th><td>%1</td></tr><tr><th>Temperature</th><td>%2</td></tr>")
                    .arg(settings->shaking == ReadSettings::Shaking::None
                             ? QStringLiteral("None")
                             : QStringLiteral("%1, %2 s")
                                   .arg(ReadSettings::shakingName(settings->shaking))
                                   .arg(settings->shakingTime),
                         settings->temperature
                             ? wholeOrDecimal(*settings->temperature) + QStringLiteral(" &deg;C")
                             : QStringLiteral("Ambient"));
    }
    const QString page =
        QStringLiteral(
            "MIME-Version: 1.0\r\nContent-Type: multipart/related; boundary=\"----=_NebraPreview_000\"; "
            "type=\"text/html\"\r\n\r\n------=_NebraPreview_000\r\nContent-Type: text/html; "
            "charset=\"utf-8\"\r\n"
            "Content-Transfer-Encoding: 8bit\r\nContent-Location: file:///preview.htm\r\n\r\n"
            "<!DOCTYPE html>\r\n<html><head><meta charset=\"utf-8\"><title>%1</title>\r\n"
            "<style>body{font-family:sans-serif;margin:1.2em;color:#1d2733}h1{font-size:1.3em;color:#1f4e79}"
            "\r\n"
            "table{border-collapse:collapse}td,th{border:1px solid #b8c4d0;padding:3px 8px;text-align:left}"
            "th{background:#e8eef4}</style>\r\n</head><body><h1>%1</h1>\r\n<table>%2</table>\r\n</body></"
            "html>\r\n\r\n"
            "------=_NebraPreview_000--\r\n")
            .arg(escaped(name), rows);
    return page.toUtf8();
}

} // namespace nebra
