#pragma once

#include "FileListControl.h"

#include <QTest>

namespace nebra::test {

// Runs the event loop until the file list shows the listing of its folder
// (and whatever acts on a new listing has acted), within a bound.
inline bool waitForListing(const FileListControl& list, int boundMs = 5000)
{
    return QTest::qWaitFor([&list] { return !list.isListing(); }, boundMs);
}

} // namespace nebra::test
