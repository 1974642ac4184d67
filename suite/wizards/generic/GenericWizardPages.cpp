#include "GenericWizardPages.h"
#include "PageControls.h"

#include "GenericWizard.h"
#include "PlateLayoutViewer.h"
#include "ProtocolFiles.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QRadioButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace nebra {

namespace {

using pagecontrols::named;
using pagecontrols::spin;

QLabel* problemLabel(const char* objectName)
{
    auto* label = named(new QLabel, objectName, QStringLiteral("Problem"));
    label->setWordWrap(true);
    label->setStyleSheet(QStringLiteral("color:#a4262c"));
    return label;
}

} // namespace

ProtocolNamePage::ProtocolNamePage(QString protocolsFolder, QWidget* parent)
    : QWizardPage(parent), m_folder(std::move(protocolsFolder)),
      m_name(named(new QLineEdit, "txtProtocolName", QStringLiteral("Protocol name"))),
      m_problem(problemLabel("lblNameProblem"))
{
    setTitle(QStringLiteral("Protocol name"));
    setSubTitle(QStringLiteral("The protocol is stored under this name in %1.")
                    .arg(QDir::toNativeSeparators(m_folder)));
    m_name->setMaxLength(ProtocolFiles::MaximumNameLength + 1);
    auto* layout = new QFormLayout(this);
    layout->addRow(QStringLiteral("&Name:"), m_name);
    layout->addRow(m_problem);
    connect(m_name, &QLineEdit::textChanged, this, [this] {
        m_problem->setText(m_name->text().isEmpty() ? QString() : ProtocolFiles::CheckName(m_folder, name()));
        Q_EMIT completeChanged();
    });
}

QString ProtocolNamePage::name() const
{
    return m_name->text();
}

bool ProtocolNamePage::isComplete() const
{
    return ProtocolFiles::CheckName(m_folder, name()).isEmpty();
}

LayoutPage::LayoutPage(QString layoutsFolder, QString preferred, QWidget* parent)
    : QWizardPage(parent), m_folder(std::move(layoutsFolder)), m_preferred(std::move(preferred)),
      m_list(named(new QListWidget, "lstLayouts", QStringLiteral("Plate layouts"))),
      m_viewer(named(new PlateLayoutViewer, "PlateLayoutViewer1", QStringLiteral("Plate layout"))),
      m_empty(named(new QLabel, "lblNoLayouts", QStringLiteral("No layouts")))
{
    setTitle(QStringLiteral("Plate layout"));
    setSubTitle(QStringLiteral(
        "Choose the layout of the plate: which wells hold blanks, standards, controls and samples."));
    m_empty->setWordWrap(true);
    auto* layout = new QHBoxLayout(this);
    auto* left = new QVBoxLayout;
    left->addWidget(m_list);
    left->addWidget(m_empty);
    layout->addLayout(left, 1);
    layout->addWidget(m_viewer, 2);
    connect(m_list, &QListWidget::currentTextChanged, this, [this](const QString& text) {
        show(text);
        Q_EMIT completeChanged();
    });
}

void LayoutPage::initializePage()
{
    m_list->clear();
    const QStringList files = QDir(m_folder).entryList({QStringLiteral("*.mlo")}, QDir::Files, QDir::Name);
    m_list->addItems(files);
    m_empty->setText(files.isEmpty() ? QStringLiteral("There are no layouts in %1. Make one with the layout "
                                                      "editor first.")
                                           .arg(QDir::toNativeSeparators(m_folder))
                                     : QString());
    const int preferred = int(files.indexOf(m_preferred));
    if (!files.isEmpty())
        m_list->setCurrentRow(preferred >= 0 ? preferred : 0);
}

void LayoutPage::show(const QString& fileName)
{
    if (fileName.isEmpty())
        m_viewer->clear();
    else
        m_viewer->LoadFile(m_folder + QLatin1Char('/') + fileName);
}

bool LayoutPage::isComplete() const
{
    return m_list->currentItem() && m_viewer->hasPlateLayout();
}

