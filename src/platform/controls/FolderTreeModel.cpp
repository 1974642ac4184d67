#include "FolderTreeModel.h"

#include <algorithm>

namespace nebra {

FolderTreeModel::FolderTreeModel(QObject* parent) : QAbstractItemModel(parent) {}

FolderTreeModel::~FolderTreeModel() = default;

const FolderTreeModel::Slot* FolderTreeModel::slotOf(const FolderNode& node) const
{
    if (node.m_model != this || node.m_slot < 0 || size_t(node.m_slot) >= m_slots.size())
        return nullptr;
    const Slot& slot = m_slots[size_t(node.m_slot)];
    return (slot.flags & Live) && slot.generation == node.m_generation ? &slot : nullptr;
}

FolderTreeModel::Slot* FolderTreeModel::slotOf(const FolderNode& node)
{
    return const_cast<Slot*>(std::as_const(*this).slotOf(node));
}

FolderNode FolderTreeModel::handle(qint32 slot) const
{
    if (slot < 0)
        return {};
    return FolderNode(this, slot, m_slots[size_t(slot)].generation);
}

QModelIndex FolderTreeModel::indexOfSlot(qint32 slot) const
{
    if (slot < 0)
        return {};
    return createIndex(m_slots[size_t(slot)].row, 0, quintptr(slot));
}

QList<qint32>& FolderTreeModel::siblingsOf(qint32 parent)
{
    return parent < 0 ? m_top : m_slots[size_t(parent)].children;
}

void FolderTreeModel::renumber(QList<qint32>& siblings, qint32 from)
{
    for (qint32 row = from; row < siblings.size(); ++row)
        m_slots[size_t(siblings[row])].row = row;
}

qint32 FolderTreeModel::allocate()
{
    if (!m_free.empty()) {
        const qint32 slot = m_free.back();
        m_free.pop_back();
        return slot;
    }
    m_slots.emplace_back();
    return qint32(m_slots.size() - 1);
}

// Returns the subtree's slots to the free list; each slot's generation moves
// on, so handles to the removed nodes turn invalid.
void FolderTreeModel::freeSubtree(qint32 top)
{
    QList<qint32> pending{top};
    while (!pending.isEmpty()) {
        const qint32 slot = pending.takeLast();
        Slot& s = m_slots[size_t(slot)];
        pending.append(s.children);
        const quint32 generation = s.generation + 1;
        s = Slot();
        s.generation = generation;
        m_free.push_back(slot);
        --m_liveCount;
    }
}

const QList<qint32>& FolderTreeModel::flat() const
{
    if (!m_flatDirty)
        return m_flat;
    m_flat.clear();
    m_flat.reserve(m_liveCount);
    QList<qint32> pending;
    for (qsizetype i = m_top.size() - 1; i >= 0; --i)
        pending.append(m_top[i]);
    while (!pending.isEmpty()) {
        const qint32 slot = pending.takeLast();
        m_flat.append(slot);
        const QList<qint32>& children = m_slots[size_t(slot)].children;
        for (qsizetype i = children.size() - 1; i >= 0; --i)
            pending.append(children[i]);
    }
    m_flatDirty = false;
    return m_flat;
}

FolderNode FolderTreeModel::node(int index) const
{
    const QList<qint32>& order = flat();
    if (index < 0 || index >= order.size())
        return {};
    return handle(order[index]);
}

FolderNode FolderTreeModel::topLevelNode(int index) const
{
    return index >= 0 && index < m_top.size() ? handle(m_top[index]) : FolderNode();
}

FolderNode FolderTreeModel::addNode(const QString& text)
{
    return insertNode({}, int(m_top.size()), text);
}

FolderNode FolderTreeModel::addNode(const FolderNode& parent, const QString& text)
{
    const Slot* p = slotOf(parent);
    if (!p)
        return {};
    return insertNode(parent, int(p->children.size()), text);
}

FolderNode FolderTreeModel::insertNode(const FolderNode& parent, int position, const QString& text)
{
    const Slot* p = slotOf(parent);
    if (parent.isValid() && !p)
        return {};
    const qint32 parentSlot = p ? parent.m_slot : -1;
    const int size = int(siblingsOf(parentSlot).size());
    position = std::clamp(position, 0, size);
    if (!isUpdating())
        beginInsertRows(indexOfSlot(parentSlot), position, position);
    const qint32 slot = allocate(); // may move the slots: no references taken before
    Slot& s = m_slots[size_t(slot)];
    s.text = text;
    s.parent = parentSlot;
    s.row = position;
    s.level = parentSlot < 0 ? 0 : m_slots[size_t(parentSlot)].level + 1;
    s.flags = Live;
    QList<qint32>& siblings = siblingsOf(parentSlot);
    siblings.insert(position, slot);
    if (position + 1 < siblings.size())
        renumber(siblings, position + 1);
    ++m_liveCount;
    m_flatDirty = true;
    if (!isUpdating())
        endInsertRows();
    return handle(slot);
}

bool FolderTreeModel::removeNode(const FolderNode& node)
{
    const Slot* s = slotOf(node);
    if (!s)
        return false;
    const qint32 parentSlot = s->parent;
    const int row = s->row;
    if (!isUpdating())
        beginRemoveRows(indexOfSlot(parentSlot), row, row);
    QList<qint32>& siblings = siblingsOf(parentSlot);
    siblings.removeAt(row);
    renumber(siblings, row);
    freeSubtree(node.m_slot);
    m_flatDirty = true;
    if (!isUpdating())
        endRemoveRows();
    return true;
}

void FolderTreeModel::removeChildren(const FolderNode& node)
{
    Slot* s = slotOf(node);
    if (!s || s->children.isEmpty())
        return;
    if (!isUpdating())
        beginRemoveRows(indexOf(node), 0, int(s->children.size()) - 1);
    const QList<qint32> children = std::exchange(s->children, {});
    for (qint32 child : children)
        freeSubtree(child);
    m_flatDirty = true;
    if (!isUpdating())
        endRemoveRows();
}

void FolderTreeModel::clear()
{
    beginUpdate();
    for (qint32 top : std::exchange(m_top, {}))
        freeSubtree(top);
    m_flatDirty = true;
    endUpdate();
}

void FolderTreeModel::beginUpdate()
{
    if (m_updateDepth++ == 0)
        beginResetModel();
}

void FolderTreeModel::endUpdate()
{
    if (m_updateDepth == 0 || --m_updateDepth > 0)
        return;
    endResetModel();
    Q_EMIT updateFinished();
}

QModelIndex FolderTreeModel::indexOf(const FolderNode& node) const
{
    return slotOf(node) ? indexOfSlot(node.m_slot) : QModelIndex();
}

FolderNode FolderTreeModel::nodeAt(const QModelIndex& index) const
{
    if (!index.isValid() || index.model() != this)
        return {};
    return handle(qint32(index.internalId()));
}

void FolderTreeModel::setExpandedByView(const QModelIndex& index, bool expanded)
{
    if (Slot* s = slotOf(nodeAt(index)))
        s->flags = expanded ? (s->flags | FlagA) : (s->flags & ~FlagA);
}

void FolderTreeModel::changed(const FolderNode& node, int role)
{
    if (isUpdating())
        return;
    const QModelIndex index = indexOf(node);
    Q_EMIT dataChanged(index, index, {role});
}

void FolderTreeModel::setFlag(const FolderNode& node, Flag flag, bool on)
{
    Slot* s = slotOf(node);
    if (!s || bool(s->flags & flag) == on)
        return;
    s->flags = on ? (s->flags | flag) : (s->flags & ~flag);
    if (flag == FlagA) {
        if (!isUpdating())
            Q_EMIT expansionRequested(indexOf(node), on);
        return;
    }
    changed(node, BoldRole);
}

QModelIndex FolderTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (column != 0 || row < 0 || (parent.isValid() && parent.model() != this))
        return {};
    const QList<qint32>& siblings = parent.isValid() ? m_slots[size_t(parent.internalId())].children : m_top;
    if (row >= siblings.size())
        return {};
    return createIndex(row, 0, quintptr(siblings[row]));
}

QModelIndex FolderTreeModel::parent(const QModelIndex& child) const
{
    if (!child.isValid())
        return {};
    return indexOfSlot(m_slots[size_t(child.internalId())].parent);
}

int FolderTreeModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return int(m_top.size());
    if (parent.column() != 0)
        return 0;
    return int(m_slots[size_t(parent.internalId())].children.size());
}

int FolderTreeModel::columnCount(const QModelIndex&) const
{
    return 1;
}

bool FolderTreeModel::hasChildren(const QModelIndex& parent) const
{
    return rowCount(parent) > 0;
}

QVariant FolderTreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const Slot& s = m_slots[size_t(index.internalId())];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
    case Qt::AccessibleTextRole:
        return s.text;
    case Qt::ToolTipRole:
    case FolderPathRole:
        return s.path;
    case BoldRole:
        return bool(s.flags & FlagB);
    case ColourRole:
        return s.colour;
    case StyleRole:
        return int(s.style);
    case ExpandedRole:
        return bool(s.flags & FlagA);
    default:
        return {};
    }
}

Qt::ItemFlags FolderTreeModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

} // namespace nebra
