#pragma once

#include "FolderNode.h"

namespace nebra {

class FolderTreeControl;
class OrganiserTree;

// Moving the tree's current node: up one folder, back to the Organiser
// root, and the rule that keeps the tree's Up button enabled only where it
// leads somewhere.
class TreeNavigation
{
public:
    TreeNavigation(FolderTreeControl& tree, const OrganiserTree& organiser);

    // The current node's parent becomes current.
    void GoUpOneFolder();
    // The root becomes current.
    void GoToOrganiserNode();

    // The tree's current-node-changed event: Up (504) is disabled on the
    // root, and on a primary folder (level 1) reached with state 1;
    // otherwise it is enabled.
    void OnCurrentNodeChanged(const FolderNode& node, int state);

private:
    FolderTreeControl& m_tree;
    const OrganiserTree& m_organiser;
};

} // namespace nebra
