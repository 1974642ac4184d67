#include "DocumentRecords.h"

#include "AcceptChangeDialog.h"
#include "Authorisation.h"
#include "CommandDispatcher.h"
#include "CommandSwitches.h"
#include "Dialogs.h"
#include "DocumentRecording.h"
#include "FileListControl.h"
#include "FileListModel.h"
#include "Messages.h"
#include "NebraSecurityManager.h"
#include "SecuritySession.h"
#include "SignatureBand.h"
#include "ToolDefinitions.h"

#include <QAction>
#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QStatusBar>
#include <QStyle>
#include <QVBoxLayout>

namespace nebra {

namespace {
const QString Area = QLatin1String(DocumentEntries::Area);
const QString AcceptOperation = QLatin1String(DocumentEntries::AcceptOperation);
} // namespace

DocumentRecords::DocumentRecords(Parts parts, QObject* parent) : QObject(parent), m_parts(parts)
{
    m_parts.switches.setCommandVisible(CommandId::AcceptChange, false);
    m_parts.commands.setCommand(CommandId::AcceptChange, {});
    DocumentRecording& recording = m_parts.recording;
    connect(&recording, &DocumentRecording::progress, this, &DocumentRecords::showProgress);
    // Told once the recorder's callback has returned: the box waits for the user.
    connect(&recording, &DocumentRecording::recordingFailed, this, &DocumentRecords::reportFailure,
            Qt::QueuedConnection);
    connect(&recording, &DocumentRecording::stateChanged, this, [this](const QString& path) {
        m_parts.list.updateItem(path);
        if (path == selectedDocument()) {
            updateCommand();
            showState();
        }
    });
    connect(&m_parts.list, &FileListControl::selectionChanged, this, [this] {
        updateCommand();
        showState();
    });
}

QString DocumentRecords::failureText(const QString& error)
{
    return QStringLiteral("Changes of documents cannot be recorded in the audit trail at present:\n\n%1\n\n"
                          "The Organiser keeps trying; nothing else waits for it.")
        .arg(error);
}

void DocumentRecords::begin(const DocumentFolders& folders)
{
    NebraSecurityManager* manager = m_parts.session.NebraSecurityManagerObj();
    if (!m_parts.session.SecurityEnabled() || !manager)
        return;
    // Asked once: the command asks again, with the refusal, when it is used.
    m_mayAccept = manager->IsOperationAllowed(Area, AcceptOperation);
    m_folders = folders;
    m_parts.recording.begin(folders, manager->DocumentWriters());
    m_parts.commands.setCommand(CommandId::AcceptChange, [this] { AcceptChange(); });
    m_parts.switches.setCommandVisible(CommandId::AcceptChange, true);
    updateCommand();
}

void DocumentRecords::offerViews()
{
    if (m_contextAction || !m_parts.recording.isRecording())
        return;
    m_contextAction =
        new QAction(QLatin1String(ToolDefinitions::command(CommandId::AcceptChange).caption), &m_parts.list);
    m_contextAction->setObjectName(QStringLiteral("AcceptChange"));
    connect(m_contextAction, &QAction::triggered, this,
            [&commands = m_parts.commands] { commands.run(CommandId::AcceptChange); });
    m_parts.list.addContextAction(m_contextAction);
    m_parts.list.addColumn(QLatin1String(ColumnName),
                           [this](const QString& path, int role) { return cell(path, role); });
    // The record takes the comment's place, so that the list still fits a
    // narrow pane; the user shows the comment again from the column menu.
    m_parts.list.setColumnShown(FileListModel::CommentColumn, false);
    // Above the preview: the state line, and the signatures below it.
    auto* above = new QVBoxLayout;
    m_stateLine = new QLabel(&m_parts.previewArea);
    m_stateLine->setObjectName(QStringLiteral("recordState"));
    m_stateLine->setTextInteractionFlags(Qt::TextSelectableByKeyboard | Qt::TextSelectableByMouse);
    m_band = new SignatureBand(&m_parts.previewArea);
    above->addWidget(m_stateLine);
    above->addWidget(m_band);
    if (auto* grid = qobject_cast<QGridLayout*>(m_parts.previewArea.layout()))
        grid->addLayout(above, 0, 0);
    m_stateLine->hide();
    updateCommand();
    showState();
}

QString DocumentRecords::changeDescription(const QString& path) const
{
    const QDateTime seen = m_parts.recording.changeSeen(path);
    const DocumentState shown = m_parts.recording.shownState(path);
    const RecordState state = shown.record;
    // A signature's state is told in its own words.
    if (!shown.signatures.isEmpty() ||
        (state != RecordState::ChangedOutside && state != RecordState::ChangedUnwatched))
        return {};
    const QString caption = DocumentEntries::caption(state);
    return seen.isValid() ? QStringLiteral("%1, seen %2")
                                .arg(caption, QLocale().toString(seen.toLocalTime(), QLocale::ShortFormat))
                          : caption;
}

QVariant DocumentRecords::cell(const QString& path, int role) const
{
    if (!m_parts.recording.isRecording() || !m_folders || !m_folders->isDocument(path))
        return {};
    const DocumentState state = m_parts.recording.shownState(path);
    const bool warns = state.warns();
    switch (role) {
    case Qt::DisplayRole:
        return state.caption();
    case Qt::DecorationRole:
        return warns ? QVariant(QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning))
                     : QVariant();
    case Qt::AccessibleDescriptionRole:
    case Qt::ToolTipRole:
        return warns && state.signatures.isEmpty() ? QVariant(changeDescription(path)) : QVariant();
    default:
        return {};
    }
}

