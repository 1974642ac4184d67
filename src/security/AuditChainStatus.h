#pragma once

#include "AuditTrail.h"

#include <QPointer>
#include <QWidget>

#include <functional>

class QLabel;
class QPushButton;
class QThread;

namespace nebra {

// The chain status at the top of the audit trail viewer: whether the trail
// is intact (and how many entries it holds) or the first bad entry in the
// words of the check, in green or red and always in words too; "Check
// again" runs the check anew.
//
// The check reads the whole trail, which takes seconds on a long one, so it
// runs on a thread of its own: each check asks (on this thread) for a
// function that runs the check, and calls that function on the other
// thread, so it must be safe to call there. One check runs at a time; the
// widget waits for it before it goes.
class AuditChainStatus : public QWidget
{
    Q_OBJECT
public:
    using Verify = std::function<AuditVerification()>;
    using Verifier = std::function<Verify()>;

    explicit AuditChainStatus(Verifier verifier, QWidget* parent = nullptr);
    ~AuditChainStatus() override;

    // Starts a check unless one is running.
    void check();
    bool checking() const { return m_thread != nullptr; }
    // The status in words, as printed in an export's title block.
    QString statusText() const { return m_text; }
    // Known once a check has finished.
    bool intact() const { return m_intact; }

    static QString describe(const AuditVerification& result);

Q_SIGNALS:
    void checked(bool intact);

private:
    void show(const AuditVerification& result);

    Verifier m_verifier;
    QLabel* m_label = nullptr;
    QPushButton* m_again = nullptr;
    QThread* m_thread = nullptr;
    QString m_text;
    bool m_intact = false;
};

} // namespace nebra
