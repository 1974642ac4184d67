#include "EditorPanel.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

namespace nebra {

namespace {
// Every control is named for screen readers after the text of its row.
template <typename Control> Control* named(Control* control, const QString& caption)
{
    control->setAccessibleName(caption);
    return control;
}

QPushButton* button(const QString& text, const QString& caption)
{
    auto* result = new QPushButton(text);
    result->setAccessibleName(caption);
    return result;
}
} // namespace

EditorPanel::EditorPanel(QWidget* parent) : QWidget(parent)
{
    setAccessibleName(QStringLiteral("Layout controls"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(makeLayoutGroup());
    layout->addWidget(makeWellsGroup());
    layout->addWidget(makeNumberingGroup());
    layout->addWidget(makeSeriesGroup());
    layout->addStretch();
}

QWidget* EditorPanel::makeLayoutGroup()
{
    auto* group = new QGroupBox(QStringLiteral("Layout"));
    auto* form = new QFormLayout(group);
    m_name = named(new QLineEdit, QStringLiteral("Layout name"));
    m_format = named(new QComboBox, QStringLiteral("Plate format"));
    for (const PlateFormat& format : PlateLayout::supportedFormats())
        m_format->addItem(QStringLiteral("%1 wells (%2 x %3)")
                              .arg(format.rows * format.columns)
                              .arg(format.rows)
                              .arg(format.columns),
                          QSize(format.columns, format.rows));
    form->addRow(QStringLiteral("&Name:"), m_name);
    form->addRow(QStringLiteral("&Plate:"), m_format);
    connect(m_name, &QLineEdit::editingFinished, this, [this] { Q_EMIT renameRequested(m_name->text()); });
    connect(m_format, &QComboBox::activated, this, [this](int index) {
        const QSize size = m_format->itemData(index).toSize();
        Q_EMIT formatRequested(size.height(), size.width());
    });
    return group;
}

QWidget* EditorPanel::makeWellsGroup()
{
    auto* group = new QGroupBox(QStringLiteral("Selected wells"));
    auto* form = new QFormLayout(group);
    m_role = named(new QComboBox, QStringLiteral("Role"));
    for (WellRole role :
         {WellRole::Sample, WellRole::Standard, WellRole::Control, WellRole::Blank, WellRole::Empty}) {
        QString text = PlateLayout::roleName(role);
        text[0] = text[0].toUpper();
        m_role->addItem(text, int(role));
    }
    m_label = named(new QLineEdit, QStringLiteral("Label"));
    QPushButton* assignRole = button(QStringLiteral("Assign &role"), QStringLiteral("Assign role"));
    QPushButton* assignLabel = button(QStringLiteral("Assign &label"), QStringLiteral("Assign label"));
    form->addRow(QStringLiteral("R&ole:"), m_role);
    form->addRow(QString(), assignRole);
    form->addRow(QStringLiteral("La&bel:"), m_label);
    form->addRow(QString(), assignLabel);
    connect(assignRole, &QPushButton::clicked, this, &EditorPanel::roleRequested);
    connect(assignLabel, &QPushButton::clicked, this, &EditorPanel::labelRequested);
    connect(m_label, &QLineEdit::returnPressed, this, &EditorPanel::labelRequested);
    return group;
}

QWidget* EditorPanel::makeNumberingGroup()
{
    auto* group = new QGroupBox(QStringLiteral("Sample numbering"));
    auto* form = new QFormLayout(group);
    m_order = named(new QComboBox, QStringLiteral("Numbering order"));
    m_order->addItems({QStringLiteral("Row by row"), QStringLiteral("Column by column")});
    m_prefix = named(new QLineEdit(QStringLiteral("U")), QStringLiteral("Sample label prefix"));
    QPushButton* number = button(QStringLiteral("&Number samples"), QStringLiteral("Number samples"));
    form->addRow(QStringLiteral("O&rder:"), m_order);
    form->addRow(QStringLiteral("Pre&fix:"), m_prefix);
    form->addRow(QString(), number);
    connect(number, &QPushButton::clicked, this, &EditorPanel::numberingRequested);
    return group;
}

QWidget* EditorPanel::makeSeriesGroup()
{
    auto* group = new QGroupBox(QStringLiteral("Standards series"));
    auto* form = new QFormLayout(group);
    m_first = named(new QDoubleSpinBox, QStringLiteral("First concentration"));
    m_first->setRange(0.000001, 1e9);
    m_first->setDecimals(6);
    m_first->setValue(100);
    m_factor = named(new QDoubleSpinBox, QStringLiteral("Dilution factor"));
    m_factor->setRange(1, 1000);
    m_factor->setValue(2);
    m_points = named(new QSpinBox, QStringLiteral("Number of points"));
    m_points->setRange(1, 48);
    m_points->setValue(8);
    m_replicates = named(new QSpinBox, QStringLiteral("Replicates"));
    m_replicates->setRange(1, 32);
    m_replicates->setValue(2);
    m_direction = named(new QComboBox, QStringLiteral("Series direction"));
    m_direction->addItems({QStringLiteral("Down the columns"), QStringLiteral("Along the rows")});
    m_seriesPrefix = named(new QLineEdit(QStringLiteral("S")), QStringLiteral("Standard label prefix"));
    QPushButton* fill = button(QStringLiteral("&Fill series"), QStringLiteral("Fill series"));
    form->addRow(QStringLiteral("First &concentration:"), m_first);
    form->addRow(QStringLiteral("&Dilution factor:"), m_factor);
    form->addRow(QStringLiteral("Poin&ts:"), m_points);
    form->addRow(QStringLiteral("Replicate&s:"), m_replicates);
    form->addRow(QStringLiteral("Dir&ection:"), m_direction);
    form->addRow(QStringLiteral("Label pr&efix:"), m_seriesPrefix);
    form->addRow(QString(), fill);
    connect(fill, &QPushButton::clicked, this, &EditorPanel::seriesRequested);
    return group;
}

void EditorPanel::showLayout(const PlateLayout& layout)
{
    const QSignalBlocker nameBlocker(m_name);
    const QSignalBlocker formatBlocker(m_format);
    if (!m_name->hasFocus() && m_name->text() != layout.name())
        m_name->setText(layout.name());
    m_format->setCurrentIndex(m_format->findData(QSize(layout.columns(), layout.rows())));
}

WellRole EditorPanel::role() const
{
    return static_cast<WellRole>(m_role->currentData().toInt());
}

QString EditorPanel::label() const
{
    return m_label->text();
}

bool EditorPanel::numberByColumns() const
{
    return m_order->currentIndex() == 1;
}

QString EditorPanel::samplePrefix() const
{
    return m_prefix->text().trimmed();
}

StandardSeries EditorPanel::series() const
{
    StandardSeries series;
    series.firstConcentration = m_first->value();
    series.dilutionFactor = m_factor->value();
    series.points = m_points->value();
    series.replicates = m_replicates->value();
    series.direction = m_direction->currentIndex() == 0 ? StandardSeries::Direction::AcrossColumns
                                                        : StandardSeries::Direction::AcrossRows;
    series.labelPrefix = m_seriesPrefix->text().trimmed();
    return series;
}

} // namespace nebra
