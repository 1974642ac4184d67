#include "GenericWizard.h"
#include "AssayProtocol.h"
#include "AssayProtocolWizard.h"
#include "Controls.h"
#include "PlateLayoutViewer.h"
#include "SpecialFiles.h"
#include "WizardPlugins.h"

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

class GenericWizardTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<GenericWizard> m_wizard;

    QString protocols() const { return m_dir->filePath(QStringLiteral("Protocols")); }
    QString layouts() const { return m_dir->filePath(QStringLiteral("Microplate Layouts")); }

    template <typename T> T* control(const char* name) const { return test::control<T>(*m_wizard, name); }
    bool nextEnabled() const { return m_wizard->button(QWizard::NextButton)->isEnabled(); }
    GenericWizard& start(const QString& preferredLayout = {})
    {
        m_wizard = std::make_unique<GenericWizard>(protocols(), layouts(), preferredLayout);
        m_wizard->show();
        return *m_wizard;
    }
    void toLayoutPage()
    {
        control<QLineEdit>("txtProtocolName")->setText(QStringLiteral("A"));
        m_wizard->next();
    }
    // Fills the pages up to the last one with a fluorescence kinetic read.
    void fillUpToAnalysis(const QString& name)
    {
        control<QLineEdit>("txtProtocolName")->setText(name);
        m_wizard->next();
        m_wizard->next();
        control<QComboBox>("cboReadMode")->setCurrentIndex(1);
        control<QSpinBox>("spnExcitation")->setValue(485);
        control<QSpinBox>("spnEmission")->setValue(528);
        m_wizard->next();
        control<QRadioButton>("optKinetic")->setChecked(true);
        control<QSpinBox>("spnReads")->setValue(20);
        control<QSpinBox>("spnInterval")->setValue(30);
        control<QComboBox>("cboShaking")->setCurrentText(QStringLiteral("Orbital"));
        control<QSpinBox>("spnShakingTime")->setValue(10);
        control<QCheckBox>("chkTemperature")->setChecked(true);
        control<QDoubleSpinBox>("spnTemperature")->setValue(37.0);
        m_wizard->next();
    }

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QDir(m_dir->path()).mkpath(QStringLiteral("Protocols"));
        QDir(m_dir->path()).mkpath(QStringLiteral("Microplate Layouts"));
        const QDir examples(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") +
                            QStringLiteral("/Example Assays/Microplate Layouts"));
        for (const QString& file : examples.entryList(QDir::Files))
            QVERIFY(QFile::copy(examples.filePath(file), layouts() + QLatin1Char('/') + file));
        QFile existing(protocols() + QStringLiteral("/Existing.apr"));
        QVERIFY(existing.open(QIODevice::WriteOnly));
    }
    void cleanup() { m_wizard.reset(); }

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
        start();
        control<QLineEdit>("txtProtocolName")->setText(name);
        QCOMPARE(control<QLabel>("lblNameProblem")->text(), problem);
        QCOMPARE(nextEnabled(), problem.isEmpty() && !name.isEmpty());
    }

    void layoutPageShowsTheChosenLayout()
    {
        start(QStringLiteral("Kinetic 384.mlo"));
        toLayoutPage();
        QCOMPARE(control<QListWidget>("lstLayouts")->count(), 3);
        QCOMPARE(control<QListWidget>("lstLayouts")->currentItem()->text(),
                 QStringLiteral("Kinetic 384.mlo"));
        const auto* viewer = control<PlateLayoutViewer>("PlateLayoutViewer1");
        QVERIFY2(viewer->hasPlateLayout(), qPrintable(viewer->errorText()));
        QCOMPARE(viewer->plateLayout()->rows(), 16);
        QVERIFY(nextEnabled());
    }

    // A pipe or a socket named like a layout is not offered, even when it
    // is the layout asked for, and nothing waits on the pipe.
    void pipesAndSocketsAreNotOffered()
    {
        test::makeFifo(layouts() + QStringLiteral("/A pipe.mlo"));
        const test::BoundSocket socket(layouts() + QStringLiteral("/A socket.mlo"));
        QVERIFY(socket.isBound());
        const test::PipeWatchdog watchdog(layouts() + QStringLiteral("/A pipe.mlo"));
        start(QStringLiteral("A pipe.mlo"));
        toLayoutPage();
        QCOMPARE(control<QListWidget>("lstLayouts")->count(), 3);
        QVERIFY(control<QListWidget>("lstLayouts")
                    ->findItems(QStringLiteral("A "), Qt::MatchStartsWith)
                    .isEmpty());
        QVERIFY2(!watchdog.released(), "the wizard blocked on the pipe");
    }

    void noLayoutsMeansNoWayOn()
    {
        for (const QString& file : QDir(layouts()).entryList(QDir::Files))
            QVERIFY(QFile::remove(layouts() + QLatin1Char('/') + file));
        start();
        toLayoutPage();
        QVERIFY(!nextEnabled());
        QVERIFY(control<QLabel>("lblNoLayouts")->text().startsWith(QStringLiteral("There are no layouts")));
    }

    void impossibleFiltersAreRefused()
    {
        start();
        toLayoutPage();
        m_wizard->next();
        control<QComboBox>("cboReadMode")->setCurrentIndex(1);
        control<QSpinBox>("spnExcitation")->setValue(535);
        control<QSpinBox>("spnEmission")->setValue(485);
        const int page = m_wizard->currentId();
        m_wizard->next();
        QCOMPARE(m_wizard->currentId(), page);
        QVERIFY(control<QLabel>("lblReadProblem")->text().contains(QStringLiteral("emission")));
    }

    void finishWritesAProtocolThatReadsBack()
    {
        start(QStringLiteral("ELISA 96 Standard Curve.mlo"));
        fillUpToAnalysis(QStringLiteral("TNF kinetic"));
        control<QComboBox>("cboAnalysis")->setCurrentText(QStringLiteral("4-parameter logistic"));
        control<QComboBox>("cboUnits")->setCurrentText(QStringLiteral("ng/mL"));
        m_wizard->button(QWizard::FinishButton)->click();
        QCOMPARE(m_wizard->result(), int(QDialog::Accepted));
        QCOMPARE(m_wizard->NewFileName(), protocols() + QStringLiteral("/TNF kinetic.apr"));

        QString error;
        const auto protocol = AssayProtocol::Load(m_wizard->NewFileName(), error);
        QVERIFY2(protocol, qPrintable(error));
        QCOMPARE(protocol->layout, QStringLiteral("ELISA 96 Standard Curve.mlo"));
        QCOMPARE(protocol->read, QStringLiteral("Fluorescence Ex 485 nm / Em 528 nm, 20 reads every 30 s"));
        QCOMPARE(protocol->analysis, QStringLiteral("4-parameter logistic"));
        QCOMPARE(protocol->units, QStringLiteral("ng/mL"));
        QCOMPARE(protocol->settings->shaking, ReadSettings::Shaking::Orbital);
        QCOMPARE(protocol->settings->temperature.value_or(0), 37.0);
        const QFileInfo preview(protocols() + QStringLiteral("/TNF kinetic.mht"));
        QVERIFY(preview.exists());
        QVERIFY(preview.lastModified() >= QFileInfo(m_wizard->NewFileName()).lastModified());
    }

    // Without analysis the units follow the read mode; a save that fails keeps the wizard open.
    void aFailedSaveLosesNothing()
    {
        start();
        fillUpToAnalysis(QStringLiteral("Raw"));
        QCOMPARE(control<QComboBox>("cboUnits")->currentText(), QStringLiteral("RFU"));
        QVERIFY(QDir(protocols()).removeRecursively());
        QFile blocker(protocols());
        QVERIFY(blocker.open(QIODevice::WriteOnly)); // a file where the folder should be
        blocker.close();
        m_wizard->button(QWizard::FinishButton)->click();
        QVERIFY(m_wizard->isVisible());
        QVERIFY(m_wizard->NewFileName().isEmpty());
        QVERIFY2(control<QLabel>("lblSaveProblem")
                     ->text()
                     .startsWith(QStringLiteral("The protocol was not saved.")),
                 qPrintable(control<QLabel>("lblSaveProblem")->text()));
    }

    void theInstalledPluginLoads()
    {
        QString reason;
        QVERIFY2(WizardPlugins(WizardPlugins::DefaultFolder())
                     .Create(QStringLiteral("NebraWizards.Generic"), &reason),
                 qPrintable(reason));
    }
};

QTEST_MAIN(GenericWizardTest)
#include "GenericWizardTest.moc"
