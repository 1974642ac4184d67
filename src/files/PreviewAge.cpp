#include "PreviewAge.h"

#include "RegularFile.h"

#include <QDateTime>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nebra {

namespace {
constexpr qint64 ToleranceMs = 60 * 1000;

// Opens the file as a reader would, without blocking: only a regular file
// counts, so a pipe or socket given a document's name can never hold the
// user-interface thread. The time comes from the open descriptor.
bool openedFileTime(const QString& path, QDateTime& time)
{
    if (!RegularFile::isRegular(path))
        return false;
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return false;
    struct stat st = {};
    const bool regular = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
    ::close(fd);
    if (regular)
        time =
            QDateTime::fromMSecsSinceEpoch(qint64(st.st_mtim.tv_sec) * 1000 + st.st_mtim.tv_nsec / 1000000);
    return regular;
}

bool lastWriteTime(const QString& path, QDateTime& time, QString* failure)
{
    if (!openedFileTime(path, time)) {
        if (failure)
            *failure = QStringLiteral("Could not open the file successfully: ") + path;
        return false;
    }
    if (!time.isValid()) {
        if (failure)
            *failure = QStringLiteral("Could not determine file modification time successfully: ") + path;
        return false;
    }
    return true;
}
} // namespace

short ComparePreviewAge(const QString& documentPath, const QString& previewPath, QString* failure)
{
    QDateTime document;
    QDateTime preview;
    if (!lastWriteTime(documentPath, document, failure) || !lastWriteTime(previewPath, preview, failure))
        return PreviewTimesUnknown;
    const qint64 differenceMs = preview.toMSecsSinceEpoch() - document.toMSecsSinceEpoch();
    return differenceMs <= -ToleranceMs ? PreviewOutOfDate : PreviewUsable;
}

} // namespace nebra
