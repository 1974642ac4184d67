#include "AuditFilterBar.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace nebra {

AuditFilterBar::AuditFilterBar(const QStringList& areas, QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("auditFilterBar"));
    setAccessibleName(QStringLiteral("Filter"));
    createDateControls({QStringLiteral("&From"), QStringLiteral("From"), QStringLiteral("Filter from a day"),
                        QStringLiteral("From day")},
                       m_useFrom, m_from);
    createDateControls({QStringLiteral("&To"), QStringLiteral("To"), QStringLiteral("Filter to a day"),
                        QStringLiteral("To day")},
                       m_useTo, m_to);
    m_user = new QLineEdit(this);
    m_user->setObjectName(QStringLiteral("txtUser"));
    m_user->setAccessibleName(QStringLiteral("User"));
    m_user->setPlaceholderText(QStringLiteral("Any user"));
    m_user->setClearButtonEnabled(true);
    m_area = new QComboBox(this);
    m_area->setObjectName(QStringLiteral("cboArea"));
    m_area->setAccessibleName(QStringLiteral("Area"));
    m_area->addItem(QStringLiteral("Any area"), QString());
    for (const QString& area : areas)
        m_area->addItem(area, area);
    m_text = new QLineEdit(this);
    m_text->setObjectName(QStringLiteral("txtText"));
    m_text->setAccessibleName(QStringLiteral("Text"));
    m_text->setPlaceholderText(QStringLiteral("Text contains"));
    m_text->setClearButtonEnabled(true);
    m_clear = new QPushButton(QStringLiteral("C&lear"), this);
    m_clear->setObjectName(QStringLiteral("cmdClear"));
    m_clear->setAccessibleName(QStringLiteral("Clear the filter"));
    m_textDelay.setSingleShot(true);
    m_textDelay.setInterval(TextDelayMs);
    createLayout();
    connectControls();
}

void AuditFilterBar::createDateControls(const DateNames& names, QCheckBox*& check, QDateEdit*& date)
{
    check = new QCheckBox(names.caption, this);
    check->setObjectName(QStringLiteral("chk") + names.name);
    check->setAccessibleName(names.checkAccessible);
    date = new QDateEdit(QDate::currentDate(), this);
    date->setObjectName(QStringLiteral("dtp") + names.name);
    date->setAccessibleName(names.dateAccessible);
    date->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    date->setCalendarPopup(true);
    date->setEnabled(false);
    connect(check, &QCheckBox::toggled, date, &QWidget::setEnabled);
}

void AuditFilterBar::createLayout()
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    const auto labelled = [this, layout](const QString& caption, QWidget* control, int stretch) {
        auto* label = new QLabel(caption, this);
        label->setAccessibleName(control->accessibleName() + QStringLiteral(" label"));
        label->setBuddy(control);
        layout->addWidget(label);
        layout->addWidget(control, stretch);
    };
    for (QWidget* w : {static_cast<QWidget*>(m_useFrom), static_cast<QWidget*>(m_from),
                       static_cast<QWidget*>(m_useTo), static_cast<QWidget*>(m_to)})
        layout->addWidget(w);
    labelled(QStringLiteral("&User:"), m_user, 1);
    labelled(QStringLiteral("&Area:"), m_area, 0);
    labelled(QStringLiteral("Te&xt:"), m_text, 2);
    layout->addWidget(m_clear);
}

void AuditFilterBar::connectControls()
{
    for (QCheckBox* check : {m_useFrom, m_useTo})
        connect(check, &QCheckBox::toggled, this, &AuditFilterBar::announce);
    for (QDateEdit* date : {m_from, m_to})
        connect(date, &QDateEdit::dateChanged, this, [this, date] {
            if (date->isEnabled())
                announce();
        });
    connect(m_user, &QLineEdit::textEdited, &m_textDelay, qOverload<>(&QTimer::start));
    connect(m_user, &QLineEdit::editingFinished, this, &AuditFilterBar::announce);
    connect(m_area, &QComboBox::currentIndexChanged, this, &AuditFilterBar::announce);
    connect(m_text, &QLineEdit::textEdited, &m_textDelay, qOverload<>(&QTimer::start));
    connect(&m_textDelay, &QTimer::timeout, this, &AuditFilterBar::announce);
    connect(m_clear, &QPushButton::clicked, this, &AuditFilterBar::clear);
}

AuditFilter AuditFilterBar::filter() const
{
    AuditFilter f;
    if (m_useFrom->isChecked())
        f.from = m_from->date().startOfDay();
    if (m_useTo->isChecked())
        f.to = m_to->date().addDays(1).startOfDay();
    f.userName = m_user->text().trimmed();
    f.area = m_area->currentData().toString();
    f.text = m_text->text();
    return f;
}

void AuditFilterBar::clear()
{
    m_clearing = true;
    m_textDelay.stop();
    m_useFrom->setChecked(false);
    m_useTo->setChecked(false);
    m_user->clear();
    m_area->setCurrentIndex(0);
    m_text->clear();
    m_clearing = false;
    announce();
}

void AuditFilterBar::announce()
{
    if (m_clearing)
        return;
    m_textDelay.stop();
    const AuditFilter current = filter();
    if (current == m_announced)
        return;
    m_announced = current;
    Q_EMIT filterChanged(current);
}

} // namespace nebra
