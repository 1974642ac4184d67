#pragma once

#include <QList>
#include <QObject>

class QLabel;
class QStatusBar;

namespace nebra {

// The status bar as a row of numbered panels (1-based), each with a text, a
// visibility and a click.
class StatusBarControl : public QObject
{
    Q_OBJECT
public:
    StatusBarControl(QStatusBar* bar, int panelCount);

    void setPanelText(int panel, const QString& text);
    QString panelText(int panel) const;
    void setPanelVisible(int panel, bool visible);
    bool isPanelVisible(int panel) const;

Q_SIGNALS:
    void panelClick(int panel);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QList<QLabel*> m_panels;
};

} // namespace nebra
