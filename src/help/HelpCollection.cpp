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
// the copy cannot be made. A changed documentation file also drops the search
// index made from the old one.
QString HelpCollection::workingCopy(const QString& collectionFile)
{
    const QFileInfo source(collectionFile);
    const QString folder = cacheFolder();
    if (!QDir().mkpath(folder))
        return {};
    const QStringList docs = source.dir().entryList({QStringLiteral("*.qch")}, QDir::Files);
    for (const QString& name : docs) {
        const Copy copied = copyIfChanged(source.dir().filePath(name), folder + u'/' + name);
        if (copied == Copy::Failed)
            return {};
        if (copied == Copy::Made)
            QDir(folder + QStringLiteral("/.") + source.completeBaseName()).removeRecursively();
    }
    const QString target = folder + u'/' + source.fileName();
    return copyIfChanged(collectionFile, target) == Copy::Failed ? QString() : target;
}

// The copy is current when the source has not changed since it was made: its
// size and time are kept in a note beside the copy. (The copy's own time says
// nothing: the engine writes to its collection, and installed files keep the
// time they were built.)
HelpCollection::Copy HelpCollection::copyIfChanged(const QString& source, const QString& target)
{
    const QFileInfo from(source);
    const QByteArray stamp = QByteArray::number(from.size()) + ' ' +
                             QByteArray::number(from.lastModified().toMSecsSinceEpoch()) + ' ' +
                             from.absoluteFilePath().toUtf8();
    QFile note(target + QStringLiteral(".source"));
    if (QFileInfo::exists(target) && note.open(QIODevice::ReadOnly) && note.readAll() == stamp)
        return Copy::Current;
    note.close();
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly) || !writeFile(target, in.readAll()))
        return Copy::Failed;
    return writeFile(note.fileName(), stamp) ? Copy::Made : Copy::Failed;
}

bool HelpCollection::writeFile(const QString& path, const QByteArray& content)
{
    QSaveFile out(path);
    return out.open(QIODevice::WriteOnly) && out.write(content) == content.size() && out.commit();
}

} // namespace nebra
