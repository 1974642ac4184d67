#pragma once

#include "AuditQuery.h"

#include <QTimer>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLineEdit;
class QPushButton;

namespace nebra {

// The audit trail viewer's filter: a range of days (each end optional),
// the user, the area and a part of the text. Each change is announced at
// once, except typing in the user and text boxes, which waits for a pause
// of TextDelayMs so that a long trail is not searched at every keystroke.
// A filter is announced only when it differs from the one announced last.
class AuditFilterBar : public QWidget
{
    Q_OBJECT
public:
    static constexpr int TextDelayMs = 250;

    explicit AuditFilterBar(const QStringList& areas, QWidget* parent = nullptr);

    // The filter the controls show now; the days are the user's local days,
    // the end day included.
    AuditFilter filter() const;
    // Empties every control and announces the empty filter once.
    void clear();

Q_SIGNALS:
    void filterChanged(const nebra::AuditFilter& filter);

private:
    struct DateNames
    {
        QString caption;
        QString name;
        QString checkAccessible;
        QString dateAccessible;
    };
    void createDateControls(const DateNames& names, QCheckBox*& check, QDateEdit*& date);
    void createLayout();
    void connectControls();
    void announce();

    QCheckBox* m_useFrom = nullptr;
    QDateEdit* m_from = nullptr;
    QCheckBox* m_useTo = nullptr;
    QDateEdit* m_to = nullptr;
    QLineEdit* m_user = nullptr;
    QComboBox* m_area = nullptr;
    QLineEdit* m_text = nullptr;
    QPushButton* m_clear = nullptr;
    QTimer m_textDelay;
    bool m_clearing = false;
    AuditFilter m_announced;
};

} // namespace nebra
