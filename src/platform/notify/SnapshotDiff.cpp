#include "SnapshotDiff.h"

#include "FolderEntries.h"
#include "FolderSnapshot.h"

#include <QHash>

#include <cerrno>

namespace nebra {

namespace {

bool vanished(int error)
{
    return error == ENOENT || error == ENOTDIR;
}

// Compares the subtrees below two folders that are the same folder, before
// and after, and reports the differences in the order the header gives.
class Comparison
{
public:
    Comparison(const FolderSnapshot& before, const FolderSnapshot& after, const QString& rootText,
               std::vector<FolderChange>& out)
        : m_before(before), m_after(after), m_rootText(rootText), m_out(out)
    {
    }

    void compare(int before, int after);
    void made(int after);

private:
    struct Removed
    {
        int before = 0;
        int afterParent = 0; // where it was, as the tree knows it now
        bool renamed = false;
    };
    struct Made
    {
        int after = 0;
        bool replaces = false; // something of its name went: never a rename's target
        int renamedFrom = -1;  // index into the removed folders
    };

    void collect(int before, int after, std::vector<Removed>& removed, std::vector<Made>& made) const;
    static void pairRenames(const FolderSnapshot& before, const FolderSnapshot& after,
                            std::vector<Removed>& removed, std::vector<Made>& made);
    QString removedPath(const Removed& removed) const
    {
        return m_after.textPath(removed.afterParent, m_rootText) + QLatin1Char('/') +
               QString::fromUtf8(m_before.folder(removed.before).name);
    }

    const FolderSnapshot& m_before;
    const FolderSnapshot& m_after;
    const QString& m_rootText;
    std::vector<FolderChange>& m_out;
};

void Comparison::compare(int before, int after)
{
    std::vector<Removed> removed;
    std::vector<Made> made;
    collect(before, after, removed, made);
    pairRenames(m_before, m_after, removed, made);
    for (const Removed& folder : removed) {
        if (!folder.renamed)
            m_out.push_back({ShellEvent::SHCNE_RMDIR, removedPath(folder), {}});
    }
    for (const Made& folder : made) {
        if (folder.renamedFrom < 0)
            continue;
        const Removed& from = removed[size_t(folder.renamedFrom)];
        m_out.push_back(
            {ShellEvent::SHCNE_RENAMEFOLDER, removedPath(from), m_after.textPath(folder.after, m_rootText)});
        compare(from.before, folder.after);
    }
    for (const Made& folder : made) {
        if (folder.renamedFrom < 0)
            this->made(folder.after);
    }
}

// Merges the two sorted lists of subfolders, going down into the folders
// that are still the same.
void Comparison::collect(int before, int after, std::vector<Removed>& removed, std::vector<Made>& made) const
{
    const FolderSnapshot::Folder& b = m_before.folder(before);
    const FolderSnapshot::Folder& a = m_after.folder(after);
    int i = 0;
    int j = 0;
    while (i < b.childCount || j < a.childCount) {
        const int bi = b.firstChild + i;
        const int aj = a.firstChild + j;
        const int order = i == b.childCount   ? 1
                          : j == a.childCount ? -1
                                              : m_before.folder(bi).name.compare(m_after.folder(aj).name);
        if (order < 0) {
            removed.push_back({bi, after});
            ++i;
        } else if (order > 0) {
            made.push_back({aj});
            ++j;
        } else {
            const FolderSnapshot::Folder& old = m_before.folder(bi);
            const FolderSnapshot::Folder& now = m_after.folder(aj);
            if (old.inode != now.inode || old.link != now.link) {
                removed.push_back({bi, after});
                made.push_back({aj, true});
            } else if (!now.link) {
                collect(bi, aj, removed, made);
            }
            ++i;
            ++j;
        }
    }
}

void Comparison::pairRenames(const FolderSnapshot& before, const FolderSnapshot& after,
                             std::vector<Removed>& removed, std::vector<Made>& made)
{
    if (removed.empty() || made.empty())
        return;
    QHash<quint64, int> byInode;
    for (size_t i = 0; i < removed.size(); ++i)
        byInode.insert(before.folder(removed[i].before).inode, int(i));
    for (Made& folder : made) {
        const FolderSnapshot::Folder& now = after.folder(folder.after);
        const auto it = byInode.constFind(now.inode);
        if (folder.replaces || it == byInode.cend())
            continue;
        Removed& from = removed[size_t(*it)];
        if (from.renamed || before.folder(from.before).link != now.link)
            continue;
        from.renamed = true;
        folder.renamedFrom = *it;
    }
}

void Comparison::made(int after)
{
    m_out.push_back({ShellEvent::SHCNE_MKDIR, m_after.textPath(after, m_rootText), {}});
    const FolderSnapshot::Folder& folder = m_after.folder(after);
    for (int i = 0; i < folder.childCount; ++i)
        made(folder.firstChild + i);
}

} // namespace

std::vector<FolderChange> SnapshotDiff::folders(const FolderSnapshot& before, const FolderSnapshot& after,
                                                const QString& rootText)
{
    std::vector<FolderChange> changes;
    Comparison comparison(before, after, rootText, changes);
    if (!before.isEmpty() && !after.isEmpty())
        comparison.compare(0, 0);
    else if (!before.isEmpty() && vanished(after.error()))
        changes.push_back({ShellEvent::SHCNE_RMDIR, rootText, {}});
    else if (before.isEmpty() && !after.isEmpty())
        comparison.made(0); // first read after a failure: what the tree has already is refused there
    return changes;
}

SnapshotDiff::EntryChanges SnapshotDiff::entries(const FolderEntries& before, const FolderEntries& after,
                                                 const QString& folderText)
{
    EntryChanges result;
    if (after.error() != 0) {
        result.changed = before.error() == 0 && vanished(after.error());
        return result;
    }
    const auto pathOf = [&folderText](const FolderEntries::Entry& entry) {
        return folderText + QLatin1Char('/') + QString::fromUtf8(entry.name);
    };
    const std::vector<FolderEntries::Entry>& b = before.entries();
    const std::vector<FolderEntries::Entry>& a = after.entries();
    size_t i = 0;
    size_t j = 0;
    while (i < b.size() || j < a.size()) {
        const int order = i == b.size() ? 1 : j == a.size() ? -1 : b[i].name.compare(a[j].name);
        const FolderEntries::Entry* old = order <= 0 ? &b[i++] : nullptr;
        const FolderEntries::Entry* now = order >= 0 ? &a[j++] : nullptr;
        if (old && now && *old == *now)
            continue;
        result.changed = true;
        if (old && !old->folder && (!now || now->folder))
            result.changes.push_back({ShellEvent::SHCNE_DELETE, pathOf(*old), {}});
        if (now && !now->folder)
            result.changes.push_back({ShellEvent::SHCNE_UPDATEITEM, pathOf(*now), {}});
    }
    if (before.error() != 0)
        result.changed = true; // the folder can be read again
    return result;
}

} // namespace nebra
