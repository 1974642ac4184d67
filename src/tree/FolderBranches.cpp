#include "FolderBranches.h"

#include "DirectoryReader.h"
#include "FolderTreeModel.h"
#include "TreePathRules.h"

#include <QFile>
#include <QSet>

#include <deque>

namespace nebra {

namespace {

constexpr int FolderStyle = 6;

QString childPath(const QString& folder, const QString& name)
{
    return folder.endsWith(QLatin1Char('/')) ? folder + name : folder + QLatin1Char('/') + name;
}

QByteArray childPath(const QByteArray& folder, const QByteArray& name)
{
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

} // namespace

// One fill from the disk: the folders listed so far, and the links to
// folders whose contents wait until every real folder has been listed, so a
// folder's contents appear under the folder itself rather than under a link.
struct FolderBranches::Scan
{
    struct Link
    {
        QByteArray rawPath;
        QString path;
        FolderNode node;
        DirectoryReader::FolderId target;
    };
    QSet<DirectoryReader::FolderId> listed;
    std::deque<Link> links;
    quint32 colour = 0;
};

FolderBranches::FolderBranches(FolderTreeModel& nodes, ColourSource colour)
    : m_nodes(nodes), m_colour(std::move(colour))
{
}

void FolderBranches::SetFolderNodeAttributes(const FolderNode& node, const QString& path,
                                             FolderKind kind) const
{
    setAttributes(node, path, kind, m_colour ? m_colour() : 0);
}

void FolderBranches::setAttributes(const FolderNode& node, const QString& path, FolderKind kind,
                                   quint32 colour)
{
    node.setFolderPath(path);
    node.setData(toData(kind));
    node.setDisplayFlagA(false);
    node.setDisplayStyle(FolderStyle);
    node.setDisplayFlagB(false);
    node.setColour(colour);
}

void FolderBranches::AddSubFolderNodes(const QString& folderPath, const FolderNode& parentNode,
                                       FolderKind kind) const
{
    Scan scan;
    scan.colour = m_colour ? m_colour() : 0;
    scanFolder(QFile::encodeName(folderPath), folderPath, parentNode, kind, scan);
    while (!scan.links.empty()) {
        const Scan::Link link = std::move(scan.links.front());
        scan.links.pop_front();
        if (!scan.listed.contains(link.target))
            scanFolder(link.rawPath, link.path, link.node, kind, scan);
    }
}

void FolderBranches::scanFolder(const QByteArray& rawPath, const QString& path, const FolderNode& parent,
                                FolderKind kind, Scan& scan) const
{
    const DirectoryReader::SubfolderListing listing = DirectoryReader::subfolders(rawPath);
    // A folder reached a second time (through a link or a bind mount) is not listed again.
    if (listing.error != 0 || scan.listed.contains(listing.id))
        return;
    scan.listed.insert(listing.id);
    for (const DirectoryReader::Subfolder& folder : listing.folders) {
        const FolderNode node = m_nodes.addNode(parent, folder.name);
        const QString nodePath = childPath(path, folder.name);
        setAttributes(node, nodePath, kind, scan.colour);
        const QByteArray rawChild = childPath(rawPath, folder.rawName);
        if (folder.isLink)
            scan.links.push_back({rawChild, nodePath, node, folder.target});
        else
            scanFolder(rawChild, nodePath, node, kind, scan);
    }
}

FolderNode FolderBranches::FindNode(const QString& path) const
{
    const int count = m_nodes.count();
    for (int i = 0; i < count; ++i) {
        const FolderNode node = m_nodes.node(i);
        if (TreePathRules::SamePath(path, node.folderPath()))
            return node;
    }
    return {};
}

bool FolderBranches::DoesPathAlreadyExistInTree(const QString& path) const
{
    return FindNode(path).isValid();
}

bool FolderBranches::AddExplorerBranch(const QString& path) const
{
    if (DoesPathAlreadyExistInTree(path))
        return false;
    const qsizetype separator = path.lastIndexOf(QLatin1Char('/'));
    if (separator < 0)
        return false;
    const FolderNode parent = FindNode(path.left(separator));
    if (!parent.isValid())
        return false;
    const FolderNode node = m_nodes.addNode(parent, path.mid(separator + 1));
    SetFolderNodeAttributes(node, path, folderKindFromData(parent.data()));
    return true;
}

bool FolderBranches::RemoveExplorerBranch(const QString& path) const
{
    const FolderNode node = FindNode(path);
    return node.isValid() && m_nodes.removeNode(node);
}

bool FolderBranches::RenameExplorerBranch(const QString& oldPath, const QString& newPath) const
{
    if (!RemoveExplorerBranch(oldPath))
        return false;
    return AddExplorerBranch(newPath);
}

} // namespace nebra
