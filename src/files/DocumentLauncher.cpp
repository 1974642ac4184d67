#include "DocumentLauncher.h"

#include "Messages.h"
#include "ProcessStarter.h"
#include "SuitePaths.h"

#include <QFileInfo>

namespace nebra {

DocumentLauncher::DocumentLauncher(const SuitePaths& paths, LaunchContext context)
    : m_paths(paths), m_context(std::move(context))
{
}

namespace {
const DocumentTypeDescription& typeOf(DocumentType type)
{
    return DocumentTypes::of(type);
}
} // namespace

// A launch without an operation is recorded but never checked.
bool DocumentLauncher::allowedAndAudited(const DocumentLaunch& launch, const QString& entry)
{
    if (launch.operation && (!m_context.canPerform || !m_context.canPerform(QLatin1String(launch.operation))))
        return false;
    return !m_context.audit || m_context.audit(entry);
}

QString DocumentLauncher::selectedPath() const
{
    return m_context.selectedDocumentPath ? m_context.selectedDocumentPath() : QString();
}

bool DocumentLauncher::CanLaunch(const DocumentLaunch& launch) const
{
    return launch.starts != DocumentLaunch::Starts::NewProtocolWizard ||
           bool(m_context.startNewProtocolWizard);
}

void DocumentLauncher::Launch(const DocumentLaunch& launch)
{
    // No entry is written for an operation that cannot then be carried out.
    if (launch.starts == DocumentLaunch::Starts::Nothing || !CanLaunch(launch))
        return;
    const QString document = launch.documentPrefix ? selectedPath() : QString();
    if (!allowedAndAudited(launch, QLatin1String(launch.auditText) + document))
        return;
    switch (launch.starts) {
    case DocumentLaunch::Starts::NewProtocolWizard:
        m_context.startNewProtocolWizard();
        break;
    case DocumentLaunch::Starts::FileOpener:
        if (start(CommandLine::Opener(QLatin1String(ReportOpener), document), QString(), {document}))
            noteUsed(document);
        break;
    default:
        startProgram(launch, document);
        break;
    }
}

void DocumentLauncher::startProgram(const DocumentLaunch& launch, const QString& document)
{
    QString program = (m_paths.*launch.program)();
    QString arguments;
    if (launch.documentPrefix) {
        arguments = QLatin1String(launch.documentPrefix) + document;
    } else if (launch.layoutsFolderWhenSecured && m_context.securityEnabled && m_context.securityEnabled()) {
        // Only a secured layout editor is told where the layouts live.
        arguments = QStringLiteral("\"layoutsfolder:") + m_paths.LayoutsFolder() + QLatin1Char('"');
    }
    QString target = document;
    if (!launch.documentPrefix)
        target = launch.layoutsFolderWhenSecured ? m_paths.LayoutsFolder()
                 : m_context.currentFolder       ? m_context.currentFolder()
                                                 : QString();
    if (start(CommandLine::Build(program, arguments), QLatin1String(launch.programSetting), {target}) &&
        launch.documentPrefix)
        noteUsed(document);
}

void DocumentLauncher::noteUsed(const QString& document)
{
    if (m_context.documentUsed && !document.isEmpty())
        m_context.documentUsed(document);
}

void DocumentLauncher::CreateProtocol()
{
    Launch(typeOf(DocumentType::Protocols).newCommand.launch);
}

void DocumentLauncher::CreateLayout()
{
    Launch(typeOf(DocumentType::Layouts).newCommand.launch);
}

void DocumentLauncher::CreateReadConfiguration()
{
    Launch(typeOf(DocumentType::ReadConfigurations).newCommand.launch);
}

void DocumentLauncher::EditLayout()
{
    Launch(typeOf(DocumentType::Layouts).openCommand.launch);
}

void DocumentLauncher::OpenResults()
{
    Launch(typeOf(DocumentType::Results).openCommand.launch);
}

void DocumentLauncher::OpenProtocol()
{
    Launch(typeOf(DocumentType::Protocols).openCommand.launch);
}

void DocumentLauncher::OpenReadConfiguration()
{
    Launch(typeOf(DocumentType::ReadConfigurations).openCommand.launch);
}

void DocumentLauncher::RunProtocol()
{
    Launch(typeOf(DocumentType::Protocols).runCommand.launch);
}

void DocumentLauncher::OpenReport()
{
    Launch(typeOf(DocumentType::Reports).openCommand.launch);
}

void DocumentLauncher::OpenNewProtocol(const QStringList& files)
{
    // The window state and activation of the original start have no
    // counterpart for a detached process on Linux; the desktop brings a newly
    // started program's window to the front itself.
    start(CommandLine::Unquoted(m_paths.AssayApplicationPath(), files.join(QStringLiteral("; "))),
          QStringLiteral("AssayApplicationPath"), files);
}

bool DocumentLauncher::LaunchApplication(QString& programPath, QString& arguments, const QString& settingName)
{
    return start(CommandLine::Build(programPath, arguments), settingName, {});
}

bool DocumentLauncher::start(const CommandLine& line, const QString& settingName, const QStringList& targets)
{
    m_last = line;
    qint64 processId = 0;
    const QString reason = ProcessStarter::Start(line, &processId);
    if (reason.isEmpty()) {
        if (m_context.programStarted)
            for (const QString& target : targets)
                if (!target.isEmpty())
                    m_context.programStarted(processId, QFileInfo(line.program).fileName(), target);
        return true;
    }
    const QString source =
        settingName.isEmpty()
            ? QStringLiteral("the desktop's file opener")
            : QStringLiteral("the setting %1 in the [Paths] group of the suite's settings").arg(settingName);
    Messages::show(
        {QStringLiteral("The program could not be started.\n\n"
                        "Program: %1\nFrom: %2\nReason: %3")
             .arg(line.program.isEmpty() ? QStringLiteral("(none)") : line.program, source, reason),
         startFailureTitle(), MessageIcon::Warning, MessageButton::Ok, MessageButton::Ok, m_context.owner});
    return false;
}

} // namespace nebra
