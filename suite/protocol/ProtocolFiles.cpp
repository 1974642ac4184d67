#include "ProtocolFiles.h"

#include "AssayProtocol.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace nebra {

namespace {

bool writeNew(const QString& path, const QByteArray& content, QString& error)
{
    if (QFileInfo::exists(path)) {
        error = QStringLiteral("\"%1\" already exists.").arg(QDir::toNativeSeparators(path));
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit()) {
        error = QStringLiteral("\"%1\" could not be written: %2")
                    .arg(QDir::toNativeSeparators(path), file.errorString());
        return false;
    }
    return true;
}

} // namespace

QString ProtocolFiles::CheckName(const QString& folder, const QString& name)
{
    if (name.trimmed().isEmpty())
        return QStringLiteral("Enter a name for the protocol.");
    if (name != name.trimmed())
        return QStringLiteral("The name must not begin or end with a blank.");
    if (name.size() > MaximumNameLength)
        return QStringLiteral("The name is longer than %1 characters.").arg(MaximumNameLength);
    // The characters no file name of the suite may hold on any of its systems.
    static const QString forbidden = QStringLiteral("/\\:*?\"<>|");
    for (const QChar c : name) {
        if (forbidden.contains(c) || c.category() == QChar::Other_Control)
            return QStringLiteral("A name cannot hold the character %1.")
                .arg(c.category() == QChar::Other_Control ? QStringLiteral("of a control code")
                                                          : QStringLiteral("\"%1\"").arg(c));
    }
    if (name.startsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char('.')))
        return QStringLiteral("The name must not begin or end with a full stop.");
    if (QFileInfo::exists(ProtocolPath(folder, name)) || QFileInfo::exists(PreviewPath(folder, name)))
        return QStringLiteral("A protocol named \"%1\" already exists.").arg(name);
    return {};
}

QString ProtocolFiles::ProtocolPath(const QString& folder, const QString& name)
{
    return folder + QLatin1Char('/') + name + QStringLiteral(".apr");
}

QString ProtocolFiles::PreviewPath(const QString& folder, const QString& name)
{
    return folder + QLatin1Char('/') + name + QStringLiteral(".mht");
}

QString ProtocolFiles::Save(const QString& folder, const AssayProtocol& protocol, QString& error)
{
    error = CheckName(folder, protocol.name);
    if (!error.isEmpty())
        return {};
    if (!QDir().mkpath(folder)) {
        error = QStringLiteral("The folder \"%1\" could not be made.").arg(QDir::toNativeSeparators(folder));
        return {};
    }
    const QString path = ProtocolPath(folder, protocol.name);
    if (!writeNew(path, protocol.Serialise(), error))
        return {};
    // The preview is written after the protocol, so it is newer and shown at once.
    if (!writeNew(PreviewPath(folder, protocol.name), protocol.PreviewPage(), error)) {
        QFile::remove(path);
        return {};
    }
    return path;
}

} // namespace nebra
