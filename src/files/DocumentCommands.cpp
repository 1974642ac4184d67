#include "DocumentCommands.h"

#include "DocumentLauncher.h"
#include "DocumentTypes.h"
#include "FolderTreeControl.h"
#include "Messages.h"

namespace nebra {

DocumentCommands::DocumentCommands(FolderTreeControl& tree, DocumentLauncher& launcher)
    : m_tree(tree), m_launcher(launcher)
{
}

void DocumentCommands::PerformDocumentCommand(CommandId command)
{
    const DocumentCommandEntry* entry = DocumentTypes::of(m_tree.currentNode().data()).command(command);
    if (!entry || entry->launch.starts == DocumentLaunch::Starts::Nothing)
        return;
    if (entry->primaryFolderOnly && !EnsurePrimaryFolderSelected())
        return;
    m_launcher.Launch(entry->launch);
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
