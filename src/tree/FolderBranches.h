#pragma once

#include "DirectoryReader.h"
#include "DocumentType.h"
#include "FolderNode.h"

#include <QString>

#include <functional>

namespace nebra {

class FolderTreeModel;

// The folder branches of the tree: filling a node from the disk and the
// three branch operations by path that keep the tree in step with folders
// made, removed and renamed on disk. Paths are compared without regard to
// case; of several matches the first in the tree's flat order wins.
class FolderBranches
{
public:
    // The colour new folder nodes take (the file list's).
    using ColourSource = std::function<quint32()>;

    FolderBranches(FolderTreeModel& nodes, ColourSource colour);

    // The attributes every folder node below a top-level node carries.
    void SetFolderNodeAttributes(const FolderNode& node, const QString& path, DocumentType type) const;

    // Adds one child per subfolder of folderPath, in the listing's order, and
    // fills each the same way. Hidden folders count. A link to a folder is
    // shown once, as a node; its contents are shown only when no other node
    // shows that folder already, so link loops end and nothing repeats. An
    // unreadable or vanished folder simply gets no children.
    void AddSubFolderNodes(const QString& folderPath, const FolderNode& parentNode, DocumentType type) const;

    bool DoesPathAlreadyExistInTree(const QString& path) const;
    // The first node whose folder path is path (ignoring case), or none.
    FolderNode FindNode(const QString& path) const;

    // Adds a childless node for path under the node of its parent folder.
    // Refused (false) when the path is in the tree already, has no separator,
    // or its parent folder has no node.
    bool AddExplorerBranch(const QString& path) const;
    // Removes the node of path with its subtree.
    bool RemoveExplorerBranch(const QString& path) const;
    // Removes oldPath's node and, only when there was one, adds newPath's.
    bool RenameExplorerBranch(const QString& oldPath, const QString& newPath) const;

private:
    struct Scan;
    static void setAttributes(const FolderNode& node, DocumentType type, quint32 colour);
    static void markListed(Scan& scan, const DirectoryReader::FolderId& id);
    void startScan(const QByteArray& rawPath, const FolderNode& parent, Scan& scan,
                   const DirectoryReader::FolderId* known) const;
    void scanFolder(DirectoryReader::OpenFolder folder, quint64 device, const FolderNode& parent,
                    Scan& scan) const;

    FolderTreeModel& m_nodes;
    ColourSource m_colour;
};

} // namespace nebra
