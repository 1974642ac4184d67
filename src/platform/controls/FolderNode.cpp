#include "FolderNode.h"

#include "FolderTreeModel.h"

namespace nebra {

bool FolderNode::isValid() const
{
    return m_model && m_model->slotOf(*this);
}

QString FolderNode::text() const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    return s ? s->text : QString();
}

void FolderNode::setText(const QString& text) const
{
    if (auto* s = m_model ? m_model->slotOf(*this) : nullptr) {
        s->text = text;
        m_model->changed(*this, Qt::DisplayRole);
    }
}

QString FolderNode::folderPath() const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    return s ? s->path : QString();
}

void FolderNode::setFolderPath(const QString& path) const
{
    if (auto* s = m_model ? m_model->slotOf(*this) : nullptr) {
        s->path = path;
        m_model->changed(*this, FolderTreeModel::FolderPathRole);
    }
}

int FolderNode::data() const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    return s ? s->data : 0;
}

void FolderNode::setData(int value) const
{
    if (auto* s = m_model ? m_model->slotOf(*this) : nullptr)
        s->data = value; // not shown, so the view need not hear of it
}

int FolderNode::level() const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    return s ? s->level : 0;
}

QString FolderNode::page() const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    return s ? s->page : QString();
}

void FolderNode::setPage(const QString& page) const
{
    if (auto* s = m_model ? m_model->slotOf(*this) : nullptr)
        s->page = page;
}

bool FolderNode::displayFlagA() const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    return s && (s->flags & FolderTreeModel::FlagA);
}

void FolderNode::setDisplayFlagA(bool on) const
{
    if (m_model)
        m_model->setFlag(*this, FolderTreeModel::FlagA, on);
}

bool FolderNode::displayFlagB() const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    return s && (s->flags & FolderTreeModel::FlagB);
}

void FolderNode::setDisplayFlagB(bool on) const
{
    if (m_model)
        m_model->setFlag(*this, FolderTreeModel::FlagB, on);
}

int FolderNode::displayStyle() const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    return s ? s->style : 0;
}

void FolderNode::setDisplayStyle(int style) const
{
    if (auto* s = m_model ? m_model->slotOf(*this) : nullptr) {
        s->style = qint16(style);
        m_model->changed(*this, FolderTreeModel::StyleRole);
    }
}

quint32 FolderNode::colour() const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    return s ? s->colour : 0;
}

void FolderNode::setColour(quint32 colour) const
{
    if (auto* s = m_model ? m_model->slotOf(*this) : nullptr) {
        s->colour = colour;
        m_model->changed(*this, FolderTreeModel::ColourRole);
    }
}

FolderNode FolderNode::parent() const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    return s ? m_model->handle(s->parent) : FolderNode();
}

int FolderNode::childCount() const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    return s ? int(s->children.size()) : 0;
}

FolderNode FolderNode::firstChild() const
{
    return child(0);
}

FolderNode FolderNode::child(int index) const
{
    const auto* s = m_model ? m_model->slotOf(*this) : nullptr;
    if (!s || index < 0 || index >= s->children.size())
        return {};
    return m_model->handle(s->children[index]);
}

} // namespace nebra
