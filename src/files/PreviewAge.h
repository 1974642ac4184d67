#pragma once

#include <QString>

namespace nebra {

// Results of ComparePreviewAge.
constexpr short PreviewUsable = -1;      // true: the preview is newer, or older by less than a minute
constexpr short PreviewOutOfDate = 1;    // the preview is at least 60 seconds older than the document
constexpr short PreviewTimesUnknown = 2; // a file's last-write time could not be read

// Compares the last-write times of a document and of its preview page.
// Each file is opened for reading (existing regular files only: a pipe,
// socket or device counts as a file that cannot be opened) and asked for its
// modification time; when either fails the result is PreviewTimesUnknown and
// failure, if given, receives "Could not open the file successfully" or
// "Could not determine file modification time successfully" with the path.
// Otherwise the preview is out of date when preview time minus document time
// is -60 seconds or less: the minute of tolerance is deliberate.
short ComparePreviewAge(const QString& documentPath, const QString& previewPath, QString* failure = nullptr);

} // namespace nebra
