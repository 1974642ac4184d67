#pragma once

#include "DocumentTypes.h"
#include "FolderBranches.h"
#include "FolderNode.h"
#include "FolderReaders.h"

#include <QString>

#include <array>
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
// per document type, each filled from the disk, and the branch operations by
// path. Each branch's caption and folder come from the document type table;
// the read configurations' branch is the instrument node, the selected
// driver's folder. It keeps the main window's module state: the root and the
// top-level nodes, and the shortcuts-bar item of the instrument node. Each
// node's Data is its DocumentType.
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
    // Whether the data folders answer; while they do not, the tree is built
    // with its branches captioned as unavailable and nothing below them.
    void setFoldersAnswer(bool answer) { m_foldersAnswer = answer; }
    static QString unavailableCaption(const QString& caption);
    // A branch whose folder has not answered within two seconds while it is read.
    static QString waitingCaption(const QString& caption);
    // Branches are being read from the disk, on a reader thread: the build's,
    // RecreateResultsNode's, SetupHLDNode's and a branch's that came back.
    // Each is filled when its reading arrives; the tree control is busy until then.
    bool isFilling() const { return m_readers.pendingCount() > 0; }
    void AddResultsNode();
    void AddSubFolderNodes(const QString& folderPath, const FolderNode& parentNode, DocumentType type);
    void RecreateResultsNode();

    bool DoesPathAlreadyExistInTree(const QString& path) const;
    // A branch's own folder made again, or renamed back, brings the branch
    // back where it was, sub-folders included.
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
    // After CurrentHLD changed: the instrument node is set up for the driver
    // it selects in a fresh read of the catalogue, made when there is none
    // yet. Without instrument drivers in use, or with an index that names no
    // driver, nothing changes.
    void HandleChangedHLD();
    // The instrument node's caption for a driver: its name, or the generic
    // caption when the instrument settings ask for it.
    QString instrumentCaption(const QString& driverName) const;

    FolderNode rootNode() const { return node(DocumentType::None); }
    // The top-level node of a type (the root for None); invalid for other
    // values and for a branch not made (the instrument node without drivers).
    FolderNode node(DocumentType type) const;

private:
    void addRootNode();
    void addBranchNodes();
    void fillBranches();
    void addBranch(DocumentType type);
    FolderNode addBranchNode(const QString& caption, const QString& path, DocumentType type,
                             int position = -1);
    QString caption(DocumentType type) const;
    QString folder(DocumentType type) const;
    FolderNode& slot(DocumentType type) { return m_nodes[std::size_t(toData(type))]; }
    QString selectedDriverName() const;
    void addInstrumentShortcut(const QString& caption);
    bool restoreBranch(const QString& path);
    // Fills branch from its folder once the reading arrives; replace drops its children then.
    void fillLater(const FolderNode& branch, DocumentType type, bool replace = false);
    QString shownCaption(DocumentType type) const;

    FolderTreeControl& m_tree;
    FileListControl& m_list;
    ShortcutsBar& m_shortcuts;
    OrganiserTreeSources m_sources;
    bool m_foldersAnswer = true;
    FolderBranches m_branches;

    std::array<FolderNode, 6> m_nodes; // the root and the top-level node of each type, by type
    struct BranchPlace
    {
        QString caption;
        QString folder;
    };
    std::array<BranchPlace, 6> m_places; // each branch's caption and folder when it was made, by type
    FolderReaders m_readers;             // last: gone, with what it would deliver, before the rest
    int m_instrumentShortcut = -1;       // index in the shortcuts bar's second group
};

} // namespace nebra
