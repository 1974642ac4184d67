#include "HLDCollection.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace nebra {

HLDCollection::HLDCollection(const QString& catalogueFile)
{
    QFile file(catalogueFile);
    if (!file.exists())
        return;
    const QString shownName = QDir::toNativeSeparators(catalogueFile);
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = QStringLiteral("The driver catalogue \"%1\" cannot be read: %2")
                      .arg(shownName, file.errorString());
        return;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
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
