#pragma once

#include "AssayProtocol.h"

#include <QWizardPage>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QRadioButton;
class QSpinBox;
class QStackedWidget;

namespace nebra {

class PlateLayoutViewer;

// The protocol's name: a valid file name not yet used in the Protocols folder.
class ProtocolNamePage : public QWizardPage
{
    Q_OBJECT
public:
    ProtocolNamePage(QString protocolsFolder, QWidget* parent = nullptr);
    bool isComplete() const override;
    QString name() const;

private:
    QString m_folder;
    QLineEdit* m_name;
    QLabel* m_problem;
};

// The plate layout, chosen from the Microplate Layouts folder and drawn.
class LayoutPage : public QWizardPage
{
    Q_OBJECT
public:
    LayoutPage(QString layoutsFolder, QString preferred, QWidget* parent = nullptr);
    void initializePage() override;
    bool isComplete() const override;
    QString layout() const;

private:
    void show(const QString& fileName);

    QString m_folder;
    QString m_preferred;
    QListWidget* m_list;
    PlateLayoutViewer* m_viewer;
    QLabel* m_empty;
};

// Read mode and its wavelengths, filters or integration time.
class ReadModePage : public QWizardPage
{
    Q_OBJECT
public:
    explicit ReadModePage(QWidget* parent = nullptr);
    bool validatePage() override;
    void apply(ReadSettings& settings) const;

private:
    QWidget* absorbancePane();
    QWidget* fluorescencePane();
    QWidget* luminescencePane();

    QComboBox* m_mode;
    QStackedWidget* m_panes;
    QSpinBox* m_wavelength;
    QCheckBox* m_useReference;
    QSpinBox* m_reference;
    QSpinBox* m_excitation;
    QSpinBox* m_emission;
    QSpinBox* m_integration;
    QLabel* m_problem;
};

// End point or kinetic, shaking before each read, and the temperature.
class TimingPage : public QWizardPage
{
    Q_OBJECT
public:
    explicit TimingPage(QWidget* parent = nullptr);
    void apply(ReadSettings& settings) const;

private:
    QWidget* kineticBox();
    QWidget* conditionsBox();

    QRadioButton* m_endPoint;
    QRadioButton* m_kinetic;
    QSpinBox* m_reads;
    QSpinBox* m_interval;
    QComboBox* m_shaking;
    QSpinBox* m_shakingTime;
    QCheckBox* m_controlTemperature;
    QDoubleSpinBox* m_temperature;
};

// Analysis and units, a summary, and whether to open the new protocol.
class AnalysisPage : public QWizardPage
{
    Q_OBJECT
public:
    explicit AnalysisPage(QWidget* parent = nullptr);
    void initializePage() override;
    bool isComplete() const override;
    QString analysis() const;
    QString units() const;
    bool openInEditor() const;
    void showProblem(const QString& text);

private:
    QComboBox* m_analysis;
    QComboBox* m_units;
    QCheckBox* m_open;
    QLabel* m_summary;
    QLabel* m_problem;
};

} // namespace nebra
