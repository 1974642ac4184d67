#pragma once

#include "IdleTimer.h"

namespace nebra {

// How a security manager measures its inactivity time-out.
struct SecurityManagerOptions
{
    IdleTimer::Clock clock;    // empty: the boot-time clock
    int pollIntervalMs = 1000; // see IdleTimer
};

} // namespace nebra
