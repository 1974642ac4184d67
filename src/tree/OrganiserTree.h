#pragma once

#include "FolderBranches.h"
#include "FolderKind.h"
#include "FolderNode.h"

#include <QString>

#include <functional>

namespace nebra {

class FileListControl;
class FolderTreeControl;
class InstalledDrivers;
class Resources;
class ShortcutsBar;
class SuitePaths;
class SuiteSettings;

// What the tree reads while it builds itself: captions, the folders, the
// driver settings and the installed drivers, and the root's page.
struct OrganiserTreeSources
{
    const Resources& resources;
    SuiteSettings& settings;
    const SuitePaths& paths;
    InstalledDrivers& drivers;
    // Read once at start-up: the suite runs with instrument drivers.
    bool instrumentDriversInUse = false;
    // The page shown for the root (the welcome page the settings choose).
    std::function<QString()> welcomePage;
};

// The Organiser's folder tree: the "Organiser" root, one top-level branch
// per kind of document folder, each filled from the disk, and the branch
// operations by path. It keeps the main window's module state: the root and
// the top-level nodes, and the shortcuts-bar item of the instrument node.
// Each node's Data is its FolderKind.
class OrganiserTree
{
public:
    // Style of the root's picture and of every other node's.
    static constexpr int RootStyle = 7;
    static constexpr int BranchStyle = 6;
    static constexpr int InstrumentCaptionFlag = 0x20;

    OrganiserTree(FolderTreeControl& tree, FileListControl& list, ShortcutsBar& shortcuts,
                  OrganiserTreeSources sources);

    // Clears and builds the whole tree; writes one block and ten trace lines
    // to the diagnostic log.
    void InitialiseOrganiserTree();
    void AddResultsNode();
    void AddSubFolderNodes(const QString& folderPath, const FolderNode& parentNode, FolderKind kind);
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
    // The instrument node's caption for a driver: its name, or the generic
    // caption when the instrument settings ask for it.
    QString instrumentCaption(const QString& driverName) const;

    FolderNode rootNode() const { return m_root; }
    FolderNode instrumentNode() const { return m_instrument; }
    FolderNode layoutsNode() const { return m_layouts; }
    FolderNode protocolsNode() const { return m_protocols; }
    FolderNode resultsNode() const { return m_results; }
    FolderNode reportsNode() const { return m_reports; }
    // The top-level node of a kind (the root for None); invalid for other values.
    FolderNode nodeForKind(FolderKind kind) const;

private:
    void addRootNode();
    void addBranchNodes();
    void fillBranches();
    FolderNode addBranchNode(const QString& caption, const QString& path, FolderKind kind, int position = -1);
    QString selectedDriverName() const;
    void addInstrumentShortcut(const QString& caption);

    FolderTreeControl& m_tree;
    FileListControl& m_list;
    ShortcutsBar& m_shortcuts;
    OrganiserTreeSources m_sources;
    FolderBranches m_branches;

    FolderNode m_root;
    FolderNode m_instrument;
    FolderNode m_layouts;
    FolderNode m_protocols;
    FolderNode m_results;
    FolderNode m_reports;
    int m_instrumentShortcut = -1; // index in the shortcuts bar's second group
};

} // namespace nebra
