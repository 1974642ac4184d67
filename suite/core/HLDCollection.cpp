#include "HLDCollection.h"

#include "CatalogueFile.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace nebra {

HLDCollection::HLDCollection(const QString& catalogueFile)
{
    QByteArray content;
    if (CatalogueFile::read(catalogueFile, MaximumFileSize, QStringLiteral("driver catalogue"), content,
                            m_error))
        read(content, QDir::toNativeSeparators(catalogueFile));
}

HLDCollection HLDCollection::Parse(const QByteArray& content, const QString& shownName)
{
    HLDCollection collection;
    collection.read(content, shownName);
    return collection;
}

void HLDCollection::read(const QByteArray& content, const QString& shownName)
{
    const std::optional<QJsonArray> drivers = CatalogueFile::list(
        content, QStringLiteral("drivers"), QStringLiteral("driver catalogue"), shownName, m_error);
    if (!drivers)
        return;
    for (const QJsonValue& entry : *drivers) {
        const QJsonObject driver = entry.toObject();
        const QString name = driver.value(QLatin1String("FullName")).toString();
        if (name.isEmpty())
            continue; // an entry without a name cannot be shown or given a folder
        m_items.append({name, driver.value(QLatin1String("Instrument")).toString(),
                        driver.value(QLatin1String("Version")).toString()});
    }
}

} // namespace nebra
