#include "TreeNavigation.h"

#include "FolderTreeControl.h"
#include "OrganiserTree.h"

namespace nebra {

TreeNavigation::TreeNavigation(FolderTreeControl& tree, const OrganiserTree& organiser)
    : m_tree(tree), m_organiser(organiser)
{
}

void TreeNavigation::GoUpOneFolder()
{
    m_tree.setCurrentNode(m_tree.currentNode().parent());
}

void TreeNavigation::GoToOrganiserNode()
{
    m_tree.setCurrentNode(m_organiser.rootNode());
}

void TreeNavigation::OnCurrentNodeChanged(const FolderNode& node, int state)
{
    const FolderNode current = node.isValid() ? node : m_tree.currentNode();
    const bool disable =
        current.level() == 0 || (state == FolderTreeControl::NavigationChange && current.level() == 1);
    m_tree.setButtonEnabled(FolderTreeControl::UpButton, !disable);
}

} // namespace nebra
