#include "GenericWizard.h"
#include "AssayProtocol.h"
#include "Controls.h"
#include "PlateLayoutViewer.h"
#include "SpecialFiles.h"
#include "TestFiles.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QRadioButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace nebra;

namespace {

// A folder of protocols (one, "Existing.apr") and of the example layouts, and
// the wizard over them once started.
struct Wizard
{
    QTemporaryDir dir;
    std::unique_ptr<GenericWizard> wizard;

    Wizard()
    {
        QDir(dir.path()).mkpath("Protocols");
        QDir(dir.path()).mkpath("Microplate Layouts");
        const QDir examples(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") +
                            "/Example Assays/Microplate Layouts");
        for (const QString& file : examples.entryList(QDir::Files))
            QVERIFY(QFile::copy(examples.filePath(file), layouts() + QLatin1Char('/') + file));
        test::writeFile(protocols() + "/Existing.apr");
    }

    QString protocols() const { return dir.filePath("Protocols"); }
    QString layouts() const { return dir.filePath("Microplate Layouts"); }

    template <typename T> T* control(const char* name) const { return test::control<T>(*wizard, name); }
    bool nextEnabled() const { return wizard->button(QWizard::NextButton)->isEnabled(); }
    GenericWizard& start(const QString& preferredLayout = {})
    {
        wizard = std::make_unique<GenericWizard>(protocols(), layouts(), preferredLayout);
        wizard->show();
        return *wizard;
    }
    void toLayoutPage(const QString& name = QStringLiteral("A"))
    {
        control<QLineEdit>("txtProtocolName")->setText(name);
        wizard->next();
    }
};

} // namespace

class GenericWizardTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void protocolName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("problem"); // empty: accepted
        // clang-format off
        QTest::newRow("plain") << "TNF-alpha ELISA (plate 2)" << "";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("slash") << "a/b" << "A name cannot hold the character \"/\".";
        QTest::newRow("colon") << "a:b" << "A name cannot hold the character \":\".";
        QTest::newRow("hidden") << ".apr" << "The name must not begin or end with a full stop.";
        QTest::newRow("blank at the end") << "Assay " << "The name must not begin or end with a blank.";
        QTest::newRow("taken") << "Existing" << "A protocol named \"Existing\" already exists.";
        QTest::newRow("too long") << QString(101, QLatin1Char('x')) << "The name is longer than 100 characters.";
        // clang-format on
    }
    void protocolName()
    {
        QFETCH(QString, name);
        QFETCH(QString, problem);
        Wizard o;
        o.start();
        o.control<QLineEdit>("txtProtocolName")->setText(name);
        QCOMPARE(o.control<QLabel>("lblNameProblem")->text(), problem);
        QCOMPARE(o.nextEnabled(), problem.isEmpty() && !name.isEmpty());
    }

    // A pipe or a socket named like a layout is not offered, even when it
    // is the layout asked for, and nothing waits on the pipe.
    void theLayoutPageOffersReadableLayoutsShowsTheChosenOneAndRefusesImpossibleFilters()
    {
        Wizard o;
        test::makeFifo(o.layouts() + "/A pipe.mlo");
        const test::BoundSocket socket(o.layouts() + "/A socket.mlo");
        QVERIFY(socket.isBound());
        const test::PipeWatchdog watchdog(o.layouts() + "/A pipe.mlo");
        o.start("A pipe.mlo");
        o.toLayoutPage();
        QCOMPARE(o.control<QListWidget>("lstLayouts")->count(), 3);
        QVERIFY(o.control<QListWidget>("lstLayouts")->findItems("A ", Qt::MatchStartsWith).isEmpty());
        QVERIFY2(!watchdog.released(), "the wizard blocked on the pipe");
        // The layout asked for is chosen and shown.
        o.start("Kinetic 384.mlo");
        o.toLayoutPage();
        QCOMPARE(o.control<QListWidget>("lstLayouts")->currentItem()->text(), "Kinetic 384.mlo");
        const auto* viewer = o.control<PlateLayoutViewer>("PlateLayoutViewer1");
        QVERIFY2(viewer->hasPlateLayout(), qPrintable(viewer->errorText()));
        QCOMPARE(viewer->plateLayout()->rows(), 16);
        QVERIFY(o.nextEnabled());
        // Filters that cannot be are refused.
        o.wizard->next();
        o.control<QComboBox>("cboReadMode")->setCurrentIndex(1);
        o.control<QSpinBox>("spnExcitation")->setValue(535);
        o.control<QSpinBox>("spnEmission")->setValue(485);
        const int page = o.wizard->currentId();
        o.wizard->next();
        QCOMPARE(o.wizard->currentId(), page);
        QVERIFY(o.control<QLabel>("lblReadProblem")->text().contains("emission"));
        // Without a layout that can be read there is no way on.
        for (const QString& file : QDir(o.layouts()).entryList(QDir::Files))
            QVERIFY(QFile::remove(o.layouts() + QLatin1Char('/') + file));
        o.start();
        o.toLayoutPage();
        QVERIFY(!o.nextEnabled());
        QVERIFY(o.control<QLabel>("lblNoLayouts")->text().startsWith("There are no layouts"));
    }

    // Without analysis the units follow the read mode; a save that fails keeps the wizard open, and
    // Finish once the folder is back writes a protocol that reads back.
    void aFailedSaveLosesNothingAndFinishWritesAProtocolThatReadsBack()
    {
        Wizard o;
        o.start("ELISA 96 Standard Curve.mlo");
        // Up to the last page with a fluorescence kinetic read.
        o.toLayoutPage("TNF kinetic");
        o.wizard->next();
        o.control<QComboBox>("cboReadMode")->setCurrentIndex(1);
        o.control<QSpinBox>("spnExcitation")->setValue(485);
        o.control<QSpinBox>("spnEmission")->setValue(528);
        o.wizard->next();
        o.control<QRadioButton>("optKinetic")->setChecked(true);
        o.control<QSpinBox>("spnReads")->setValue(20);
        o.control<QSpinBox>("spnInterval")->setValue(30);
        o.control<QComboBox>("cboShaking")->setCurrentText("Orbital");
        o.control<QSpinBox>("spnShakingTime")->setValue(10);
        o.control<QCheckBox>("chkTemperature")->setChecked(true);
        o.control<QDoubleSpinBox>("spnTemperature")->setValue(37.0);
        o.wizard->next();
        QCOMPARE(o.control<QComboBox>("cboUnits")->currentText(), "RFU");
        QVERIFY(QDir(o.protocols()).removeRecursively());
        test::writeFile(o.protocols()); // a file where the folder should be
        o.wizard->button(QWizard::FinishButton)->click();
        QVERIFY(o.wizard->isVisible() && o.wizard->NewFileName().isEmpty());
        QVERIFY2(o.control<QLabel>("lblSaveProblem")->text().startsWith("The protocol was not saved."),
                 qPrintable(o.control<QLabel>("lblSaveProblem")->text()));
        QVERIFY(QFile::remove(o.protocols()) && QDir(o.dir.path()).mkdir("Protocols"));
        o.control<QComboBox>("cboAnalysis")->setCurrentText("4-parameter logistic");
        o.control<QComboBox>("cboUnits")->setCurrentText("ng/mL");
        o.wizard->button(QWizard::FinishButton)->click();
        QCOMPARE(o.wizard->result(), int(QDialog::Accepted));
        QCOMPARE(o.wizard->NewFileName(), o.protocols() + "/TNF kinetic.apr");

        QString error;
        const auto protocol = AssayProtocol::Load(o.wizard->NewFileName(), error);
        QVERIFY2(protocol, qPrintable(error));
        QCOMPARE(protocol->layout, "ELISA 96 Standard Curve.mlo");
        QCOMPARE(protocol->read, "Fluorescence Ex 485 nm / Em 528 nm, 20 reads every 30 s");
        QCOMPARE(protocol->analysis, "4-parameter logistic");
        QCOMPARE(protocol->units, "ng/mL");
        QCOMPARE(protocol->settings->shaking, ReadSettings::Shaking::Orbital);
        QCOMPARE(protocol->settings->temperature.value_or(0), 37.0);
        const QFileInfo preview(o.protocols() + "/TNF kinetic.mht");
        QVERIFY(preview.exists());
        QVERIFY(preview.lastModified() >= QFileInfo(o.wizard->NewFileName()).lastModified());
    }
};

QTEST_MAIN(GenericWizardTest)
#include "GenericWizardTest.moc"
