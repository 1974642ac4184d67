#pragma once

#include <QStringList>

#include <functional>

namespace nebra {

class SuiteSettings;

// The documents last opened, run or created through the Organiser, newest
// first, at most Capacity of them, kept per user in the suite's settings
// (RecentDocuments). A document used again moves to the front. Documents
// that no longer exist are dropped when the list is shown, and the shorter
// list is stored. A list that cannot be stored is kept as it was on disk:
// losing it is not worth a message.
class RecentDocuments
{
public:
    static constexpr int Capacity = 10;

    using Exists = std::function<bool(const QString& path)>;

    // exists answers whether a document is still there (a file on disk, unless a test says otherwise).
    explicit RecentDocuments(SuiteSettings& settings, Exists exists = {});

    void add(const QString& path);
    // The documents to show: the stored ones that still exist.
    QStringList shown();

private:
    SuiteSettings& m_settings;
    Exists m_exists;
};

} // namespace nebra
