#pragma once

#include "FuseShare.h"

#include <QTemporaryDir>
#include <QTest>

namespace nebra::test {

// A file server's share for a test: the folder "backing" of a temporary
// folder, mounted through bindfs at "share" beside it. made() mounts it; when
// it cannot, it skips the test (no FUSE on this machine) or fails it (the
// mount did not come up) and returns false, and the test returns.
struct MountedShare
{
    QTemporaryDir dir;
    QString backing = dir.filePath(QStringLiteral("backing"));
    QString mount = dir.filePath(QStringLiteral("share"));
    FuseShare fuse; // last, so that it is unmounted before the folders go

    bool made()
    {
        if (const QString reason = FuseShare::unavailableReason(); !reason.isEmpty()) {
            QTest::qSkip(qPrintable(reason), __FILE__, __LINE__);
            return false;
        }
        if (!fuse.mount(backing, mount)) {
            QTest::qFail("bindfs did not mount the share", __FILE__, __LINE__);
            return false;
        }
        return true;
    }
};

} // namespace nebra::test
