#include "WizardCatalogue.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace nebra {

WizardCatalogue::WizardCatalogue(const QString& catalogueFile)
{
    QFile file(catalogueFile);
    if (!file.exists())
        return;
    const QString shownName = QDir::toNativeSeparators(catalogueFile);
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = QStringLiteral("The wizard catalogue \"%1\" cannot be read: %2")
                      .arg(shownName, file.errorString());
        return;
    }
    read(file.readAll(), shownName);
}

void WizardCatalogue::read(const QByteArray& content, const QString& shownName)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(content, &parseError);
    const QJsonValue list = document.object().value(QLatin1String("wizards"));
    if (parseError.error != QJsonParseError::NoError || !list.isArray()) {
        m_error = QStringLiteral("The wizard catalogue \"%1\" is not a valid catalogue%2.")
                      .arg(shownName, parseError.error != QJsonParseError::NoError
                                          ? QStringLiteral(": ") + parseError.errorString()
                                          : QString());
        return;
    }
    QStringList skipped;
    const QJsonArray wizards = list.toArray();
    for (qsizetype i = 0; i < wizards.size(); ++i) {
        const QJsonObject wizard = wizards.at(i).toObject();
        WizardEntry entry{wizard.value(QLatin1String("Name")).toString(),
                          wizard.value(QLatin1String("ProgID")).toString()};
        // Without a name there is no list item and no folder; without a
        // ProgID there is nothing to run.
        if (entry.Name.isEmpty() || entry.ProgID.isEmpty())
            skipped.append(QString::number(i + 1));
        else
            m_wizards.append(std::move(entry));
    }
    if (!skipped.isEmpty())
        m_error = QStringLiteral("The wizard catalogue \"%1\" has entries without a Name or a ProgID (%2).")
                      .arg(shownName, skipped.join(QStringLiteral(", ")));
}

QString WizardCatalogue::FileIn(const QString& suiteDataFolder)
{
    return suiteDataFolder + QStringLiteral("/wizards.json");
}

} // namespace nebra
