#pragma once

#include <QDialog>

class QLineEdit;

namespace nebra {

// Asks a reviewer why a changed document's new content is accepted. The
// reason goes into the audit entry; OK stays disabled until one is typed.
class AcceptChangeDialog : public QDialog
{
    Q_OBJECT
public:
    // document: its full path; state: the caption of its record state.
    AcceptChangeDialog(const QString& document, const QString& state, QWidget* owner);

    QString reason() const;

private:
    QLineEdit* m_reason;
};

} // namespace nebra
