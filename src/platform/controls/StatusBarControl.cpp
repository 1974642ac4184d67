#include "StatusBarControl.h"

#include <QEvent>
#include <QLabel>
#include <QStatusBar>

namespace nebra {

StatusBarControl::StatusBarControl(QStatusBar* bar, int panelCount) : QObject(bar)
{
    bar->setAccessibleName(QStringLiteral("Status bar"));
    for (int i = 1; i <= panelCount; ++i) {
        auto* label = new QLabel(bar);
        label->setAccessibleName(QStringLiteral("Status panel %1").arg(i));
        label->installEventFilter(this);
        bar->addWidget(label, i == 1 ? 1 : 0);
        m_panels.append(label);
    }
}

void StatusBarControl::setPanelText(int panel, const QString& text)
{
    m_panels.at(panel - 1)->setText(text);
}

QString StatusBarControl::panelText(int panel) const
{
    return m_panels.at(panel - 1)->text();
}

void StatusBarControl::setPanelVisible(int panel, bool visible)
{
    m_panels.at(panel - 1)->setVisible(visible);
}

bool StatusBarControl::isPanelVisible(int panel) const
{
    return !m_panels.at(panel - 1)->isHidden();
}

bool StatusBarControl::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonRelease) {
        const int index = int(m_panels.indexOf(static_cast<QLabel*>(watched)));
        if (index >= 0)
            Q_EMIT panelClick(index + 1);
    }
    return QObject::eventFilter(watched, event);
}

} // namespace nebra
