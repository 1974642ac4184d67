#include "EditorCommandLine.h"

#include <QFileInfo>

namespace nebra {

namespace {
const QLatin1String FolderPrefix("layoutsfolder:");

EditorCommandLine unusable(const QString& message)
{
    return {EditorCommandLine::Action::Unusable, QString(), message};
}

EditorCommandLine folderArgument(QString text)
{
    // The Organiser passes the quotes; a shell that removed them is as welcome.
    if (text.size() >= 2 && text.startsWith(QLatin1Char('"')) && text.endsWith(QLatin1Char('"')))
        text = text.mid(1, text.size() - 2);
    const QString folder = text.mid(FolderPrefix.size());
    const QFileInfo info(folder);
    // Still restricted when the folder is missing: a secured editor must not save elsewhere.
    if (folder.isEmpty() || !info.isDir())
        return {EditorCommandLine::Action::NewLayoutInFolder, folder,
                QStringLiteral("The layouts folder \"%1\" does not exist. The layout can be drawn but not "
                               "saved until the folder exists.")
                    .arg(folder)};
    return {EditorCommandLine::Action::NewLayoutInFolder, info.absoluteFilePath(), QString()};
}
} // namespace

EditorCommandLine EditorCommandLine::Parse(const QStringList& arguments)
{
    if (arguments.isEmpty())
        return {};
    if (arguments.size() == 1 &&
        (arguments[0] == QLatin1String("--help") || arguments[0] == QLatin1String("-h")))
        return {Action::ShowHelp, QString(), QString()};
    if (arguments.size() == 1 && arguments[0] == QLatin1String("--version"))
        return {Action::ShowVersion, QString(), QString()};
    // The rest of the command line is one path, blanks and all.
    const QString text = arguments.join(QLatin1Char(' '));
    if (text.startsWith(QLatin1String("\"layoutsfolder:")) || text.startsWith(FolderPrefix))
        return folderArgument(text);
    if (text.startsWith(QLatin1Char('-')))
        return unusable(
            QStringLiteral("\"%1\" is not an option of the layout editor (see --help).").arg(text));
    const QFileInfo info(text);
    if (!info.isFile())
        return unusable(QStringLiteral("The layout \"%1\" does not exist or is not a file.").arg(text));
    return {Action::OpenLayout, info.absoluteFilePath(), QString()};
}

QString EditorCommandLine::usage()
{
    return QStringLiteral(
        "Usage: nebra-layout-editor [LAYOUT | \"layoutsfolder:FOLDER\" | --help | --version]\n"
        "Draws and edits microplate layouts (.mlo files).\n\n"
        "  (nothing)                 a new, untitled layout, saved in the suite's layouts folder\n"
        "  LAYOUT                    the layout file to edit (blanks need no quoting)\n"
        "  \"layoutsfolder:FOLDER\"    a new layout that can be saved only into FOLDER\n"
        "  --help                    this text\n"
        "  --version                 the program's version\n");
}

} // namespace nebra
