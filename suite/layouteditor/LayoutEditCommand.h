#pragma once

#include "PlateLayout.h"

#include <QUndoCommand>

#include <functional>

namespace nebra {

// One change to a layout, undone by going back to the layout before it.
// Whole layouts are kept: their wells are shared until changed, and a copy of
// the largest plate is some tens of kilobytes.
class LayoutEditCommand : public QUndoCommand
{
public:
    using Apply = std::function<void(const PlateLayout&)>;

    LayoutEditCommand(const QString& text, PlateLayout before, PlateLayout after, Apply apply);

    void undo() override;
    void redo() override;

private:
    PlateLayout m_before;
    PlateLayout m_after;
    Apply m_apply;
};

} // namespace nebra
