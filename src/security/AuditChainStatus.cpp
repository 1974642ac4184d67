#include "AuditChainStatus.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QThread>

#include <memory>

namespace nebra {

AuditChainStatus::AuditChainStatus(Verifier verifier, QWidget* parent)
    : QWidget(parent), m_verifier(std::move(verifier))
{
    setObjectName(QStringLiteral("auditChainStatus"));
    setAccessibleName(QStringLiteral("Chain status"));
    m_label = new QLabel(this);
    m_label->setObjectName(QStringLiteral("lblChainStatus"));
    m_label->setAccessibleName(QStringLiteral("Chain status"));
    m_label->setWordWrap(true);
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_again = new QPushButton(QStringLiteral("Check &again"), this);
    m_again->setObjectName(QStringLiteral("cmdCheckAgain"));
    m_again->setAccessibleName(QStringLiteral("Check the chain again"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_label, 1);
    layout->addWidget(m_again);
    connect(m_again, &QPushButton::clicked, this, &AuditChainStatus::check);
}

AuditChainStatus::~AuditChainStatus()
{
    if (m_thread) {
        // Its result has nowhere to go; the thread deletes itself once done.
        m_thread->disconnect(this);
        m_thread->wait();
    }
}

QString AuditChainStatus::describe(const AuditVerification& result)
{
    if (result.ok)
        return QStringLiteral("Intact, %1 %2.")
            .arg(result.entryCount)
            .arg(result.entryCount == 1 ? QStringLiteral("entry") : QStringLiteral("entries"));
    if (result.firstBadSequence > 0)
        return QStringLiteral("NOT intact from entry %1: %2")
            .arg(result.firstBadSequence)
            .arg(result.message);
    return QStringLiteral("NOT intact: ") + result.message;
}

void AuditChainStatus::check()
{
    if (m_thread)
        return;
    m_text = QStringLiteral("Checking the chain...");
    m_label->setText(m_text);
    m_label->setStyleSheet(QString());
    m_again->setEnabled(false);
    auto result = std::make_shared<AuditVerification>();
    m_thread = QThread::create([verify = m_verifier(), result] { *result = verify(); });
    connect(m_thread, &QThread::finished, this, [this, result] {
        m_thread = nullptr;
        show(*result);
    });
    connect(m_thread, &QThread::finished, m_thread, &QObject::deleteLater);
    m_thread->start(QThread::LowPriority);
}

void AuditChainStatus::show(const AuditVerification& result)
{
    m_intact = result.ok;
    m_text = describe(result);
    // Colour only repeats what the words say.
    m_label->setText(m_text);
    m_label->setStyleSheet(
        result.ok ? QStringLiteral("QLabel { color: white; background: #1b7d2c; padding: 3px; }")
                  : QStringLiteral("QLabel { color: white; background: #b3261e; padding: 3px; }"));
    m_again->setEnabled(true);
    Q_EMIT checked(result.ok);
}

} // namespace nebra
