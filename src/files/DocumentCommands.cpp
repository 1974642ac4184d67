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

void DocumentCommands::PerformDocumentCommand(int command)
{
    if (m_resetTimeOut)
        m_resetTimeOut();
    const int type = m_tree.currentNode().data();
    switch (command) {
    case DocumentTypes::NewCommand:
        performNew(type);
        break;
    case DocumentTypes::OpenCommand:
        performOpen(type);
        break;
    case DocumentTypes::RunCommand:
        if (type == 3 && m_launcher)
            m_launcher->RunProtocol();
        break;
    case DocumentTypes::HelpCommand:
        if (const int topic = DocumentTypes::helpContextId(type); topic != 0 && m_help)
            m_help(topic);
        break;
    default:
        break;
    }
    if (m_resetTimeOut)
        m_resetTimeOut();
}

void DocumentCommands::performNew(int type)
{
    // Read configurations and layouts are made only in their primary
    // folder; protocols anywhere in their branch.
    switch (type) {
    case 1:
        if (EnsurePrimaryFolderSelected() && m_launcher)
            m_launcher->CreateReadConfiguration();
        break;
    case 2:
        if (EnsurePrimaryFolderSelected() && m_launcher)
            m_launcher->CreateLayout();
        break;
    case 3:
        if (m_launcher)
            m_launcher->CreateProtocol();
        break;
    default:
        break;
    }
}

void DocumentCommands::performOpen(int type)
{
    if (!m_launcher)
        return;
    switch (type) {
    case 1:
        m_launcher->OpenReadConfiguration();
        break;
    case 2:
        m_launcher->EditLayout();
        break;
    case 3:
        m_launcher->OpenProtocol();
        break;
    case 4:
        m_launcher->OpenResults();
        break;
    case 5:
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
