#pragma once

#include "CommandId.h"

namespace nebra {

class DocumentLauncher;
class FolderTreeControl;

// The document commands New, Open and Run, from the tree's buttons and the
// tool bar alike, acting on the selected tree node's document type as the
// document type table says.
class DocumentCommands
{
public:
    DocumentCommands(FolderTreeControl& tree, DocumentLauncher& launcher);

    // Carries out New, Open or Run; any other command is ignored.
    void PerformDocumentCommand(CommandId command);

    // New items are made only in a primary folder (a top-level branch):
    // true when one is selected; otherwise asks to move to the branch's
    // primary folder, selects it and returns true on OK, false on Cancel.
    bool EnsurePrimaryFolderSelected();

private:
    FolderTreeControl& m_tree;
    DocumentLauncher& m_launcher;
};

} // namespace nebra
