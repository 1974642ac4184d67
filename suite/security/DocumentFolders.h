#pragma once

#include "DocumentRecord.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace nebra {

class SuitePaths;

// What a document is on disk: its size, modification time and inode, read
// without opening it. Two equal stats are taken for unchanged content.
struct DocumentStat
{
    qint64 size = -1;
    qint64 modifiedMs = 0;
    quint64 inode = 0;

    bool operator==(const DocumentStat&) const = default;
};

// The documents of the data folders whose history is recorded: those of the
// kinds DocumentKinds marks as recorded, by their patterns, at any depth of
// their folders. Hidden files (an editor's or a save's temporary copies) are
// no documents.
class DocumentFolders
{
public:
    struct Folder
    {
        QString path;
        QStringList patterns; // "*" or "*.ext"
    };

    explicit DocumentFolders(QList<Folder> folders);
    // The folders of the recorded kinds, where the suite's paths put them.
    static DocumentFolders of(const SuitePaths& paths);

    const QList<Folder>& folders() const { return m_folders; }
    bool isDocument(const QString& path) const;
    // Every document at or below within (all of them when empty), sorted.
    QStringList list(const QString& within = {}) const;
    // Every document with its stat, read in one pass over the folders.
    QHash<QString, DocumentStat> scan() const;

    // The stat of a file; empty when it is not there or not a regular file.
    static std::optional<DocumentStat> stat(const QString& path);
    // Reads the whole file; empty when it cannot be read, or when it changed
    // (size or time) while it was read.
    static std::optional<DocumentFingerprint> fingerprint(const QString& path, DocumentStat* stat = nullptr);

private:
    const Folder* folderOf(const QString& path) const;
    // Reads folder and every folder below it; adds the documents to *found.
    void walk(const QByteArray& folder, QHash<QString, DocumentStat>* found) const;

    QList<Folder> m_folders;
};

} // namespace nebra
