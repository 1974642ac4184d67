#include "AssayProtocol.h"
#include "SpecialFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using namespace nebra;

const QByteArray Head =
    "# Nebra assay protocol\n[Protocol]\nName=P\nLayout=L.mlo\nRead=R\nAnalysis=A\nUnits=U\n";

class AssayProtocolTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void examplesAreValidLaterSectionsAndKeysArePassedOverAndAPipeIsRefused()
    {
        const QDir folder(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") + "/Example Assays/Protocols");
        const QStringList files = folder.entryList({QStringLiteral("*.apr")}, QDir::Files);
        QCOMPARE(files.size(), 3);
        QString error;
        for (const QString& file : files) {
            const auto protocol = AssayProtocol::Load(folder.filePath(file), error);
            QVERIFY2(protocol, qPrintable(file + QStringLiteral(": ") + error));
            QCOMPARE(protocol->name + QStringLiteral(".apr"), file);
        }
        // Later sections and keys are passed over.
        const auto protocol =
            AssayProtocol::Parse("\xEF\xBB\xBF" + Head + "Extra=1\n[Plate map]\nwhatever\n", error);
        QVERIFY2(protocol, qPrintable(error));
        QCOMPARE(protocol->units, QStringLiteral("U"));
        // A pipe is refused without blocking (which files are not regular is RegularFileTest's).
        QTemporaryDir dir;
        test::makeFifo(dir.filePath("pipe.apr"));
        const test::PipeWatchdog watchdog(dir.filePath("pipe.apr"));
        QVERIFY(!AssayProtocol::Load(dir.filePath("pipe.apr"), error));
        QCOMPARE(error, QStringLiteral("The protocol cannot be read: it is not a regular file"));
        QVERIFY2(!watchdog.released(), "the reader blocked on the pipe");
        // An absorbance read names a reference wavelength only when it has one.
        QCOMPARE(ReadSettings{}.Summary(), QStringLiteral("Absorbance 450 nm"));
        QCOMPARE((ReadSettings{.referenceWavelength = 620, .temperature = {}}.Summary()),
                 QStringLiteral("Absorbance 450 nm, reference 620 nm"));
    }

    void writtenProtocolsReadBack()
    {
        using enum ReadSettings::Mode;
        // clang-format off
        const std::optional<ReadSettings> variants[] = {
            {}, // no read settings
            ReadSettings{.referenceWavelength = 620, .temperature = {}}, // absorbance with a reference, end point
            ReadSettings{.mode = Fluorescence, .emission = 528, .kinetic = true, .reads = 30, .interval = 45, .shaking = ReadSettings::Shaking::Orbital, .shakingTime = 10, .temperature = 37.5},
            ReadSettings{.mode = Luminescence, .integrationTime = 500, .temperature = {}}}; // ambient
        // clang-format on
        for (const std::optional<ReadSettings>& settings : variants) {
            const AssayProtocol protocol{.name = "Ünïcode <&> assay",
                                         .layout = "ELISA 96 Standard Curve.mlo",
                                         .read = settings ? settings->Summary() : "Absorbance 450 nm",
                                         .analysis = "4-parameter logistic",
                                         .units = "ng/mL",
                                         .settings = settings};
            QString error;
            const auto back = AssayProtocol::Parse(protocol.Serialise(), error);
            QVERIFY2(back, qPrintable(error));
            QCOMPARE(back->Serialise(), protocol.Serialise());
            QVERIFY(protocol.PreviewPage().contains("<h1>Ünïcode &lt;&amp;&gt; assay</h1>"));
        }
    }

    void faultsAreNamed_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("error");
        // clang-format off
        QTest::newRow("no signature") << QByteArray("[Protocol]\nName=P\n") << "Line 1: a protocol starts with \"# Nebra assay protocol\".";
        QTest::newRow("empty") << QByteArray("\n\n") << "The file is empty.";
        QTest::newRow("missing units") << QByteArray("# Nebra assay protocol\n[Protocol]\nName=P\nLayout=L.mlo\nRead=R\nAnalysis=A\n") << "The [Protocol] section gives no Units.";
        QTest::newRow("layout with folder") << QByteArray("# Nebra assay protocol\n[Protocol]\nName=P\nLayout=/x/L.mlo\nRead=R\nAnalysis=A\nUnits=U\n") << "Line 4: the layout must be a \".mlo\" file name without a folder.";
        QTest::newRow("twice") << QByteArray("# Nebra assay protocol\n[Protocol]\nName=P\nname=Q\n") << "Line 4: \"name\" is given twice.";
        QTest::newRow("not name=value") << QByteArray("# Nebra assay protocol\n[Protocol]\nName\n") << "Line 3: expected name=value.";
        QTest::newRow("unknown mode") << Head + "[Read]\nMode=Raman\n" << "Line 9: Mode must be one of: Absorbance, Fluorescence intensity, Luminescence.";
        QTest::newRow("wavelength out of range") << Head + "[Read]\nMode=Absorbance\nWavelength=1200\n" << "Line 10: Wavelength must be a whole number from 200 to 1000.";
        QTest::newRow("no wavelength") << Head + "[Read]\nMode=Absorbance\n" << "Line 8: [Read] gives no Wavelength must be a whole number from 200 to 1000.";
        QTest::newRow("emission below excitation") << Head + "[Read]\nMode=Fluorescence intensity\nExcitation=535\nEmission=485\n" << "Line 11: the emission wavelength must be longer than the excitation wavelength.";
        QTest::newRow("one kinetic read") << Head + "[Read]\nMode=Luminescence\nIntegrationTime=100\nTiming=Kinetic\nReads=1\nInterval=5\n" << "Line 12: Reads must be a whole number from 2 to 1000.";
        QTest::newRow("hot") << Head + "[Read]\nMode=Luminescence\nIntegrationTime=100\nTemperature=80\n" << "Line 11: Temperature must be Ambient or degrees Celsius from 15 to 45.";
        QTest::newRow("not UTF-8") << QByteArray("# Nebra assay protocol\n[Protocol]\nName=\xff\n") << "The file is not UTF-8 text.";
        // clang-format on
    }
    void faultsAreNamed()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, error);
        QString actual;
        QVERIFY(!AssayProtocol::Parse(content, actual));
        QCOMPARE(actual, error);
    }
};

QTEST_GUILESS_MAIN(AssayProtocolTest)
#include "AssayProtocolTest.moc"
