#include "FileListItem.h"

#include "FileListControl.h"

namespace nebra {

bool FileListItem::isListed() const
{
    return m_control && m_control->isItemListed(*this);
}

bool FileListItem::isSelected() const
{
    return m_control && m_control->isItemSelected(*this);
}

void FileListItem::setSelected(bool selected) const
{
    if (m_control)
        m_control->setItemSelected(*this, selected);
}

void FileListItem::ensureVisible() const
{
    if (m_control)
        m_control->ensureItemVisible(*this);
}

} // namespace nebra
