#pragma once

#include "FolderNode.h"

#include <QAbstractItemModel>
#include <QList>

#include <vector>

namespace nebra {

// The folder tree's node collection and the item model its view shows.
//
// Nodes live in one compact array of slots (a few dozen bytes each plus
// their strings) and are reached through FolderNode handles; the Organiser
// uses only the node operations below, never model indexes. The flat order
// of node(i) is the display order: each node, then its children, depth
// first. Building many nodes at once goes between beginUpdate() and
// endUpdate(), which tell the view once, at the end, instead of per node.
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
        FlagB = 4
    };

    struct Slot
    {
        QString text;
        QString path;
        QString page;
        QList<qint32> children;
        qint32 parent = -1;
        qint32 row = 0;
        qint32 data = 0;
        quint32 colour = 0;
        quint32 generation = 0;
        qint32 level = 0;
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

    std::vector<Slot> m_slots;
    std::vector<qint32> m_free;
    QList<qint32> m_top;
    mutable QList<qint32> m_flat;
    mutable bool m_flatDirty = true;
    int m_liveCount = 0;
    int m_updateDepth = 0;
};

} // namespace nebra
