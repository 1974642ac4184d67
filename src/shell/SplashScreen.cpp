#include "SplashScreen.h"

#include <QEvent>
#include <QPainter>
#include <QPixmap>

namespace nebra {

namespace {
QPixmap splashPixmap(const QString& title)
{
    QPixmap pixmap(420, 220);
    pixmap.fill(QColor(0x1f, 0x4e, 0x79));
    QPainter painter(&pixmap);
    painter.setPen(Qt::white);
    QFont font = painter.font();
    font.setPointSize(20);
    font.setBold(true);
    painter.setFont(font);
    painter.drawText(pixmap.rect().adjusted(0, 0, 0, -40), Qt::AlignCenter, title);
    font.setPointSize(10);
    font.setBold(false);
    painter.setFont(font);
    painter.drawText(pixmap.rect().adjusted(0, 0, 0, -16), Qt::AlignHCenter | Qt::AlignBottom,
                     QStringLiteral("Loading..."));
    return pixmap;
}
} // namespace

SplashScreen::SplashScreen(QWidget* owner, const QString& title)
    : QSplashScreen(splashPixmap(title)), m_owner(owner)
{
    setObjectName(QStringLiteral("frmSplash"));
    setAccessibleName(QStringLiteral("Splash screen"));
    setAttribute(Qt::WA_DeleteOnClose);
    if (m_owner)
        m_owner->installEventFilter(this);
}

bool SplashScreen::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_owner && event->type() == QEvent::Show) {
        m_owner->removeEventFilter(this);
        close(); // deletes itself
    }
    return QSplashScreen::eventFilter(watched, event);
}

} // namespace nebra
