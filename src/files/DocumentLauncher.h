#pragma once

#include "CommandLine.h"
#include "DocumentTypes.h"
#include "LaunchContext.h"

#include <QString>
#include <QStringList>

namespace nebra {

class SuitePaths;

// Starts the suite's programs on documents, as the document type table's
// launches say (DocumentLaunch). Each launch, in this order and stopping at
// the first step that fails: asks the security layer for its operation (a
// launch without one is recorded but never checked); writes its audit entry
// (texts ending in ": " are followed by the selected document's full path),
// and goes no further when the entry could not be written; reads the
// program's path from SuitePaths afresh; builds the arguments and calls
// LaunchApplication. The document path is never quoted, even with blanks in
// it. A program that cannot be started is reported in a message box naming
// its setting and path; the audit entry written before stays, and the
// Organiser goes on. A document whose program was started is passed to the
// documentUsed hook.
//
// The named procedures are the launches of the table's rows:
//   CreateProtocol, OpenProtocol, RunProtocol   protocols' New, Open, Run
//   CreateLayout, EditLayout                    layouts' New, Open
//   CreateReadConfiguration, OpenReadConfiguration  read configurations' New, Open
//   OpenResults                                 results' Open
//   OpenReport                                  reports' Open: the desktop's opener (xdg-open)
class DocumentLauncher
{
public:
    DocumentLauncher(const SuitePaths& paths, LaunchContext context);

    // Carries out a launch of the document type table; Starts::Nothing does nothing.
    void Launch(const DocumentLaunch& launch);
    // False for a launch that cannot be carried out: the new-protocol wizard while there is none.
    bool CanLaunch(const DocumentLaunch& launch) const;

    void CreateProtocol();
    void CreateLayout();
    void CreateReadConfiguration();
    void EditLayout();
    void OpenResults();
    void OpenProtocol();
    void OpenReadConfiguration();
    void RunProtocol();

    void OpenReport();

    // Opens what the new-protocol wizard has just written: the assay
    // application with the files joined by "; ", neither quoted, without check
    // or audit. The wizard's run has already counted the files as used.
    void OpenNewProtocol(const QStringList& files);

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
    bool allowedAndAudited(const DocumentLaunch& launch, const QString& entry);
    void startProgram(const DocumentLaunch& launch, const QString& document);
    QString selectedPath() const;
    // target: the document or folder the program works on (LaunchContext::programStarted).
    bool start(const CommandLine& line, const QString& settingName, const QStringList& targets);
    void noteUsed(const QString& document);

    const SuitePaths& m_paths;
    LaunchContext m_context;
    CommandLine m_last;
};

} // namespace nebra
