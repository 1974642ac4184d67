#include "DocumentFolders.h"

#include "DocumentKinds.h"
#include "SuitePaths.h"

#include <QDir>
#include <QDirIterator>

#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nebra {

namespace {

bool within(const QString& path, const QString& folder)
{
    return path.size() > folder.size() && path.startsWith(folder) &&
           path.at(folder.size()) == QLatin1Char('/');
}

DocumentStat statOf(const struct ::stat& st)
{
    return {qint64(st.st_size), qint64(st.st_mtim.tv_sec) * 1000 + st.st_mtim.tv_nsec / 1000000,
            quint64(st.st_ino)};
}

} // namespace

DocumentFolders::DocumentFolders(QList<Folder> folders) : m_folders(std::move(folders))
{
    for (Folder& folder : m_folders)
        folder.path = QDir::cleanPath(folder.path);
}

DocumentFolders DocumentFolders::of(const SuitePaths& paths)
{
    QList<Folder> folders;
    for (const DocumentKind& kind : DocumentKinds::all())
        if (kind.recorded)
            folders.append({(paths.*kind.folder)(), {QLatin1String(kind.pattern)}});
    return DocumentFolders(std::move(folders));
}

const DocumentFolders::Folder* DocumentFolders::folderOf(const QString& path) const
{
    // The deepest folder that holds the path: a folder may lie inside another.
    const Folder* best = nullptr;
    for (const Folder& folder : m_folders)
        if (within(path, folder.path) && (!best || folder.path.size() > best->path.size()))
            best = &folder;
    return best;
}

bool DocumentFolders::isDocument(const QString& path) const
{
    const Folder* folder = folderOf(path);
    if (!folder)
        return false;
    const QString name = path.section(QLatin1Char('/'), -1);
    if (name.startsWith(QLatin1Char('.')))
        return false;
    // Patterns are "*" or "*.ext", matched as the directory listing matches them (any case).
    for (const QString& pattern : folder->patterns)
        if (pattern == QLatin1String("*") || name.endsWith(QStringView(pattern).mid(1), Qt::CaseInsensitive))
            return true;
    return false;
}

QStringList DocumentFolders::list(const QString& inside) const
{
    const QString root = QDir::cleanPath(inside);
    QStringList found;
    for (const Folder& folder : m_folders) {
        if (!inside.isEmpty() && folder.path != root && !within(folder.path, root) &&
            !within(root, folder.path))
            continue;
        QDirIterator it(folder.path, folder.patterns, QDir::Files | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            if ((inside.isEmpty() || path == root || within(path, root)) && isDocument(path))
                found.append(path);
        }
    }
    found.sort();
    found.removeDuplicates();
    return found;
}

QHash<QString, DocumentStat> DocumentFolders::scan() const
{
    QHash<QString, DocumentStat> found;
    for (const Folder& folder : m_folders)
        walk(QFile::encodeName(folder.path), &found);
    return found;
}

// A plain walk (readdir and fstatat): the rescan of unchanged documents is
// mostly this, so it costs no more than the walk itself must.
void DocumentFolders::walk(const QByteArray& folder, QHash<QString, DocumentStat>* found) const
{
    DIR* dir = ::opendir(folder.constData());
    if (!dir)
        return;
    while (const dirent* entry = ::readdir(dir)) {
        struct ::stat st;
        if (entry->d_name[0] == '.' || ::fstatat(::dirfd(dir), entry->d_name, &st, 0) != 0)
            continue;
        const QByteArray path = folder + '/' + entry->d_name;
        if (S_ISDIR(st.st_mode))
            walk(path, found);
        else if (S_ISREG(st.st_mode) && isDocument(QFile::decodeName(path)))
            found->insert(QFile::decodeName(path), statOf(st));
    }
    ::closedir(dir);
}

std::optional<DocumentStat> DocumentFolders::stat(const QString& path)
{
    struct ::stat st;
    if (::stat(QFile::encodeName(path).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return std::nullopt;
    return statOf(st);
}

std::optional<DocumentFingerprint> DocumentFolders::fingerprint(const QString& path, DocumentStat* stat)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    struct ::stat before;
    struct ::stat after;
    // OpenSSL's SHA-256 uses the processor's SHA instructions where it has them: several times
    // QCryptographicHash's speed, and sha256sum's.
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> hash(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    static constexpr qsizetype Chunk = 1 << 20;
    QByteArray buffer(Chunk, Qt::Uninitialized);
    bool read = hash && EVP_DigestInit_ex(hash.get(), EVP_sha256(), nullptr) == 1 &&
                ::fstat(fd, &before) == 0 && S_ISREG(before.st_mode);
    while (read) {
        const ssize_t n = ::read(fd, buffer.data(), Chunk);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            read = n == 0;
            break;
        }
        read = EVP_DigestUpdate(hash.get(), buffer.constData(), size_t(n)) == 1;
    }
    QByteArray digest(EVP_MAX_MD_SIZE, Qt::Uninitialized);
    unsigned int length = 0;
    read = read && ::fstat(fd, &after) == 0 &&
           EVP_DigestFinal_ex(hash.get(), reinterpret_cast<unsigned char*>(digest.data()), &length) == 1;
    digest.truncate(length);
    ::close(fd);
    // A document still being written is fingerprinted when it settles.
    if (!read || !(statOf(before) == statOf(after)))
        return std::nullopt;
    if (stat)
        *stat = statOf(after);
    return DocumentFingerprint{path, digest, qint64(after.st_size), statOf(after).modifiedMs};
}

} // namespace nebra
