#pragma once

#include "CommandLine.h"
#include "LaunchContext.h"

#include <QString>

namespace nebra {

class SuitePaths;

// Starts the suite's programs on documents. Each launch procedure, in this
// order and stopping at the first step that fails: asks the security layer
// for its operation; writes its audit entry (texts ending in ": " are
// followed by the selected document's full path), and goes no further when
// the entry could not be written; reads the program's path
// from SuitePaths afresh; builds the arguments and calls LaunchApplication.
//
//   procedure                operation / audit text                    program, arguments
//   CreateProtocol           "CreateProtocol" / "Create new protocol"  the new-protocol wizard
//   CreateLayout             "CreateLayout" / "Create new layout template"
//                                         LayoutEditorPath, "\"layoutsfolder:<LayoutsFolder>\"" in a
//                                         security session, otherwise none
//   CreateReadConfiguration  "CreateReadConfiguration" / "Create new read configuration"
//                                         ReadConfigurationEditorPath, none
//   EditLayout               "EditLayout" / "Edit layout: "            LayoutEditorPath, path
//   OpenResults              "OpenResults" / "Open results: "          AssayApplicationPath, path
//   OpenProtocol             "OpenProtocol" / "Open protocol for edit: "
//                                         AssayApplicationPath, "/edit " + path
//   OpenReadConfiguration    "OpenReadConfiguration" / "Open read configuration: "
//                                         ReadConfigurationEditorPath, path
//   RunProtocol              "RunProtocol" / "Run protocol: "          AssayApplicationPath, path
//
// The document path is never quoted, even with blanks in it. A program that
// cannot be started is reported in a message box naming its setting and
// path; the audit entry written before stays, and the Organiser goes on.
class DocumentLauncher
{
public:
    DocumentLauncher(const SuitePaths& paths, LaunchContext context);

    // False while there is no new-protocol wizard to start.
    bool CanCreateProtocol() const { return bool(m_context.startNewProtocolWizard); }
    void CreateProtocol();
    void CreateLayout();
    void CreateReadConfiguration();
    void EditLayout();
    void OpenResults();
    void OpenProtocol();
    void OpenReadConfiguration();
    void RunProtocol();

    // Open on a report: no permission is asked; the audit entry
    // "Open report: " + path is written and, once it is, the desktop's opener (xdg-open)
    // is started with the path as its one argument.
    void OpenReport();

    // Opens a protocol that the new-protocol wizard has just written: the
    // assay application with the path, neither quoted, without check or audit.
    void OpenNewProtocol(const QString& path);

    // Quotes programPath in place (see CommandLine::QuoteProgramPath), builds
    // the command line and starts it detached. settingName names where the
    // path came from, for the message of a failed start. Returns whether the
    // program was started.
    bool LaunchApplication(QString& programPath, QString& arguments, const QString& settingName = {});

    // The command line of the last start attempted (empty before the first).
    const CommandLine& lastCommandLine() const { return m_last; }

    static QString startFailureTitle() { return QStringLiteral("Program Not Started"); }
    static constexpr const char* ReportOpener = "xdg-open";

private:
    using ProgramPath = QString (SuitePaths::*)() const;
    struct Launch
    {
        const char* operation;
        const char* auditText;
        ProgramPath program;
        const char* setting;
        const char* argumentPrefix; // nullptr: no document argument
    };
    void launch(const Launch& launch);
    bool allowedAndAudited(const QString& operation, const QString& entry);
    bool audited(const QString& entry);
    QString selectedPath() const;
    bool start(const CommandLine& line, const QString& settingName);

    const SuitePaths& m_paths;
    LaunchContext m_context;
    CommandLine m_last;
};

} // namespace nebra
