// The timing and analysis pages of the Generic wizard.
#include "GenericWizard.h"
#include "GenericWizardPages.h"
#include "PageControls.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace nebra {

namespace {

using pagecontrols::named;
using pagecontrols::spin;

// The units a result is given in when nothing is calculated from the readings.
QString rawUnits(ReadSettings::Mode mode)
{
    return mode == ReadSettings::Mode::Absorbance     ? QStringLiteral("OD")
           : mode == ReadSettings::Mode::Fluorescence ? QStringLiteral("RFU")
                                                      : QStringLiteral("RLU");
}

} // namespace

TimingPage::TimingPage(QWidget* parent) : QWizardPage(parent)
{
    setTitle(QStringLiteral("Timing and conditions"));
    setSubTitle(QStringLiteral(
        "One read at the end point, or a series of reads over time; shaking and temperature."));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(kineticBox());
    layout->addWidget(conditionsBox());
    layout->addStretch(1);
}

QWidget* TimingPage::kineticBox()
{
    auto* box = named(new QGroupBox(QStringLiteral("Reads")), "fraReads", QStringLiteral("Reads"));
    m_endPoint = named(new QRadioButton(QStringLiteral("&End point: one read")), "optEndPoint",
                       QStringLiteral("End point"));
    m_kinetic = named(new QRadioButton(QStringLiteral("&Kinetic: a series of reads")), "optKinetic",
                      QStringLiteral("Kinetic"));
    m_endPoint->setChecked(true);
    m_reads = spin("spnReads", QStringLiteral("Number of reads"), 2, 1000, 30, QString());
    m_interval =
        spin("spnInterval", QStringLiteral("Interval between reads"), 1, 86400, 60, QStringLiteral(" s"));
    m_reads->setEnabled(false);
    m_interval->setEnabled(false);
    connect(m_kinetic, &QRadioButton::toggled, m_reads, &QWidget::setEnabled);
    connect(m_kinetic, &QRadioButton::toggled, m_interval, &QWidget::setEnabled);
    auto* form = new QFormLayout(box);
    form->addRow(m_endPoint);
    form->addRow(m_kinetic);
    form->addRow(QStringLiteral("Number of &reads:"), m_reads);
    form->addRow(QStringLiteral("&Interval:"), m_interval);
    return box;
}

QWidget* TimingPage::conditionsBox()
{
    auto* box =
        named(new QGroupBox(QStringLiteral("Conditions")), "fraConditions", QStringLiteral("Conditions"));
    m_shaking = named(new QComboBox, "cboShaking", QStringLiteral("Shaking"));
    for (auto shaking : {ReadSettings::Shaking::None, ReadSettings::Shaking::Linear,
                         ReadSettings::Shaking::Orbital, ReadSettings::Shaking::DoubleOrbital})
        m_shaking->addItem(ReadSettings::shakingName(shaking));
    m_shakingTime = spin("spnShakingTime", QStringLiteral("Shaking time"), 1, 600, 5, QStringLiteral(" s"));
    m_shakingTime->setEnabled(false);
    connect(m_shaking, &QComboBox::currentIndexChanged, m_shakingTime,
            [this](int index) { m_shakingTime->setEnabled(index > 0); });
    m_controlTemperature = named(new QCheckBox(QStringLiteral("&Control the temperature:")), "chkTemperature",
                                 QStringLiteral("Control the temperature"));
    m_temperature =
        named(new QDoubleSpinBox, "spnTemperature", QStringLiteral("Temperature in degrees Celsius"));
    m_temperature->setRange(15.0, 45.0);
    m_temperature->setDecimals(1);
    m_temperature->setSingleStep(0.5);
    m_temperature->setValue(37.0);
    m_temperature->setSuffix(QStringLiteral(" °C"));
    m_temperature->setEnabled(false);
    connect(m_controlTemperature, &QCheckBox::toggled, m_temperature, &QWidget::setEnabled);
    auto* form = new QFormLayout(box);
    form->addRow(QStringLiteral("&Shaking before each read:"), m_shaking);
    form->addRow(QStringLiteral("Shaking &time:"), m_shakingTime);
    form->addRow(m_controlTemperature, m_temperature);
    return box;
}

