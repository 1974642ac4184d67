#pragma once

#include "PlateLayout.h"
#include "StandardSeries.h"

#include <QWidget>

class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace nebra {

// The editor's controls beside the plate: the layout's name and plate
// format, the role and label for the selected wells, the numbering of
// samples and a standards series. It only collects input and says what was
// asked for; the window carries it out on the document.
class EditorPanel : public QWidget
{
    Q_OBJECT
public:
    explicit EditorPanel(QWidget* parent = nullptr);

    // Shows the layout's name and format without raising the signals.
    void showLayout(const PlateLayout& layout);

    WellRole role() const;
    QString label() const;
    bool numberByColumns() const;
    QString samplePrefix() const;
    StandardSeries series() const;

    QLineEdit* nameEdit() const { return m_name; }
    QComboBox* roleBox() const { return m_role; }
    QLineEdit* labelEdit() const { return m_label; }

Q_SIGNALS:
    void renameRequested(const QString& name);
    void formatRequested(int rows, int columns);
    void roleRequested();
    void labelRequested();
    void numberingRequested();
    void seriesRequested();

private:
    QWidget* makeLayoutGroup();
    QWidget* makeWellsGroup();
    QWidget* makeNumberingGroup();
    QWidget* makeSeriesGroup();

    QLineEdit* m_name = nullptr;
    QComboBox* m_format = nullptr;
    QComboBox* m_role = nullptr;
    QLineEdit* m_label = nullptr;
    QComboBox* m_order = nullptr;
    QLineEdit* m_prefix = nullptr;
    QDoubleSpinBox* m_first = nullptr;
    QDoubleSpinBox* m_factor = nullptr;
    QSpinBox* m_points = nullptr;
    QSpinBox* m_replicates = nullptr;
    QComboBox* m_direction = nullptr;
    QLineEdit* m_seriesPrefix = nullptr;
};

} // namespace nebra