QString LayoutPage::layout() const
{
    return m_list->currentItem() ? m_list->currentItem()->text() : QString();
}

ReadModePage::ReadModePage(QWidget* parent)
    : QWizardPage(parent), m_mode(named(new QComboBox, "cboReadMode", QStringLiteral("Read mode"))),
      m_panes(named(new QStackedWidget, "stkReadSettings", QStringLiteral("Read settings"))),
      m_problem(problemLabel("lblReadProblem"))
{
    setTitle(QStringLiteral("Read mode"));
    setSubTitle(QStringLiteral("How the reader measures each well."));
    for (auto mode :
         {ReadSettings::Mode::Absorbance, ReadSettings::Mode::Fluorescence, ReadSettings::Mode::Luminescence})
        m_mode->addItem(ReadSettings::modeName(mode));
    m_panes->addWidget(absorbancePane());
    m_panes->addWidget(fluorescencePane());
    m_panes->addWidget(luminescencePane());
    connect(m_mode, &QComboBox::currentIndexChanged, m_panes, &QStackedWidget::setCurrentIndex);
    auto* layout = new QFormLayout(this);
    layout->addRow(QStringLiteral("&Mode:"), m_mode);
    layout->addRow(m_panes);
    layout->addRow(m_problem);
}

QWidget* ReadModePage::absorbancePane()
{
    auto* pane = new QWidget;
    auto* form = new QFormLayout(pane);
    m_wavelength = spin("spnWavelength", QStringLiteral("Wavelength"), 200, 1000, 450, QStringLiteral(" nm"));
    m_useReference = named(new QCheckBox(QStringLiteral("&Reference wavelength:")), "chkReference",
                           QStringLiteral("Reference wavelength"));
    m_reference = spin("spnReference", QStringLiteral("Reference wavelength in nm"), 200, 1000, 620,
                       QStringLiteral(" nm"));
    m_reference->setEnabled(false);
    connect(m_useReference, &QCheckBox::toggled, m_reference, &QWidget::setEnabled);
    form->addRow(QStringLiteral("&Wavelength:"), m_wavelength);
    form->addRow(m_useReference, m_reference);
    return pane;
}

QWidget* ReadModePage::fluorescencePane()
{
    auto* pane = new QWidget;
    auto* form = new QFormLayout(pane);
    m_excitation = spin("spnExcitation", QStringLiteral("Excitation"), 200, 1000, 485, QStringLiteral(" nm"));
    m_emission = spin("spnEmission", QStringLiteral("Emission"), 200, 1000, 535, QStringLiteral(" nm"));
    form->addRow(QStringLiteral("&Excitation filter:"), m_excitation);
    form->addRow(QStringLiteral("E&mission filter:"), m_emission);
    return pane;
}

QWidget* ReadModePage::luminescencePane()
{
    auto* pane = new QWidget;
    auto* form = new QFormLayout(pane);
    m_integration =
        spin("spnIntegration", QStringLiteral("Integration time"), 10, 60000, 1000, QStringLiteral(" ms"));
    form->addRow(QStringLiteral("&Integration time:"), m_integration);
    return pane;
}

bool ReadModePage::validatePage()
{
    ReadSettings settings;
    apply(settings);
    QString problem;
    if (settings.mode == ReadSettings::Mode::Absorbance &&
        settings.referenceWavelength == settings.wavelength)
        problem = QStringLiteral("The reference wavelength must differ from the measuring wavelength.");
    if (settings.mode == ReadSettings::Mode::Fluorescence && settings.emission <= settings.excitation)
        problem = QStringLiteral("The emission wavelength must be longer than the excitation wavelength.");
    m_problem->setText(problem);
    return problem.isEmpty();
}

void ReadModePage::apply(ReadSettings& settings) const
{
    settings.mode = ReadSettings::Mode(m_mode->currentIndex());
    settings.wavelength = m_wavelength->value();
    settings.referenceWavelength = m_useReference->isChecked() ? m_reference->value() : 0;
    settings.excitation = m_excitation->value();
    settings.emission = m_emission->value();
    settings.integrationTime = m_integration->value();
}

} // namespace nebra
