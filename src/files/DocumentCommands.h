#pragma once

#include "DocumentCommand.h"
#include "FolderKind.h"

#include <functional>

namespace nebra {

class DocumentLauncher;
class FolderTreeControl;

// The document commands New, Open, Run and folder help, from the tree's
// buttons and the tool bar alike, acting on the selected tree node's
// document type.
class DocumentCommands
{
public:
    DocumentCommands(FolderTreeControl& tree, std::function<void()> resetTimeOut);

    // The launcher that starts the suite's programs; until it is set, New,
    // Open and Run do nothing beyond the primary-folder rule.
    void setLauncher(DocumentLauncher* launcher) { m_launcher = launcher; }
    // Shows a help topic by context id.
    void setHelp(std::function<void(int contextId)> displayHelpContext)
    {
        m_help = std::move(displayHelpContext);
    }

    // Carries out a command; a value outside the four is ignored.
    // Restarts the log-out time-out before and after.
    void PerformDocumentCommand(DocumentCommand command);

    // New items are made only in a primary folder (a top-level branch):
    // true when one is selected; otherwise asks to move to the branch's
    // primary folder, selects it and returns true on OK, false on Cancel.
    bool EnsurePrimaryFolderSelected();

private:
    void performNew(FolderKind type);
    void performOpen(FolderKind type);

    FolderTreeControl& m_tree;
    std::function<void()> m_resetTimeOut;
    DocumentLauncher* m_launcher = nullptr;
    std::function<void(int)> m_help;
};

} // namespace nebra