void DocumentRecords::showState()
{
    if (!m_stateLine)
        return;
    const QString document = selectedDocument();
    const QString caption = cell(document, Qt::DisplayRole).toString();
    m_stateLine->setVisible(!caption.isEmpty());
    const QString change = changeDescription(document);
    m_stateLine->setText(QStringLiteral("Record: ") + (change.isEmpty() ? caption : change));
    m_stateLine->setAccessibleName(QStringLiteral("Record: ") + caption);
    m_stateLine->setAccessibleDescription(change);
    // Never another document's: none is shown without one selected document.
    m_band->showSignatures(caption.isEmpty() ? QList<DocumentState::Signature>()
                                             : m_parts.recording.shownState(document).signatures);
}

void DocumentRecords::end()
{
    m_parts.recording.end();
    m_parts.commands.setCommand(CommandId::AcceptChange, {});
    m_parts.switches.setCommandVisible(CommandId::AcceptChange, false);
    if (m_contextAction)
        m_contextAction->setEnabled(false);
    if (m_stateLine)
        m_stateLine->hide();
    if (m_band)
        m_band->showSignatures({});
}

QString DocumentRecords::selectedDocument() const
{
    const QList<FileListItem> selected = m_parts.list.selectedItems();
    return selected.size() == 1 && !selected.first().isFolder() ? selected.first().path() : QString();
}

void DocumentRecords::updateCommand()
{
    const QString document = selectedDocument();
    const bool enabled = m_mayAccept && m_parts.recording.isRecording() && !document.isEmpty() &&
                         m_parts.recording.acceptable(document).has_value();
    m_parts.switches.setCommandEnabled(CommandId::AcceptChange, enabled);
    if (m_contextAction)
        m_contextAction->setEnabled(enabled);
}

void DocumentRecords::AcceptChange()
{
    const QString document = selectedDocument();
    if (!m_parts.session.SecurityEnabled() || document.isEmpty() ||
        !m_parts.authorisation.CanPerformSecurityOperation(Area, AcceptOperation, true))
        return;
    const std::optional<DocumentFingerprint> fingerprint = m_parts.recording.acceptable(document);
    if (!fingerprint)
        return;
    AcceptChangeDialog dialog(document, DocumentEntries::caption(m_parts.recording.state(document)),
                              &m_parts.owner);
    if (Dialogs::exec(dialog) != QDialog::Accepted)
        return;
    const AuditAppendResult result =
        m_parts.session.NebraSecurityManagerObj()->AcceptDocumentChange(*fingerprint, dialog.reason());
    if (result.sequence > 0)
        m_parts.recording.noteAccepted(*fingerprint, result.sequence);
    if (!result.error.isEmpty())
        Messages::show({result.error, QStringLiteral("Accept Change"), MessageIcon::Warning,
                        MessageButton::Ok, MessageButton::Ok, &m_parts.owner});
    updateCommand();
}

void DocumentRecords::showProgress(int done, int total)
{
    QStatusBar& bar = m_parts.statusBar;
    if (done < total)
        bar.showMessage(DocumentRecording::progressText(done, total));
    else if (bar.currentMessage() == DocumentRecording::progressText(done - 1, total))
        bar.clearMessage(); // unless something else is told there since
}

void DocumentRecords::reportFailure(const QString& error)
{
    Messages::show({failureText(error), QStringLiteral("Audit Trail"), MessageIcon::Warning,
                    MessageButton::Ok, MessageButton::Ok, &m_parts.owner});
}

} // namespace nebra
