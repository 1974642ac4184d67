#include "ElisaWizard.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QtTest>

using namespace nebra;

class ElisaWizardTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The shipped template is a valid protocol; the new one is the template
    // with the user's name, layout and units.
    void makesAProtocolFromTheTemplate()
    {
        const QString data = qEnvironmentVariable("NEBRA_TEST_DATA_DIR");
        QString error;
        const auto templateProtocol = AssayProtocol::Load(data + "/Wizards/ELISA/Template.apr", error);
        QVERIFY2(templateProtocol, qPrintable(error));
        QTemporaryDir protocols;
        ElisaWizard wizard(*templateProtocol, protocols.path(), data + "/Example Assays/Microplate Layouts");
        wizard.show();
        QVERIFY(!wizard.button(QWizard::FinishButton)->isEnabled());
        wizard.findChild<QLineEdit*>("txtProtocolName")->setText("IL-6 ELISA");
        wizard.findChild<QComboBox*>("cboUnits")->setCurrentText("pg/mL");
        QCOMPARE(wizard.findChild<QComboBox*>("cboLayout")->currentText(), templateProtocol->layout);
        wizard.button(QWizard::FinishButton)->click();

        const auto made = AssayProtocol::Load(wizard.NewFileName(), error);
        QVERIFY2(made, qPrintable(error));
        QCOMPARE(made->name, "IL-6 ELISA");
        QCOMPARE(made->units, "pg/mL");
        QCOMPARE(made->read, templateProtocol->read);
        QCOMPARE(made->settings->referenceWavelength, 620);
        QVERIFY(QFileInfo::exists(protocols.filePath("IL-6 ELISA.mht")));
    }
};

QTEST_MAIN(ElisaWizardTest)
#include "ElisaWizardTest.moc"
