#pragma once

#include "DirectoryReader.h"
#include "DocumentType.h"
#include "FolderNode.h"

#include <QString>

#include <functional>
#include <vector>

namespace nebra {

class FolderTreeModel;

// The subfolders below a folder as read from the disk, before any node is
// made: each with the position of its parent folder in the list (Start: the
// folder read), parents before their children, in the order the nodes are added.
struct FolderSketch
{
    static constexpr qint32 Start = -1;
    struct Folder
    {
        qint32 parent = Start;
        QString name;
    };
    std::vector<Folder> folders;
};

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
    // The same in two halves: sketch() only reads the disk and may run on
    // any thread; addSketch() makes the nodes on the tree's thread.
    static FolderSketch sketch(const QString& folderPath);
    // With keepKnown a folder already in the tree keeps its node (and gets the sketch's children).
    void addSketch(const FolderSketch& sketch, const FolderNode& parentNode, DocumentType type,
                   bool keepKnown = false) const;

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
    static void startScan(const QByteArray& rawPath, qint32 parent, Scan& scan,
                          const DirectoryReader::FolderId* known);
    static void scanFolder(DirectoryReader::OpenFolder folder, quint64 device, qint32 parent, Scan& scan);

    FolderTreeModel& m_nodes;
    ColourSource m_colour;
};

} // namespace nebra
