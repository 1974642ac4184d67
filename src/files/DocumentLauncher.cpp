#include "DocumentLauncher.h"

#include "Messages.h"
#include "ProcessStarter.h"
#include "SuitePaths.h"

namespace nebra {

DocumentLauncher::DocumentLauncher(const SuitePaths& paths, LaunchContext context)
    : m_paths(paths), m_context(std::move(context))
{
}

bool DocumentLauncher::allowedAndAudited(const QString& operation, const QString& entry)
{
    if (!m_context.canPerform || !m_context.canPerform(operation))
        return false;
    return audited(entry);
}

bool DocumentLauncher::audited(const QString& entry)
{
    return !m_context.audit || m_context.audit(entry);
}

QString DocumentLauncher::selectedPath() const
{
    return m_context.selectedDocumentPath ? m_context.selectedDocumentPath() : QString();
}

void DocumentLauncher::launch(const Launch& launch)
{
    const bool withDocument = launch.argumentPrefix != nullptr;
    const QString document = withDocument ? selectedPath() : QString();
    const QString entry = QLatin1String(launch.auditText) + document;
    if (!allowedAndAudited(QLatin1String(launch.operation), entry))
        return;
    QString program = (m_paths.*launch.program)();
    QString arguments = withDocument ? QLatin1String(launch.argumentPrefix) + document : QString();
    LaunchApplication(program, arguments, QLatin1String(launch.setting));
}

void DocumentLauncher::CreateProtocol()
{
    // No entry is written for an operation that cannot then be carried out.
    if (!m_context.startNewProtocolWizard)
        return;
    if (!allowedAndAudited(QStringLiteral("CreateProtocol"), QStringLiteral("Create new protocol")))
        return;
    m_context.startNewProtocolWizard();
}

void DocumentLauncher::CreateLayout()
{
    if (!allowedAndAudited(QStringLiteral("CreateLayout"), QStringLiteral("Create new layout template")))
        return;
    QString program = m_paths.LayoutEditorPath();
    // Only a secured layout editor is told where the layouts live.
    const bool secured = m_context.securityEnabled && m_context.securityEnabled();
    QString arguments =
        secured ? QStringLiteral("\"layoutsfolder:") + m_paths.LayoutsFolder() + QLatin1Char('"') : QString();
    LaunchApplication(program, arguments, QStringLiteral("LayoutEditorPath"));
}

void DocumentLauncher::CreateReadConfiguration()
{
    launch({"CreateReadConfiguration", "Create new read configuration",
            &SuitePaths::ReadConfigurationEditorPath, "ReadConfigurationEditorPath", nullptr});
}

void DocumentLauncher::EditLayout()
{
    launch({"EditLayout", "Edit layout: ", &SuitePaths::LayoutEditorPath, "LayoutEditorPath", ""});
}

void DocumentLauncher::OpenResults()
{
    launch({"OpenResults", "Open results: ", &SuitePaths::AssayApplicationPath, "AssayApplicationPath", ""});
}

void DocumentLauncher::OpenProtocol()
{
    launch({"OpenProtocol", "Open protocol for edit: ", &SuitePaths::AssayApplicationPath,
            "AssayApplicationPath", "/edit "});
}

void DocumentLauncher::OpenReadConfiguration()
{
    launch({"OpenReadConfiguration", "Open read configuration: ", &SuitePaths::ReadConfigurationEditorPath,
            "ReadConfigurationEditorPath", ""});
}

void DocumentLauncher::RunProtocol()
{
    launch({"RunProtocol", "Run protocol: ", &SuitePaths::AssayApplicationPath, "AssayApplicationPath", ""});
}

void DocumentLauncher::OpenReport()
{
    const QString document = selectedPath();
    // Reports are recorded but never checked.
    if (!audited(QStringLiteral("Open report: ") + document))
        return;
    start(CommandLine::Opener(QLatin1String(ReportOpener), document), QString());
}

void DocumentLauncher::OpenNewProtocol(const QString& path)
{
    // The window state and activation of the original start have no
    // counterpart for a detached process on Linux; the desktop brings a newly
    // started program's window to the front itself.
    start(CommandLine::Unquoted(m_paths.AssayApplicationPath(), path),
          QStringLiteral("AssayApplicationPath"));
}

bool DocumentLauncher::LaunchApplication(QString& programPath, QString& arguments, const QString& settingName)
{
    return start(CommandLine::Build(programPath, arguments), settingName);
}

bool DocumentLauncher::start(const CommandLine& line, const QString& settingName)
{
    m_last = line;
    const QString reason = ProcessStarter::Start(line);
    if (reason.isEmpty())
        return true;
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
