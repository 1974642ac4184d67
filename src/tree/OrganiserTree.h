#pragma once

#include "FolderBranches.h"
#include "FolderNode.h"

#include <QString>

#include <functional>

namespace nebra {

class FileListControl;
class FolderTreeControl;
class ShortcutsBar;
struct Globals;

// The Organiser's folder tree: the "Organiser" root, one top-level branch
// per kind of document folder, each filled from the disk, and the branch
// operations by path. It keeps the main window's module state: the root and
// the top-level nodes, and the shortcuts-bar item of the instrument node.
//
// Folder kinds (the node's Data): 0 root, 1 instrument data, 2 microplate
// layouts, 3 protocols, 4 results, 5 reports.
class OrganiserTree
{
public:
    // Style of the root's picture and of every other node's.
    static constexpr int RootStyle = 7;
    static constexpr int BranchStyle = 6;
    static constexpr int InstrumentCaptionFlag = 0x20;

    OrganiserTree(FolderTreeControl& tree, FileListControl& list, ShortcutsBar& shortcuts, Globals& globals);

    // Clears and builds the whole tree; writes one block and ten trace lines
    // to the diagnostic log.
    void InitialiseOrganiserTree();
    void AddResultsNode();
    void AddSubFolderNodes(const QString& folderPath, const FolderNode& parentNode, int kind);
    void RecreateResultsNode();

    bool DoesPathAlreadyExistInTree(const QString& path) const;
    bool AddExplorerBranch(const QString& path);
    bool RemoveExplorerBranch(const QString& path);
    bool RenameExplorerBranch(const QString& oldPath, const QString& newPath);

    bool IsThisFolderANebraFolder(const QString& path) const;
    bool IsThisCurrentFolder(const QString& path) const;
    bool IsThisFileInCurrentFolder(const QString& path) const;
    bool IsFileInFileView(const QString& fileName) const;

    // Puts the instrument node (caption as given, folder of the selected
    // driver) under the root, in place of the one there, with its item in
    // the shortcuts bar's second group.
    void SetupHLDNode(const QString& caption);

    FolderNode rootNode() const { return m_root; }
    FolderNode instrumentNode() const { return m_instrument; }
    FolderNode layoutsNode() const { return m_layouts; }
    FolderNode protocolsNode() const { return m_protocols; }
    FolderNode resultsNode() const { return m_results; }
    FolderNode reportsNode() const { return m_reports; }
    // The node a shortcuts-bar item leads to: its key is the folder kind.
    FolderNode nodeForKind(int kind) const;

    // The page shown for the root; by default the welcome page the settings choose.
    void setWelcomePageSource(std::function<QString()> source) { m_welcomePage = std::move(source); }

private:
    void addRootNode();
    void addBranchNodes();
    void fillBranches();
    FolderNode addBranchNode(const QString& caption, const QString& path, int kind, int position = -1);
    QString selectedDriverName() const;
    QString instrumentCaption(const QString& driverName) const;
    QString welcomePageFile() const;
    void addInstrumentShortcut(const QString& caption);

    FolderTreeControl& m_tree;
    FileListControl& m_list;
    ShortcutsBar& m_shortcuts;
    Globals& m_globals;
    FolderBranches m_branches;
    std::function<QString()> m_welcomePage;

    FolderNode m_root;
    FolderNode m_instrument;
    FolderNode m_layouts;
    FolderNode m_protocols;
    FolderNode m_results;
    FolderNode m_reports;
    int m_instrumentShortcut = -1; // index in the shortcuts bar's second group
};

} // namespace nebra
