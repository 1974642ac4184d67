#pragma once

#include "CommandId.h"

namespace nebra {

// Switching commands on and off where the user reaches them (menus, tool bar,
// the tree's buttons). Subsystems that decide when a command may be used get
// this and nothing else of the window.
class CommandSwitches
{
public:
    virtual void setCommandEnabled(CommandId command, bool enabled) = 0;
    virtual void setCommandVisible(CommandId command, bool visible) = 0;

protected:
    ~CommandSwitches() = default;
};

} // namespace nebra
