#pragma once
// The suite's catalogues (drivers, wizards) are small JSON files holding one
// list under a key. Both are read and checked the same way, and their errors
// name the catalogue and the file in the same words.

#include <QByteArray>
#include <QJsonArray>
#include <QString>

#include <optional>

namespace nebra::CatalogueFile {

// Reads `path`, a regular file of at most `maxSize` bytes, into `content`.
// A missing file is no error (nothing is installed): false with `error` empty.
// Otherwise false sets `error`, naming the catalogue as `what` ("driver catalogue").
bool read(const QString& path, qint64 maxSize, const QString& what, QByteArray& content, QString& error);

// The array under `key` of the JSON object in `content`; without one, `error`
// says why, naming the catalogue and `shownName`.
std::optional<QJsonArray> list(const QByteArray& content, const QString& key, const QString& what,
                               const QString& shownName, QString& error);

} // namespace nebra::CatalogueFile
