#include "CatalogueFile.h"

#include "RegularFile.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

namespace nebra::CatalogueFile {

bool read(const QString& path, qint64 maxSize, const QString& what, QByteArray& content, QString& error)
{
    QString reason;
    const RegularFile::Status status = RegularFile::read(path, maxSize, content, reason);
    if (status == RegularFile::Status::Read)
        return true;
    if (status != RegularFile::Status::Missing)
        error = QStringLiteral("The %1 \"%2\" cannot be read: %3")
                    .arg(what, QDir::toNativeSeparators(path), reason);
    return false;
}

std::optional<QJsonArray> list(const QByteArray& content, const QString& key, const QString& what,
                               const QString& shownName, QString& error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(content, &parseError);
    const QJsonValue value = document.object().value(key);
    if (parseError.error == QJsonParseError::NoError && value.isArray())
        return value.toArray();
    error = QStringLiteral("The %1 \"%2\" is not a valid catalogue%3.")
                .arg(what, shownName,
                     parseError.error != QJsonParseError::NoError
                         ? QStringLiteral(": ") + parseError.errorString()
                         : QString());
    return std::nullopt;
}

} // namespace nebra::CatalogueFile
