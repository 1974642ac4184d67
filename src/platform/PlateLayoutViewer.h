#pragma once

#include <QColor>
#include <QWidget>

namespace nebra {

// Draws a microplate layout.
class PlateLayoutViewer : public QWidget
{
    Q_OBJECT
public:
    explicit PlateLayoutViewer(QWidget* parent = nullptr);

    void setBkColour(const QColor& colour);
    QColor bkColour() const { return m_bkColour; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_bkColour = Qt::white;
};

} // namespace nebra
