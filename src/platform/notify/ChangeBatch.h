#pragma once

#include "FolderChange.h"

#include <vector>

namespace nebra {

// The changes found in one pass over the kernel's queue, in the kernel's order.
struct ChangeBatch
{
    std::vector<FolderChange> changes;
    bool overflowed = false; // the kernel dropped events during the pass

    void add(quint32 event, const QString& path1, const QString& path2 = {})
    {
        changes.push_back({event, path1, path2});
    }

    // The changes to deliver, in order: a file changed several times counts
    // once, and a folder made and removed again (with nothing else done to
    // it between) is left out with its removal. Nothing is moved ahead of
    // anything else.
    std::vector<FolderChange> coalesced() const;
};

} // namespace nebra
