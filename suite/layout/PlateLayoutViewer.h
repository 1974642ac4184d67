#pragma once

#include "PlateLayout.h"

#include <QColor>
#include <QFont>
#include <QImage>
#include <QList>
#include <QStaticText>
#include <QWidget>

#include <optional>

namespace nebra {

// Draws a microplate layout: the layout's name, the plate's row and column
// headers, every well as a circle coloured by its role with its label where
// the wells are large enough to hold it, and a legend of the roles with their
// counts. The drawing scales with the widget. A layout that could not be read
// is shown as a "cannot display this layout" notice with the reason.
class PlateLayoutViewer : public QWidget
{
    Q_OBJECT
public:
    explicit PlateLayoutViewer(QWidget* parent = nullptr);

    void setBkColour(const QColor& colour);
    QColor bkColour() const { return m_bkColour; }

    // Reads a ".mlo" file and shows it; a file that cannot be read shows the
    // notice instead. Returns whether the layout was read.
    bool LoadFile(const QString& path);
    void setPlateLayout(const PlateLayout& layout);
    // Shows the notice with the reason.
    void showError(const QString& reason);
    // Shows a plain line in place of a layout (one still being read, say).
    void showMessage(const QString& text);
    void clear();

    bool hasPlateLayout() const { return m_layout.has_value(); }
    const std::optional<PlateLayout>& plateLayout() const { return m_layout; }
    QString errorText() const { return m_error; }
    QString message() const { return m_message; }

    static QColor roleColour(WellRole role);
    static QString unreadableTitle() { return QStringLiteral("Cannot display this layout"); }

    // The layout's name as the last paint showed it above the plate, elided
    // to the title's width; empty before the first paint.
    QString shownTitle() const { return m_title.text; }

    // The well under a point of the widget, as "B3"; empty when there is none.
    QString wellAt(const QPoint& point) const;

    QSize sizeHint() const override { return {480, 340}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

    // Where the parts of the drawing lie for the widget's current size; an
    // editor built on the viewer draws its selection over the same cells.
    struct Geometry
    {
        QRectF title;
        QRectF plate; // the wells, without headers
        QRectF legend;
        double cell = 0;
    };
    Geometry geometry() const;

private:
    void drawPlate(QPainter& painter, const Geometry& g) const;
    void drawHeaders(QPainter& painter, const Geometry& g) const;
    void drawLabels(QPainter& painter, const Geometry& g) const;
    void drawLegend(QPainter& painter, const Geometry& g) const;
    void drawError(QPainter& painter) const;
    void describe();
    const QString& elidedTitle(const QFont& font, double width) const;
    static QImage wellSprite(const QColor& fill, double diameter, double outlineWidth, qreal ratio);

    QColor m_bkColour = Qt::white;
    std::optional<PlateLayout> m_layout;
    QString m_error;
    QString m_message;
    mutable QList<QStaticText> m_labels; // the wells' labels, laid out for m_labelCell
    mutable double m_labelCell = 0;
    // Eliding a long name costs far more than drawing the plate, so the
    // elided title is kept until the width, the font or the layout changes.
    struct ElidedTitle
    {
        QString text;
        double width = -1;
        QFont font;
    };
    mutable ElidedTitle m_title;
};

} // namespace nebra
