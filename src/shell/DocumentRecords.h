#pragma once

#include "DocumentFolders.h"

#include <QObject>
#include <QVariant>

#include <optional>

class QAction;
class QLabel;
class QStatusBar;
class QWidget;

namespace nebra {

class Authorisation;
class CommandDispatcher;
class CommandSwitches;
class DocumentRecording;
class FileListControl;
class SecuritySession;
class SignatureBand;

// The documents' records in the window, inside a security session: the
// first fingerprinting's progress in the status bar, a recording that fails
// told once, the file list's column "Record" (in the place of the comment,
// which the user can show again) and the same state on a line
// above the preview (each document's record state; the two changed states
// with a warning icon and a description naming when the change was seen;
// a signed document its signature's state, and its signatures on a band below the line),
// and File > Accept Change... (also on the file list's context menu). The command is shown in a session only,
// and enabled for one selected document whose newest record is a change no suite program made, when the user
// has the right (Documents, AcceptChange); it asks for a reason, writes the accept entry and tells the
// recording. Without a session nothing is recorded and none of this is shown.
class DocumentRecords : public QObject
{
    Q_OBJECT
public:
    struct Parts
    {
        CommandDispatcher& commands;
        CommandSwitches& switches;
        FileListControl& list;
        QStatusBar& statusBar;
        SecuritySession& session;
        Authorisation& authorisation;
        DocumentRecording& recording;
        // The preview area, a grid whose row 0 is left for the state line.
        QWidget& previewArea;
        QWidget& owner; // of the dialog and the messages
    };

    // Hides the command.
    explicit DocumentRecords(Parts parts, QObject* parent = nullptr);

    // At log-in: records the documents of folders and offers the command.
    void begin(const DocumentFolders& folders);
    // Once the list has its own columns, in a session: the column, the
    // state line and the context menu's command (once).
    void offerViews();
    // At the end of the session: recording stops, without waiting.
    void end();

    void AcceptChange();

    static QString failureText(const QString& error);
    static constexpr const char* ColumnName = "Record";
    // The column's cell of a document: its caption, the warning icon and
    // the description of a change; nothing for anything but a document.
    QVariant cell(const QString& path, int role) const;

private:
    QString selectedDocument() const;
    void updateCommand();
    void showState();
    // What is told of a change: when it was seen; empty for the other states.
    QString changeDescription(const QString& path) const;
    void showProgress(int done, int total);
    void reportFailure(const QString& error);

    Parts m_parts;
    QAction* m_contextAction = nullptr;
    QLabel* m_stateLine = nullptr;
    SignatureBand* m_band = nullptr;
    std::optional<DocumentFolders> m_folders;
    bool m_mayAccept = false;
};

} // namespace nebra
