#include "WizardCatalogue.h"

#include "CatalogueFile.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace nebra {

WizardCatalogue::WizardCatalogue(const QString& catalogueFile)
{
    QByteArray content;
    if (CatalogueFile::read(catalogueFile, MaximumFileSize, QStringLiteral("wizard catalogue"), content,
                            m_error))
        read(content, QDir::toNativeSeparators(catalogueFile));
}

WizardCatalogue WizardCatalogue::Parse(const QByteArray& content, const QString& shownName)
{
    WizardCatalogue catalogue;
    catalogue.read(content, shownName);
    return catalogue;
}

void WizardCatalogue::read(const QByteArray& content, const QString& shownName)
{
    const std::optional<QJsonArray> list = CatalogueFile::list(
        content, QStringLiteral("wizards"), QStringLiteral("wizard catalogue"), shownName, m_error);
    if (!list)
        return;
    QStringList skipped;
    const QJsonArray& wizards = *list;
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
