#pragma once

#include <QString>

#include <functional>

class QObject;

namespace nebra {

// What the launching of documents needs from the rest of the Organiser,
// given as hooks so that the launcher stands on its own: the security
// layer's check and audit entry, the file list's selected document and the
// new-protocol wizard. A hook left empty behaves as stated beside it.
struct LaunchContext
{
    // Asks whether the general operation is allowed; shows the refusal itself.
    // Empty: nothing is allowed.
    std::function<bool(const QString& operation)> canPerform;
    // Writes an audit entry in the general area; false when it could not be
    // written (the hook has told the user), and the operation is then not
    // carried out. Empty: nothing is recorded.
    std::function<bool(const QString& entry)> audit;
    // The full path of the file list's selected document, as it stands. Empty: "".
    std::function<QString()> selectedDocumentPath;
    // True while a security session is open. Empty: false.
    std::function<bool()> securityEnabled;
    // Starts the new-assay-protocol wizard. Empty: there is no wizard to
    // start, so CreateProtocol neither asks nor records anything, and New on
    // the protocols folder is disabled.
    std::function<void()> startNewProtocolWizard;
    // A document was opened or run (its program started), or a new protocol
    // was opened after the wizard made it. Empty: nothing is noted.
    std::function<void(const QString& path)> documentUsed;
    // A program was started (its process id and file name) on the document
    // or folder it works on: the document, or for a launch without one the
    // layouts folder (a layout editor) or the file list's folder. Empty:
    // nothing is told.
    std::function<void(qint64 processId, const QString& program, const QString& target)> programStarted;
    // The folder the file list shows. Empty: "".
    std::function<QString()> currentFolder;
    // The window that owns the message boxes of a failed start.
    QObject* owner = nullptr;
};

} // namespace nebra
