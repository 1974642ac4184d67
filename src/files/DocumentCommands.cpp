#include "DocumentCommands.h"

#include "DocumentLauncher.h"
#include "DocumentTypes.h"
#include "FolderTreeControl.h"
#include "Messages.h"

namespace nebra {

DocumentCommands::DocumentCommands(FolderTreeControl& tree, std::function<void()> resetTimeOut)
    : m_tree(tree), m_resetTimeOut(std::move(resetTimeOut))
{
}

void DocumentCommands::PerformDocumentCommand(DocumentCommand command)
{
    if (m_resetTimeOut)
        m_resetTimeOut();
    const FolderKind type = folderKindFromData(m_tree.currentNode().data());
    switch (command) {
    case DocumentCommand::New:
        performNew(type);
        break;
    case DocumentCommand::Open:
        performOpen(type);
        break;
    case DocumentCommand::Run:
        if (type == FolderKind::Protocols && m_launcher)
            m_launcher->RunProtocol();
        break;
    case DocumentCommand::Help:
        if (const int topic = DocumentTypes::helpContextId(type); topic != 0 && m_help)
            m_help(topic);
        break;
    }
    if (m_resetTimeOut)
        m_resetTimeOut();
}

void DocumentCommands::performNew(FolderKind type)
{
    // Read configurations and layouts are made only in their primary
    // folder; protocols anywhere in their branch.
    switch (type) {
    case FolderKind::ReadConfigurations:
        if (EnsurePrimaryFolderSelected() && m_launcher)
            m_launcher->CreateReadConfiguration();
        break;
    case FolderKind::Layouts:
        if (EnsurePrimaryFolderSelected() && m_launcher)
            m_launcher->CreateLayout();
        break;
    case FolderKind::Protocols:
        if (m_launcher)
            m_launcher->CreateProtocol();
        break;
    default:
        break;
    }
}

void DocumentCommands::performOpen(FolderKind type)
{
    if (!m_launcher)
        return;
    switch (type) {
    case FolderKind::ReadConfigurations:
        m_launcher->OpenReadConfiguration();
        break;
    case FolderKind::Layouts:
        m_launcher->EditLayout();
        break;
    case FolderKind::Protocols:
        m_launcher->OpenProtocol();
        break;
    case FolderKind::Results:
        m_launcher->OpenResults();
        break;
    case FolderKind::Reports:
        m_launcher->OpenReport();
        break;
    default:
        break;
    }
}

bool DocumentCommands::EnsurePrimaryFolderSelected()
{
    const FolderNode selected = m_tree.currentNode();
    if (selected.level() == 1)
        return true;
    FolderNode primary = selected;
    while (primary.isValid() && primary.level() != 1)
        primary = primary.parent();
    if (!primary.isValid())
        return false; // the root and nodes outside a branch have no primary folder
    const int answer =
        Messages::show({QStringLiteral("New items can only be created in the primary folder.\r\n"
                                       "Moving to %1 folder now.")
                            .arg(primary.text()),
                        QStringLiteral("Creating New Item"), MessageIcon::Information,
                        MessageButton::Ok | MessageButton::Cancel, MessageButton::Ok, &m_tree});
    if (answer != MessageButton::Ok)
        return false;
    m_tree.setCurrentNode(primary);
    return true;
}

} // namespace nebra
