#pragma once

#include "FolderNode.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QList>

#include <vector>

namespace nebra {

// The folder tree's node collection and the item model its view shows.
//
// Nodes live in one compact array of slots (about a hundred bytes each plus
// their caption) and are reached through FolderNode handles; the Organiser
// uses only the node operations below, never model indexes. The flat order
// of node(i) is the display order: each node, then its children, depth
// first. Building many nodes at once goes between beginUpdate() and
// endUpdate(), which tell the view once, at the end, instead of per node.
//
// A node whose folder path is its parent's path followed by its caption
// stores no path of its own; the path is put together when asked for. Nodes
// with a folder path are indexed by it, ignoring case, so findFolderPath()
// does not scan the tree.
class FolderTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    // Roles the view's delegate reads to draw a node.
    enum Role
    {
        FolderPathRole = Qt::UserRole + 1,
        BoldRole,
        ColourRole,
        StyleRole,
        ExpandedRole,
    };

    explicit FolderTreeModel(QObject* parent = nullptr);
    ~FolderTreeModel() override;

    // The node collection.
    int count() const { return m_liveCount; }
    FolderNode node(int index) const;
    FolderNode addNode(const QString& text);
    FolderNode addNode(const FolderNode& parent, const QString& text);
    // Inserts at a position among the parent's children (an invalid parent: the top level).
    FolderNode insertNode(const FolderNode& parent, int position, const QString& text);
    // Removes the node with its subtree; false for a node that is not (or no longer) in the tree.
    bool removeNode(const FolderNode& node);
    void removeChildren(const FolderNode& node);
    void clear();
    int topLevelCount() const { return int(m_top.size()); }
    FolderNode topLevelNode(int index) const;

    // The first node, in display order, whose folder path is path ignoring
    // case (the lengths equal and each character the same after case folding).
    FolderNode findFolderPath(const QString& path) const;
    // Sets the node's folder path to its parent's path, a separator (unless
    // the parent's path ends with one) and its caption; for a node without a
    // parent it sets the caption. Cheaper than setFolderPath for a new node.
    void setDerivedFolderPath(const FolderNode& node);

    void beginUpdate();
    void endUpdate();
    bool isUpdating() const { return m_updateDepth > 0; }

    QModelIndex indexOf(const FolderNode& node) const;
    FolderNode nodeAt(const QModelIndex& index) const;
    // The view expanded or collapsed a node: display flag A follows without a signal.
    void setExpandedByView(const QModelIndex& index, bool expanded);

    // QAbstractItemModel
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

Q_SIGNALS:
    // The program set display flag A of a node (outside an update).
    void expansionRequested(const QModelIndex& index, bool expanded);
    // endUpdate() has told the view that everything changed.
    void updateFinished();

private:
    friend class FolderNode;

    enum Flag : quint8
    {
        Live = 1,
        FlagA = 2,
        FlagB = 4,
        DerivedPath = 8, // the path is the parent's and the caption
        Indexed = 16,    // the path is not empty and in m_byPath
    };

    struct Slot
    {
        QString text;
        QString path; // empty when DerivedPath is set
        QList<qint32> children;
        qint32 parent = -1;
        qint32 row = 0;
        qint32 data = 0;
        quint32 colour = 0;
        quint32 generation = 0;
        quint32 pathHash = 0;         // of the case-folded path, while Indexed
        qint32 nextSamePathHash = -1; // the next slot in m_byPath's chain
        qint16 level = 0;
        qint16 style = 0;
        quint8 flags = 0;
    };

    const Slot* slotOf(const FolderNode& node) const;
    Slot* slotOf(const FolderNode& node);
    FolderNode handle(qint32 slot) const;
    QModelIndex indexOfSlot(qint32 slot) const;
    QList<qint32>& siblingsOf(qint32 parent);
    void renumber(QList<qint32>& siblings, qint32 from);
    qint32 allocate();
    void freeSubtree(qint32 slot);
    void changed(const FolderNode& node, int role);
    void setFlag(const FolderNode& node, Flag flag, bool on);
    const QList<qint32>& flat() const;
    QString pathOf(qint32 slot) const;
    void setPath(qint32 slot, const QString& path);
    void materialisePath(qint32 slot);
    void index(qint32 slot, quint32 hash);
    void unindex(qint32 slot);
    bool precedes(qint32 a, qint32 b) const;
    QString pageOf(qint32 slot) const { return m_pages.value(slot); }
    void setPage(qint32 slot, const QString& page);
    void setText(qint32 slot, const QString& text);

    std::vector<Slot> m_slots;
    std::vector<qint32> m_free;
    QList<qint32> m_top;
    mutable QList<qint32> m_flat;
    mutable bool m_flatDirty = true;
    QHash<quint32, qint32> m_byPath; // hash of the case-folded path -> first slot of its chain
    QHash<qint32, QString> m_pages;  // only a few nodes have a page
    int m_liveCount = 0;
    int m_updateDepth = 0;
};

} // namespace nebra
