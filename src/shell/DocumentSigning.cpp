#include "DocumentSigning.h"

#include "Authorisation.h"
#include "CommandDispatcher.h"
#include "CommandSwitches.h"
#include "Dialogs.h"
#include "DocumentFolders.h"
#include "DocumentRecording.h"
#include "FileListControl.h"
#include "Messages.h"
#include "NebraSecurityManager.h"
#include "SecretBytes.h"
#include "SecuritySession.h"
#include "SignDocumentDialog.h"
#include "ToolDefinitions.h"

#include <QAction>
#include <QFutureWatcher>
#include <QPromise>
#include <QThreadPool>

#include <functional>
#include <memory>

namespace nebra {

namespace {

const QString Area = QLatin1String(SignatureEntries::RightArea);
const QString Operation = QLatin1String(SignatureEntries::RightOperation);
const QString Title = QStringLiteral("Sign Document");

// Reads the document's fingerprint on a worker, so that a document on a file
// server that does not answer holds neither the window nor the dialog; done
// runs on the window's thread unless owner has gone by then (the watcher goes with it).
void readLater(const QString& path, QObject* owner,
               std::function<void(const std::optional<DocumentFingerprint>&)> done)
{
    using Reading = std::optional<DocumentFingerprint>;
    auto promise = std::make_shared<QPromise<Reading>>();
    auto* watcher = new QFutureWatcher<Reading>(owner);
    QObject::connect(watcher, &QFutureWatcherBase::finished, owner, [watcher, done = std::move(done)] {
        watcher->deleteLater();
        done(watcher->result());
    });
    watcher->setFuture(promise->future());
    promise->start();
    QThreadPool::globalInstance()->start([promise, path] {
        promise->addResult(DocumentFolders::fingerprint(path));
        promise->finish();
    });
}

} // namespace

// What the user asked for, kept until the second reading has answered.
struct DocumentSigning::Request
{
    DocumentFingerprint shown;
    QString meaning;
    QString userName;
    std::shared_ptr<SecretBytes> password;
};

DocumentSigning::DocumentSigning(Parts parts, QObject* parent) : QObject(parent), m_parts(parts)
{
    m_parts.switches.setCommandVisible(CommandId::Sign, false);
    m_parts.commands.setCommand(CommandId::Sign, {});
    connect(&m_parts.list, &FileListControl::selectionChanged, this, &DocumentSigning::updateCommand);
}

QString DocumentSigning::changedText()
{
    return QStringLiteral("The document has changed since it was shown for signing. Nothing has been signed; "
                          "sign it again to sign what it holds now.");
}

void DocumentSigning::begin()
{
    if (!m_parts.session.SecurityEnabled() || !m_parts.session.NebraSecurityManagerObj())
        return;
    m_offered = true;
    m_parts.commands.setCommand(CommandId::Sign, [this] { Sign(); });
    m_parts.switches.setCommandVisible(CommandId::Sign, true);
    updateCommand();
}

void DocumentSigning::offerViews()
{
    if (m_contextAction || !m_offered)
        return;
    m_contextAction =
        new QAction(QLatin1String(ToolDefinitions::command(CommandId::Sign).caption), &m_parts.list);
    m_contextAction->setObjectName(QStringLiteral("Sign"));
    connect(m_contextAction, &QAction::triggered, this,
            [&commands = m_parts.commands] { commands.run(CommandId::Sign); });
    m_parts.list.addContextAction(m_contextAction);
    updateCommand();
}

void DocumentSigning::end()
{
    m_offered = false;
    m_parts.commands.setCommand(CommandId::Sign, {});
    m_parts.switches.setCommandVisible(CommandId::Sign, false);
    if (m_contextAction)
        m_contextAction->setEnabled(false);
}

QString DocumentSigning::selectedDocument() const
{
    const QList<FileListItem> selected = m_parts.list.selectedItems();
    const bool one = selected.size() == 1 && !selected.first().isFolder();
    return one && m_parts.recording.isDocument(selected.first().path()) ? selected.first().path() : QString();
}

void DocumentSigning::updateCommand()
{
    const bool enabled = m_offered && !selectedDocument().isEmpty();
    m_parts.switches.setCommandEnabled(CommandId::Sign, enabled);
    if (m_contextAction)
        m_contextAction->setEnabled(enabled);
}

void DocumentSigning::Sign()
{
    const QString document = selectedDocument();
    NebraSecurityManager* manager = m_parts.session.NebraSecurityManagerObj();
    if (!m_parts.session.SecurityEnabled() || !manager || document.isEmpty() ||
        !m_parts.authorisation.CanPerformSecurityOperation(Area, Operation, true))
        return;
    SignDocumentDialog dialog(document, manager->SignatureMeanings(),
                              manager->HasSignedInSession() ? manager->UserName() : QString(),
                              &m_parts.owner);
    readLater(document, &dialog, [&dialog](const std::optional<DocumentFingerprint>& fingerprint) {
        dialog.setFingerprint(fingerprint);
    });
    if (Dialogs::exec(dialog) != QDialog::Accepted || !dialog.fingerprint())
        return;
    const Request request{*dialog.fingerprint(), dialog.meaning(), dialog.userName(),
                          std::make_shared<SecretBytes>(dialog.takePassword())};
    readLater(document, this, [this, request](const std::optional<DocumentFingerprint>& now) {
        signIfUnchanged(request, now);
    });
}

void DocumentSigning::signIfUnchanged(const Request& request, const std::optional<DocumentFingerprint>& now)
{
    NebraSecurityManager* manager = m_parts.session.NebraSecurityManagerObj();
    if (!m_offered || !m_parts.session.SecurityEnabled() || !manager)
        return;
    if (!now || !now->sameContent(request.shown)) {
        tell(changedText());
        return;
    }
    const SignResult result =
        manager->SignDocument(request.shown, request.meaning, request.userName, *request.password);
    // A wrong password that locked the account has ended the session; its end says so.
    if (result.locked)
        return;
    if (result.sequence > 0)
        m_parts.recording.noteSigned(result.signature);
    else
        tell(result.error);
}

void DocumentSigning::tell(const QString& text) const
{
    Messages::show({text, Title, MessageIcon::Warning, MessageButton::Ok, MessageButton::Ok, &m_parts.owner});
}

} // namespace nebra
