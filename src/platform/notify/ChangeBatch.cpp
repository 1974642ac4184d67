#include "ChangeBatch.h"

#include <QHash>
#include <QSet>

namespace nebra {

std::vector<FolderChange> ChangeBatch::coalesced() const
{
    std::vector<bool> dropped(changes.size(), false);
    QHash<QString, size_t> made; // folders made in this pass, not yet removed or moved
    QSet<QString> updated;       // files already reported changed in this pass
    for (size_t i = 0; i < changes.size(); ++i) {
        const FolderChange& change = changes[i];
        switch (change.event) {
        case ShellEvent::SHCNE_MKDIR:
            made.insert(change.path1, i);
            break;
        case ShellEvent::SHCNE_RMDIR:
            if (const auto it = made.constFind(change.path1); it != made.cend()) {
                dropped[*it] = dropped[i] = true;
                made.erase(it);
            }
            break;
        case ShellEvent::SHCNE_RENAMEFOLDER:
            made.remove(change.path1);
            made.remove(change.path2);
            break;
        case ShellEvent::SHCNE_UPDATEITEM:
            if (updated.contains(change.path1))
                dropped[i] = true;
            updated.insert(change.path1);
            break;
        default:
            break;
        }
    }
    std::vector<FolderChange> kept;
    kept.reserve(changes.size());
    for (size_t i = 0; i < changes.size(); ++i) {
        if (!dropped[i])
            kept.push_back(changes[i]);
    }
    return kept;
}

} // namespace nebra
