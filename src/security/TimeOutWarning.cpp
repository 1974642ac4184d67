#include "TimeOutWarning.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace nebra {

namespace {
// Often enough for a countdown in seconds to look steady.
constexpr int TickMs = 250;
} // namespace

TimeOutWarning::TimeOutWarning(Hooks hooks, qint64 warningMs, QWidget* parent)
    : QDialog(parent), m_hooks(std::move(hooks)), m_warningMs(warningMs), m_text(new QLabel(this)),
      m_stay(new QPushButton(tr("Stay logged in"), this)), m_logOut(new QPushButton(tr("Log out now"), this)),
      m_tick(new QTimer(this))
{
    setWindowTitle(title());
    setModal(false);
    setAccessibleName(QStringLiteral("Session time-out warning"));
    m_text->setAccessibleName(QStringLiteral("Time left"));
    m_stay->setAccessibleName(QStringLiteral("Stay logged in"));
    m_logOut->setAccessibleName(QStringLiteral("Log out now"));
    m_stay->setDefault(true);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(m_stay, QDialogButtonBox::AcceptRole);
    buttons->addButton(m_logOut, QDialogButtonBox::DestructiveRole);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_text);
    layout->addWidget(buttons);

    connect(m_stay, &QPushButton::clicked, this, [this] {
        hide();
        if (m_hooks.stay)
            m_hooks.stay();
    });
    connect(m_logOut, &QPushButton::clicked, this, [this] {
        hide();
        if (m_hooks.logOut)
            m_hooks.logOut();
    });
    m_tick->setInterval(TickMs);
    connect(m_tick, &QTimer::timeout, this, &TimeOutWarning::update);
}

void TimeOutWarning::warn()
{
    update();
    if (!isVisible())
        return; // nothing left to warn about
    raise();
    activateWindow();
    m_tick->start();
}

QString TimeOutWarning::countdownText() const
{
    return m_text->text();
}

// Closing the window (Escape, the title bar) only hides the warning; the
// time-out still runs, as it would without the warning.
void TimeOutWarning::update()
{
    const qint64 remaining = m_hooks.remainingMs ? m_hooks.remainingMs() : 0;
    // Restarted by activity elsewhere, or ended: the warning has had its say.
    if (remaining <= 0 || remaining > m_warningMs) {
        m_tick->stop();
        hide();
        return;
    }
    const qint64 seconds = (remaining + 999) / 1000;
    m_text->setText(seconds == 1
                        ? tr("Your session will time out in 1 second because of inactivity.")
                        : tr("Your session will time out in %1 seconds because of inactivity.").arg(seconds));
    if (!isVisible())
        show();
}

} // namespace nebra
