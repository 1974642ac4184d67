#include "WizardCatalogue.h"

#include "RegularFile.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace nebra {

WizardCatalogue::WizardCatalogue(const QString& catalogueFile)
{
    QByteArray content;
    QString reason;
    const RegularFile::Status status = RegularFile::read(catalogueFile, MaximumFileSize, content, reason);
    if (status == RegularFile::Status::Missing)
        return;
    const QString shownName = QDir::toNativeSeparators(catalogueFile);
    if (status != RegularFile::Status::Read) {
        m_error = QStringLiteral("The wizard catalogue \"%1\" cannot be read: %2").arg(shownName, reason);
        return;
    }
    read(content, shownName);
}

WizardCatalogue WizardCatalogue::Parse(const QByteArray& content, const QString& shownName)
{
    WizardCatalogue catalogue;
    catalogue.read(content, shownName);
    return catalogue;
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
