#include "LayoutEditCommand.h"

namespace nebra {

LayoutEditCommand::LayoutEditCommand(const QString& text, PlateLayout before, PlateLayout after, Apply apply)
    : m_before(std::move(before)), m_after(std::move(after)), m_apply(std::move(apply))
{
    setText(text);
}

void LayoutEditCommand::undo()
{
    m_apply(m_before);
}

void LayoutEditCommand::redo()
{
    m_apply(m_after);
}

} // namespace nebra
