#include "RecentDocuments.h"

#include "FolderReaders.h"
#include "SuiteSettings.h"

#include <QDir>
#include <QFileInfo>

namespace nebra {

RecentDocuments::RecentDocuments(SuiteSettings& settings, QObject* parent)
    : QObject(parent), m_settings(settings), m_readers(new FolderReaders(this))
{
}

RecentDocuments::~RecentDocuments() = default;

void RecentDocuments::add(const QString& path)
{
    if (path.isEmpty())
        return;
    // One spelling per document, so that "a//b.apr" and "a/b.apr" are one entry.
    const QString clean = QDir::cleanPath(path);
    QStringList paths = m_settings.RecentDocuments();
    paths.removeAll(clean);
    paths.prepend(clean);
    while (paths.size() > Capacity)
        paths.removeLast();
    m_settings.SetRecentDocuments(paths);
}

QStringList RecentDocuments::shown() const
{
    QStringList shown;
    for (const QString& path : m_settings.RecentDocuments())
        if (!path.isEmpty() && !shown.contains(path))
            shown.append(path);
    while (shown.size() > Capacity)
        shown.removeLast();
    return shown;
}

// One read per document: each goes to the lane of its own mount, so a
// server that does not answer holds up only the documents it keeps.
void RecentDocuments::check()
{
    for (const QString& path : shown()) {
        if (m_checking.contains(path))
            m_askAgain.insert(path); // its answer may predate what the user did since
        else
            ask(path);
    }
}

void RecentDocuments::ask(const QString& path)
{
    m_checking.insert(path,
                      m_readers->read(
                          path, FolderReaders::Lane::User, this, [path] { return QFileInfo(path).isFile(); },
                          [this, path](bool exists) { answered(path, exists); }));
}

void RecentDocuments::answered(const QString& path, bool exists)
{
    m_checking.remove(path);
    if (exists) {
        if (m_askAgain.remove(path))
            ask(path);
        return;
    }
    m_askAgain.remove(path);
    // The stored list as it is now: a document used since the check began
    // has moved, and only the missing one goes.
    const QStringList stored = m_settings.RecentDocuments();
    QStringList kept = stored;
    kept.removeAll(path);
    if (kept == stored)
        return;
    m_settings.SetRecentDocuments(kept);
    Q_EMIT changed();
}

} // namespace nebra
