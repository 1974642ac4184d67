#pragma once

#include <QPointer>
#include <QSplashScreen>

namespace nebra {

// The splash shown while the Organiser loads. It closes itself once its
// owner window has been shown.
class SplashScreen : public QSplashScreen
{
    Q_OBJECT
public:
    SplashScreen(QWidget* owner, const QString& title);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPointer<QWidget> m_owner;
};

} // namespace nebra
