#pragma once

#include "Controls.h"
#include "Dialogs.h"

#include <QDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QQueue>
#include <QStringList>

#include <functional>

namespace nebra::test {

// Answers the modal dialogs of the code under test, in order, through the
// dialog seam: each step fills in the dialog's fields (found by object name)
// and accepts or cancels it. With no step left a dialog is cancelled.
// Records the object name of every dialog shown.
class DialogScript
{
public:
    using Step = std::function<int(QDialog&)>;

    DialogScript()
    {
        m_previous = Dialogs::setHandler([this](QDialog& dialog) {
            m_shown.append(dialog.objectName());
            return m_steps.isEmpty() ? int(QDialog::Rejected) : m_steps.dequeue()(dialog);
        });
    }
    ~DialogScript() { Dialogs::setHandler(std::move(m_previous)); }
    DialogScript(const DialogScript&) = delete;
    DialogScript& operator=(const DialogScript&) = delete;

    void then(Step step) { m_steps.enqueue(std::move(step)); }

    // Fills the named line edits and presses OK.
    void accept(const QList<QPair<QString, QString>>& fields)
    {
        then([fields](QDialog& dialog) {
            for (const auto& [name, text] : fields)
                control<QLineEdit>(dialog, qPrintable(name))->setText(text);
            return int(QDialog::Accepted);
        });
    }
    void logIn(const QString& user, const QString& password)
    {
        accept({{QStringLiteral("txtUserName"), user}, {QStringLiteral("txtPassword"), password}});
    }
    void changePassword(const QString& current, const QString& fresh, const QString& confirmation)
    {
        accept({{QStringLiteral("txtCurrentPassword"), current},
                {QStringLiteral("txtNewPassword"), fresh},
                {QStringLiteral("txtConfirmPassword"), confirmation}});
    }
    // Answers a file dialog with path (a save dialog only when saving is said); any other is cancelled.
    void chooseFile(const QString& path, bool saving = false)
    {
        then([path, saving](QDialog& dialog) {
            auto* files = qobject_cast<QFileDialog*>(&dialog);
            if (!files || (saving && files->acceptMode() != QFileDialog::AcceptSave))
                return int(QDialog::Rejected);
            files->selectFile(path);
            return int(QDialog::Accepted);
        });
    }
    void cancel()
    {
        then([](QDialog&) { return int(QDialog::Rejected); });
    }

    const QStringList& shown() const { return m_shown; }
    int remaining() const { return int(m_steps.size()); }

private:
    Dialogs::Handler m_previous;
    QQueue<Step> m_steps;
    QStringList m_shown;
};

} // namespace nebra::test
