#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace nebra {

// How the plate is read, as the [Read] section of a protocol holds it.
struct ReadSettings
{
    enum class Mode
    {
        Absorbance,
        Fluorescence,
        Luminescence
    };
    enum class Shaking
    {
        None,
        Linear,
        Orbital,
        DoubleOrbital
    };

    Mode mode = Mode::Absorbance;
    int wavelength = 450;        // nm, absorbance
    int referenceWavelength = 0; // nm, absorbance; 0: none
    int excitation = 485;        // nm, fluorescence
    int emission = 535;          // nm, fluorescence
    int integrationTime = 1000;  // ms, luminescence
    bool kinetic = false;        // false: one end-point read
    int reads = 2;               // kinetic only
    int interval = 60;           // s between kinetic reads
    Shaking shaking = Shaking::None;
    int shakingTime = 5;               // s, before each read
    std::optional<double> temperature; // degrees C; none: ambient

    // "Absorbance 562 nm", "Fluorescence Ex 485 nm / Em 535 nm, 30 reads every 60 s", ...
    QString Summary() const;
    static QString modeName(Mode mode);
    static QString shakingName(Shaking shaking);
};

// An assay protocol file ("*.apr"; format in docs/formats.md): the protocol's
// name, its microplate layout, a one-line description of the read, the
// analysis and the units of the results, optionally with the read's
// settings in full. Reading is strict: a file that breaks the format yields
// no protocol and one sentence naming the line and the fault.
class AssayProtocol
{
public:
    static constexpr qint64 MaximumFileSize = 256 * 1024;
    static constexpr const char* Signature = "# Nebra assay protocol";

    QString name;
    QString layout; // a file name in the Microplate Layouts folder
    QString read;
    QString analysis;
    QString units;
    std::optional<ReadSettings> settings;

    static std::optional<AssayProtocol> Load(const QString& path, QString& error);
    static std::optional<AssayProtocol> Parse(const QByteArray& content, QString& error);

    // The file's text (UTF-8, LF line ends); Parse reads it back unchanged.
    QByteArray Serialise() const;
    // The preview page shown beside the protocol: a single-file web archive.
    QByteArray PreviewPage() const;
};

} // namespace nebra
