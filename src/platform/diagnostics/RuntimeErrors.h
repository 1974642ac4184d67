#pragma once

#include <limits>
#include <stdexcept>

namespace nebra {

// A 16-bit counter or window value went past its range. Such values are
// kept exactly; going past the range is an error, never a wrap or a clamp.
class OverflowError : public std::overflow_error
{
public:
    OverflowError() : std::overflow_error("Overflow") {}
};

// Logging was switched on after start-up, so no log file is open.
class BadFileError : public std::runtime_error
{
public:
    BadFileError() : std::runtime_error("Bad file name or number") {}
};

inline short checkedInt16(long long value)
{
    if (value > std::numeric_limits<short>::max() || value < std::numeric_limits<short>::min())
        throw OverflowError();
    return static_cast<short>(value);
}

} // namespace nebra