void TimingPage::apply(ReadSettings& settings) const
{
    settings.kinetic = m_kinetic->isChecked();
    settings.reads = m_reads->value();
    settings.interval = m_interval->value();
    settings.shaking = ReadSettings::Shaking(m_shaking->currentIndex());
    settings.shakingTime = m_shakingTime->value();
    settings.temperature.reset();
    if (m_controlTemperature->isChecked())
        settings.temperature = m_temperature->value();
}

AnalysisPage::AnalysisPage(QWidget* parent)
    : QWizardPage(parent), m_analysis(named(new QComboBox, "cboAnalysis", QStringLiteral("Analysis"))),
      m_units(named(new QComboBox, "cboUnits", QStringLiteral("Units"))),
      m_open(named(new QCheckBox(QStringLiteral("&Open the new protocol in the assay application")),
                   "chkOpenInEditor", QStringLiteral("Open the new protocol in the assay application"))),
      m_summary(named(new QLabel, "lblSummary", QStringLiteral("Summary"))),
      m_problem(named(new QLabel, "lblSaveProblem", QStringLiteral("Problem")))
{
    setTitle(QStringLiteral("Analysis"));
    setSubTitle(QStringLiteral("How results are calculated from the readings, and their units."));
    setFinalPage(true);
    m_analysis->addItems({QStringLiteral("None"), QStringLiteral("Linear regression"),
                          QStringLiteral("4-parameter logistic")});
    m_units->setEditable(true);
    m_units->addItems({QStringLiteral("ug/mL"), QStringLiteral("ng/mL"), QStringLiteral("pg/mL"),
                       QStringLiteral("mg/mL"), QStringLiteral("U/mL"), QStringLiteral("mM"),
                       QStringLiteral("uM"), QStringLiteral("OD"), QStringLiteral("RFU"),
                       QStringLiteral("RLU")});
    m_summary->setWordWrap(true);
    m_summary->setTextFormat(Qt::PlainText);
    m_problem->setWordWrap(true);
    m_problem->setStyleSheet(QStringLiteral("color:#a4262c"));
    auto* form = new QFormLayout(this);
    form->addRow(QStringLiteral("&Analysis:"), m_analysis);
    form->addRow(QStringLiteral("&Units:"), m_units);
    form->addRow(m_summary);
    form->addRow(m_open);
    form->addRow(m_problem);
    connect(m_units, &QComboBox::currentTextChanged, this, &QWizardPage::completeChanged);
    connect(m_analysis, &QComboBox::currentIndexChanged, this, [this](int index) {
        auto* generic = static_cast<GenericWizard*>(wizard());
        m_units->setCurrentText(index == 0 ? rawUnits(generic->protocol().settings->mode)
                                           : QStringLiteral("ug/mL"));
    });
}

void AnalysisPage::initializePage()
{
    auto* generic = static_cast<GenericWizard*>(wizard());
    if (m_analysis->currentIndex() == 0)
        m_units->setCurrentText(rawUnits(generic->protocol().settings->mode));
    const AssayProtocol protocol = generic->protocol();
    m_summary->setText(
        QStringLiteral("%1\nLayout: %2\nRead: %3").arg(protocol.name, protocol.layout, protocol.read));
    m_problem->clear();
}

bool AnalysisPage::isComplete() const
{
    return !units().isEmpty();
}

QString AnalysisPage::analysis() const
{
    return m_analysis->currentText();
}
QString AnalysisPage::units() const
{
    return m_units->currentText().trimmed();
}
bool AnalysisPage::openInEditor() const
{
    return m_open->isChecked();
}
void AnalysisPage::showProblem(const QString& text)
{
    m_problem->setText(text);
}

} // namespace nebra
