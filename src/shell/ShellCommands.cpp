#include "ShellCommands.h"

#include "CommandDispatcher.h"
#include "Messages.h"
#include "ToolBarsControl.h"
#include "ToolDefinitions.h"

#include <QAction>
#include <QDesktopServices>
#include <QFontDatabase>
#include <QUrl>

namespace nebra {

void ShellCommands::Register(CommandDispatcher& commands, QObject* owner, const QString& productTitle)
{
    commands.setCommand(CommandId::About, [owner, productTitle] { ShowAbout(owner, productTitle); });
    commands.setCommand(CommandId::Quorvix, [owner] { OpenMakerPage(owner); });
}

QString ShellCommands::aboutText(const QString& productTitle)
{
    return QStringLiteral("%1\n\nVersion %2\nBuilt with Qt %3, running on Qt %4")
        .arg(productTitle, QStringLiteral(NEBRA_VERSION), QStringLiteral(QT_VERSION_STR),
             QString::fromLatin1(qVersion()));
}

void ShellCommands::ShowAbout(QObject* owner, const QString& productTitle)
{
    Messages::show({aboutText(productTitle), QStringLiteral("About ") + productTitle,
                    MessageIcon::Information, MessageButton::Ok, MessageButton::Ok, owner});
}

QString ShellCommands::noBrowserText()
{
    return QStringLiteral("No web browser could be started to show the page. Open this address in a web "
                          "browser:\n\n%1")
        .arg(QLatin1String(MakerPageAddress));
}

void ShellCommands::OpenMakerPage(QObject* owner)
{
    if (QDesktopServices::openUrl(QUrl(QLatin1String(MakerPageAddress))))
        return;
    const QString title = QString::fromLatin1(ToolDefinitions::command(CommandId::Quorvix).caption);
    Messages::show({noBrowserText(), QString(title).remove(QLatin1Char('&')), MessageIcon::Warning,
                    MessageButton::Ok, MessageButton::Ok, owner});
}

bool ShellCommands::ApplyMenuFont(ToolBarsControl& tools)
{
    const QString family = QLatin1String(MenuFontFamily);
    if (!QFontDatabase::families().contains(family, Qt::CaseInsensitive))
        return false;
    QFont font(family);
    font.setPointSizeF(QFont().pointSizeF());
    tools.setMenuFont(font);
    return true;
}

void ShellCommands::AddShortcutKeys(ToolBarsControl& tools)
{
    if (QAction* help = tools.action(ToolDefinitions::toolId(CommandId::HelpContext)))
        help->setShortcut(QKeySequence::HelpContents);
}

} // namespace nebra
