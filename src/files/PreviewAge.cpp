#include "PreviewAge.h"

#include <QDateTime>
#include <QFile>

namespace nebra {

namespace {
constexpr qint64 ToleranceMs = 60 * 1000;

bool lastWriteTime(const QString& path, QDateTime& time, QString* failure)
{
    QFile file(path);
    if (!file.exists() || !file.open(QIODevice::ReadOnly)) {
        if (failure)
            *failure = QStringLiteral("Could not open the file successfully: ") + path;
        return false;
    }
    time = file.fileTime(QFileDevice::FileModificationTime);
    file.close();
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
