#include "HLDCollection.h"

#include "RegularFile.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace nebra {

HLDCollection::HLDCollection(const QString& catalogueFile)
{
    QByteArray content;
    QString reason;
    const RegularFile::Status status = RegularFile::read(catalogueFile, MaximumFileSize, content, reason);
    if (status == RegularFile::Status::Missing)
        return;
    const QString shownName = QDir::toNativeSeparators(catalogueFile);
    if (status != RegularFile::Status::Read) {
        m_error = QStringLiteral("The driver catalogue \"%1\" cannot be read: %2").arg(shownName, reason);
        return;
    }
    read(content, shownName);
}

HLDCollection HLDCollection::Parse(const QByteArray& content, const QString& shownName)
{
    HLDCollection collection;
    collection.read(content, shownName);
    return collection;
}

void HLDCollection::read(const QByteArray& content, const QString& shownName)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(content, &parseError);
    if (parseError.error != QJsonParseError::NoError ||
        !document.object().value(QLatin1String("drivers")).isArray()) {
        m_error = QStringLiteral("The driver catalogue \"%1\" is not a valid catalogue%2.")
                      .arg(shownName, parseError.error != QJsonParseError::NoError
                                          ? QStringLiteral(": ") + parseError.errorString()
                                          : QString());
        return;
    }
    const QJsonArray drivers = document.object().value(QLatin1String("drivers")).toArray();
    for (const QJsonValue& entry : drivers) {
        const QJsonObject driver = entry.toObject();
        const QString name = driver.value(QLatin1String("FullName")).toString();
        if (name.isEmpty())
            continue; // an entry without a name cannot be shown or given a folder
        m_items.append({name, driver.value(QLatin1String("Instrument")).toString(),
                        driver.value(QLatin1String("Version")).toString()});
    }
}

} // namespace nebra
