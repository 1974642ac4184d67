#include "FolderBranches.h"

#include "DirectoryReader.h"
#include "FolderTreeModel.h"

#include <QFile>
#include <QSet>

#include <deque>

namespace nebra {

namespace {

constexpr int FolderStyle = 6;
// Below this depth a walk keeps each level's folder open and opens the next
// relative to it; deeper (pathological trees, or a bind mount that loops)
// it opens folders by path and holds no descriptors, so the process's limit
// of open files is never reached and a loop ends at the longest path.
constexpr int HeldLevels = 128;

} // namespace

// One fill from the disk: the folders listed so far, and the links to
// folders whose contents wait until every real folder has been listed, so a
// folder's contents appear under the folder itself rather than under a link.
struct FolderBranches::Scan
{
    struct Link
    {
        QByteArray rawPath;
        qint32 folder; // in the sketch
        DirectoryReader::FolderId target;
    };
    // Until the links are followed the folders are only collected; a set is
    // made of them only when there are links to compare with.
    std::vector<DirectoryReader::FolderId> walked;
    QSet<DirectoryReader::FolderId> listed;
    bool following = false; // the walk is done; the links are being followed
    std::deque<Link> links;
    std::vector<QByteArray> rawNames; // the names from the walk's start down to the folder being listed
    QByteArray rawStart;
    FolderSketch sketch;

    QByteArray rawPathOf(const QByteArray& name) const
    {
        QByteArray path = rawStart;
        for (const QByteArray& level : rawNames)
            path += (path.endsWith('/') ? QByteArray() : QByteArrayLiteral("/")) + level;
        return path + (path.endsWith('/') ? QByteArray() : QByteArrayLiteral("/")) + name;
    }
};

FolderBranches::FolderBranches(FolderTreeModel& nodes, ColourSource colour)
    : m_nodes(nodes), m_colour(std::move(colour))
{
}

void FolderBranches::SetFolderNodeAttributes(const FolderNode& node, const QString& path,
                                             DocumentType type) const
{
    node.setFolderPath(path);
    setAttributes(node, type, m_colour ? m_colour() : 0);
}

void FolderBranches::setAttributes(const FolderNode& node, DocumentType type, quint32 colour)
{
    node.setData(toData(type));
    node.setDisplayFlagA(false);
    node.setDisplayStyle(FolderStyle);
    node.setDisplayFlagB(false);
    node.setColour(colour);
}

void FolderBranches::AddSubFolderNodes(const QString& folderPath, const FolderNode& parentNode,
                                       DocumentType type) const
{
    addSketch(sketch(folderPath), parentNode, type);
}

FolderSketch FolderBranches::sketch(const QString& folderPath)
{
    Scan scan;
    startScan(QFile::encodeName(folderPath), FolderSketch::Start, scan, nullptr);
    if (scan.links.empty())
        return std::move(scan.sketch);
    scan.listed = QSet<DirectoryReader::FolderId>(scan.walked.begin(), scan.walked.end());
    scan.following = true;
    while (!scan.links.empty()) {
        const Scan::Link link = std::move(scan.links.front());
        scan.links.pop_front();
        if (!scan.listed.contains(link.target))
            startScan(link.rawPath, link.folder, scan, &link.target);
    }
    return std::move(scan.sketch);
}

void FolderBranches::addSketch(const FolderSketch& sketch, const FolderNode& parentNode, DocumentType type,
                               bool keepKnown) const
{
    const quint32 colour = m_colour ? m_colour() : 0;
    std::vector<FolderNode> nodes;
    nodes.reserve(sketch.folders.size());
    for (const FolderSketch::Folder& folder : sketch.folders) {
        const FolderNode& parent =
            folder.parent == FolderSketch::Start ? parentNode : nodes[size_t(folder.parent)];
        if (keepKnown) {
            const FolderNode known = FindNode(parent.folderPath() + QLatin1Char('/') + folder.name);
            if (known.isValid()) {
                nodes.push_back(known);
                continue;
            }
        }
        const FolderNode node = m_nodes.addNode(parent, folder.name);
        m_nodes.setDerivedFolderPath(node);
        setAttributes(node, type, colour);
        nodes.push_back(node);
    }
}

// Lists a folder reached by path: the start of a fill, or the folder a link leads to.
void FolderBranches::startScan(const QByteArray& rawPath, qint32 parent, Scan& scan,
                               const DirectoryReader::FolderId* known)
{
    int error = 0;
    DirectoryReader::OpenFolder folder = DirectoryReader::open(rawPath, error);
    if (!folder.isOpen())
        return;
    const DirectoryReader::FolderId id = known ? *known : DirectoryReader::idOf(folder);
    // A folder reached a second time (through a link) is not listed again.
    if (scan.following && scan.listed.contains(id))
        return;
    markListed(scan, id);
    scan.rawStart = rawPath;
    scan.rawNames.clear();
    scanFolder(std::move(folder), id.device, parent, scan);
}

void FolderBranches::markListed(Scan& scan, const DirectoryReader::FolderId& id)
{
    if (scan.following)
        scan.listed.insert(id);
    else
        scan.walked.push_back(id);
}

void FolderBranches::scanFolder(DirectoryReader::OpenFolder folder, quint64 device, qint32 parent, Scan& scan)
{
    const DirectoryReader::SubfolderListing listing = DirectoryReader::subfolders(folder, device);
    if (listing.error != 0)
        return;
    const bool held = scan.rawNames.size() < size_t(HeldLevels);
    if (!held)
        folder = {};
    for (const DirectoryReader::Subfolder& entry : listing.folders) {
        const auto node = qint32(scan.sketch.folders.size());
        scan.sketch.folders.push_back({parent, entry.name});
        if (entry.isLink) {
            scan.links.push_back({scan.rawPathOf(entry.rawName), node, entry.target});
            continue;
        }
        if (scan.following && scan.listed.contains(entry.target))
            continue;
        int error = 0;
        DirectoryReader::OpenFolder child = held
                                                ? DirectoryReader::openSubfolder(folder, entry.rawName, error)
                                                : DirectoryReader::open(scan.rawPathOf(entry.rawName), error);
        if (!child.isOpen())
            continue; // unreadable or vanished: no children
        markListed(scan, entry.target);
        scan.rawNames.push_back(entry.rawName);
        scanFolder(std::move(child), entry.target.device, node, scan);
        scan.rawNames.pop_back();
    }
}

FolderNode FolderBranches::FindNode(const QString& path) const
{
    return m_nodes.findFolderPath(path); // the same rule as TreePathRules::SamePath, through an index
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
    SetFolderNodeAttributes(node, path, documentTypeFromData(parent.data()));
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
