#pragma once

#include "CommandId.h"
#include "DocumentType.h"

#include <QString>

#include <span>

namespace nebra {

class SuitePaths;

// How a document command starts the suite's program for a type.
struct DocumentLaunch
{
    enum class Starts
    {
        Nothing,           // the command does nothing for the type
        Program,           // the program of a SuitePaths setting, with a command line
        NewProtocolWizard, // the new-assay-protocol wizard picker
        FileOpener,        // the desktop's opener, with the document's path
    };
    using ProgramPath = QString (SuitePaths::*)() const;

    Starts starts = Starts::Nothing;
    // The general operation asked of the security layer first; nullptr: none
    // is asked, the audit entry is still written.
    const char* operation = nullptr;
    // The audit entry; a text ending in ": " is followed by the document's full path.
    const char* auditText = "";
    // The program (Program only): its SuitePaths getter and its setting's name.
    ProgramPath program = nullptr;
    const char* programSetting = "";
    // nullptr: no document argument; otherwise this prefix and the selected
    // document's path, unquoted.
    const char* documentPrefix = nullptr;
    // In a security session the program is told where the layouts live,
    // "\"layoutsfolder:<LayoutsFolder>\"", as its one argument.
    bool layoutsFolderWhenSecured = false;
};

// When New, Open or Run is enabled for a type.
enum class CommandAvailability
{
    Off,
    On,
    SingleFile, // exactly one file (not a folder) is selected in the file list
    Unchanged,  // the type leaves the command as it is
};

struct DocumentCommandEntry
{
    CommandAvailability availability = CommandAvailability::Off;
    DocumentLaunch launch{};
    // New items are made only in the branch's top folder: the user is asked to move there first.
    bool primaryFolderOnly = false;
};

// What the preview pane shows for a document of the type.
enum class PreviewKind
{
    None,   // nothing: the pane keeps what it shows
    Page,   // the document's preview page, or the preview-not-available page
    Layout, // the plate layout viewer draws the document
};

// Everything that differs between document types, in one row per type.
struct DocumentTypeDescription
{
    DocumentType type;

    // The folder tree and the shortcuts bar: the caption (a string resource,
    // or captionText when captionResource is 0) and the folder under the data
    // folders. A per-driver branch is the selected driver's folder below
    // `folder`, captioned by the driver's name, and exists only while the
    // suite runs with instrument drivers.
    int captionResource = 0;
    const char* captionText = "";
    QString (SuitePaths::*folder)() const = nullptr;
    bool perDriver = false;
    // Which groups of the shortcuts bar lead to the branch, and its picture
    // there (a freedesktop icon name).
    bool inTasksGroup = false;
    bool inFoldersGroup = false;
    const char* icon = "folder";

    // The file list: whether selecting the node lists its folder; the filter
    // ("" keeps the list's filter), set before listing or, for a filter that
    // shows every file, once the folder is listed; the type's caption ("" keeps it).
    bool listsFolder = true;
    const char* filter = "";
    bool filterAfterListing = false;
    const char* typeCaption = "";
    // The picture of the type's documents in the list: the icon the package
    // installs for the file manager ("application-x-nebra-protocol"); "" for
    // the generic picture of a file.
    const char* documentIcon = "";

    // The preview: what it shows, and whether it is shown without
    // instrument drivers in use (with drivers every type is previewed).
    PreviewKind preview = PreviewKind::None;
    bool previewedWithoutDrivers = false;
    // After the Options dialog, the preview is refreshed and a moved parent
    // directory followed for a node of the type.
    bool followsOptions = false;

    // The help topic of the folder; 0 for none.
    int helpTopic = 0;

    DocumentCommandEntry newCommand{};
    DocumentCommandEntry openCommand{};
    DocumentCommandEntry runCommand{};

    // New, Open or Run; null for any other command.
    const DocumentCommandEntry* command(CommandId id) const;
    // The shortcuts-bar key of the branch: its type as a number.
    QString shortcutKey() const { return QString::number(toData(type)); }
};

// The one table of document types: read configurations "*.daq", layouts
// "*.mlo", protocols "*.apr", results "*.ars", reports "*.*", and the root.
// Code that acts differently by type reads it here and never tests the type.
// A type's folder, file pattern and caption are its kind's (DocumentKinds),
// which the suite's other programs read as well.
class DocumentTypes
{
public:
    // The six types, None to Reports, in the tree's order.
    static std::span<const DocumentTypeDescription> all();
    // The row of a node's Data. A value below 0 counts as read configurations
    // for the enabling of New, Open and Run and as the root for the options,
    // without commands or anything else; a value above 5 changes nothing.
    static const DocumentTypeDescription& of(int data);
    static const DocumentTypeDescription& of(DocumentType type) { return of(toData(type)); }
};

} // namespace nebra
