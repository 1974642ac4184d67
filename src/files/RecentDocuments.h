#pragma once

#include <QHash>
#include <QObject>
#include <QSet>
#include <QStringList>

namespace nebra {

class FolderReaders;
class SuiteSettings;

// The documents last opened, run or created through the Organiser, newest
// first, at most Capacity of them, kept per user in the suite's settings
// (RecentDocuments). A document used again moves to the front.
//
// Whether the documents still exist is asked on reader threads (they may
// live on a file server that does not answer): shown() is the stored list
// at once, check() asks, and each document found missing is dropped from
// the stored list as its answer arrives, followed by changed(). A document
// whose check has not answered stays listed. A list that cannot be stored is
// kept as it was on disk: losing it is not worth a message.
class RecentDocuments : public QObject
{
    Q_OBJECT
public:
    static constexpr int Capacity = 10;

    explicit RecentDocuments(SuiteSettings& settings, QObject* parent = nullptr);
    ~RecentDocuments() override;

    void add(const QString& path);
    // The documents to show: the stored ones not yet found missing.
    QStringList shown() const;
    // Asks whether each shown document still exists; a document whose
    // earlier check is still on its way is asked again once it answers
    // (never twice at once, so a server that does not answer gets one read).
    void check();

Q_SIGNALS:
    // A document found missing has left the list.
    void changed();

private:
    void ask(const QString& path);
    void answered(const QString& path, bool exists);

    SuiteSettings& m_settings;
    FolderReaders* m_readers;
    QHash<QString, quint64> m_checking; // path -> its read
    QSet<QString> m_askAgain;           // checked again while its read was on its way
};

} // namespace nebra
