#pragma once

#include "DocumentRecord.h"

#include <QObject>

#include <optional>

class QAction;
class QWidget;

namespace nebra {

class Authorisation;
class CommandDispatcher;
class CommandSwitches;
class DocumentRecording;
class FileListControl;
class SecuritySession;
class SignDocumentDialog;

// File > Sign... (also on the file list's context menu): the user signs the
// selected document with a meaning. Shown in a security session only and
// enabled for one selected document of the data folders; the right
// (Documents, Sign) is checked when the command runs, with the usual
// refusal. The document is read off the window's thread when the Sign
// Document dialog opens, and again after OK: a document that changed in
// between is refused and nothing is signed. The signature the manager
// records goes to the session's recording, which shows it.
class DocumentSigning : public QObject
{
    Q_OBJECT
public:
    struct Parts
    {
        CommandDispatcher& commands;
        CommandSwitches& switches;
        FileListControl& list;
        SecuritySession& session;
        Authorisation& authorisation;
        DocumentRecording& recording;
        QWidget& owner; // of the dialog and the messages
    };

    // Hides the command.
    explicit DocumentSigning(Parts parts, QObject* parent = nullptr);

    // At log-in: offers the command in a security session.
    void begin();
    // Once the list has its own columns: the context menu's command (once).
    void offerViews();
    // At the end of the session.
    void end();

    void Sign();

    static QString changedText();

private:
    struct Request;
    QString selectedDocument() const;
    void updateCommand();
    // The second reading after OK: signs when the content is still what the dialog showed.
    void signIfUnchanged(const Request& request, const std::optional<DocumentFingerprint>& now);
    void tell(const QString& text) const;

    Parts m_parts;
    QAction* m_contextAction = nullptr;
    bool m_offered = false;
};

} // namespace nebra
