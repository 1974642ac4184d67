#pragma once

#include <functional>

namespace nebra {

class FolderTreeControl;

// The document commands New (605), Open (606), Run (607) and folder help
// (608), from the tree's buttons and the tool bar alike, acting on the
// selected tree node's document type.
class DocumentCommands
{
public:
    DocumentCommands(FolderTreeControl& tree, std::function<void()> resetTimeOut);

    // Carries out a command; identifiers other than 605 to 608 are ignored.
    // Restarts the log-out time-out before and after.
    void PerformDocumentCommand(int command);

    // New items are made only in a primary folder (a top-level branch):
    // true when one is selected; otherwise asks to move to the branch's
    // primary folder, selects it and returns true on OK, false on Cancel.
    bool EnsurePrimaryFolderSelected();

private:
    FolderTreeControl& m_tree;
    std::function<void()> m_resetTimeOut;
};

} // namespace nebra
