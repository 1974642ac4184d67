#include "HelpCollection.h"

#include "HelpTopics.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHelpEngine>
#include <QSaveFile>
#include <QStandardPaths>

namespace nebra {

namespace {

QString missingText(const QString& file)
{
    return QStringLiteral("Help cannot be shown: the help file \"%1\" is missing.\n\n"
                          "Reinstall the Organiser to restore it; everything else keeps working.")
        .arg(QDir::toNativeSeparators(file));
}

QString damagedText(const QString& file)
{
    return QStringLiteral(
               "Help cannot be shown: the help file \"%1\" is damaged or is not a help collection.\n\n"
               "Reinstall the Organiser to restore it; everything else keeps working.")
        .arg(QDir::toNativeSeparators(file));
}

} // namespace

QString HelpCollection::cacheFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/Nebra/help");
}

std::unique_ptr<QHelpEngine> HelpCollection::open(const QString& collectionFile, QString& error)
{
    if (collectionFile.isEmpty() || !QFileInfo(collectionFile).isFile()) {
        error = missingText(collectionFile);
        return nullptr;
    }
    const QString copy = workingCopy(collectionFile);
    auto engine = std::make_unique<QHelpEngine>(copy.isEmpty() ? collectionFile : copy);
    engine->setReadOnly(copy.isEmpty());
    // A damaged collection can still "set up"; it must also hold the guide.
    if (!engine->setupData() || engine->fileData(HelpTopics::contentsUrl()).isEmpty()) {
        error = damagedText(collectionFile);
        return nullptr;
    }
    return engine;
}

// Copies the collection and every compressed help file beside it; empty when
// the copy cannot be made.
QString HelpCollection::workingCopy(const QString& collectionFile)
{
    const QFileInfo source(collectionFile);
    const QString folder = cacheFolder();
    if (!QDir().mkpath(folder))
        return {};
    const QStringList docs = source.dir().entryList({QStringLiteral("*.qch")}, QDir::Files);
    for (const QString& name : docs) {
        if (!copyIfChanged(source.dir().filePath(name), folder + u'/' + name))
            return {};
    }
    const QString target = folder + u'/' + source.fileName();
    return copyIfChanged(collectionFile, target) ? target : QString();
}

// A copy is current when it is not older than its source: the engine writes
// into its copy of the collection, so sizes may differ while times tell.
bool HelpCollection::copyIfChanged(const QString& source, const QString& target)
{
    const QFileInfo to(target);
    if (to.exists() && to.lastModified() >= QFileInfo(source).lastModified())
        return true;
    QFile in(source);
    QSaveFile out(target);
    if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly))
        return false;
    out.write(in.readAll());
    return out.commit();
}

} // namespace nebra
