#include "RecentDocuments.h"

#include "SuiteSettings.h"

#include <QDir>
#include <QFileInfo>

namespace nebra {

RecentDocuments::RecentDocuments(SuiteSettings& settings, Exists exists)
    : m_settings(settings), m_exists(std::move(exists))
{
    if (!m_exists)
        m_exists = [](const QString& path) { return QFileInfo(path).isFile(); };
}

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

QStringList RecentDocuments::shown()
{
    const QStringList stored = m_settings.RecentDocuments();
    QStringList present;
    for (const QString& path : stored)
        if (!path.isEmpty() && !present.contains(path) && m_exists(path))
            present.append(path);
    while (present.size() > Capacity)
        present.removeLast();
    if (present != stored)
        m_settings.SetRecentDocuments(present);
    return present;
}

} // namespace nebra
