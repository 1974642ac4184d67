#include "DocumentCommands.h"

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
    // Read configurations and layouts are made only in their primary
    // folder; protocols anywhere in their branch. The suite's applications
    // are started from here once launching exists; Open, Run and Help have
    // nothing to do before that.
    if (command == DocumentTypes::NewCommand && (type == 1 || type == 2))
        EnsurePrimaryFolderSelected();
    if (m_resetTimeOut)
        m_resetTimeOut();
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
