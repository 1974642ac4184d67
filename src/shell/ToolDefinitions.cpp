#include "ToolDefinitions.h"

namespace nebra::ToolDefinitions {

namespace {
const QString General = QStringLiteral("General");
const QString FileDropDown = QStringLiteral("FileDropDown");
const QString HelpDropDown = QStringLiteral("HelpDropDown");
const QString ToolsDropDown = QStringLiteral("ToolsDropDown");
const QString Sep = QLatin1String(ToolBarsControl::Separator);
} // namespace

QList<ToolDefinition> tools()
{
    return {
        {QStringLiteral("ID_New"), QStringLiteral("&New"), FileDropDown, {}},
        {QStringLiteral("ID_Open"), QStringLiteral("&Open"), FileDropDown, {}},
        {QStringLiteral("ID_Run"), QStringLiteral("&Run"), FileDropDown, {}},
        {QStringLiteral("ID_Exit"), QStringLiteral("E&xit"), FileDropDown, {}},
        {QStringLiteral("ID_About"), QStringLiteral("&About"), HelpDropDown, {}},
        {QStringLiteral("ID_HelpHelp"), QStringLiteral("Help"), HelpDropDown, {}},
        {QStringLiteral("ID_Options"), QStringLiteral("&Options..."), FileDropDown, {}},
        {QStringLiteral("ID_HelpContext"), QStringLiteral("Help"), General, {}},
        {QStringLiteral("ID_ContentsIndex"), QStringLiteral("Contents and Index"), General, {}},
        {QStringLiteral("ID_GettingStarted"), QStringLiteral("Getting Started"), General, {}},
        {QStringLiteral("ID_Quorvix"), QStringLiteral("Quorvix on the Web"), General, {}},
        {QStringLiteral("ID_ChangePassword"), QStringLiteral("&Change Password..."), FileDropDown,
         QStringLiteral("Change &Password")},
        {QStringLiteral("ID_LogOut"), QStringLiteral("&Log Out"), General, QStringLiteral("Log Out")},
        // Shown only inside a security session.
        {QStringLiteral("ID_AuditTrail"), QStringLiteral("&Audit Trail..."), ToolsDropDown, {}},
    };
}

QList<QPair<ToolDefinition, QStringList>> menus()
{
    return {
        {{QStringLiteral("ID_File"), QStringLiteral("&File"), General, {}},
         {QStringLiteral("ID_New"), QStringLiteral("ID_Open"), QStringLiteral("ID_Run"), Sep,
          QStringLiteral("ID_Options"), QStringLiteral("ID_ChangePassword"), Sep, QStringLiteral("ID_LogOut"),
          QStringLiteral("ID_Exit")}},
        {{QStringLiteral("ID_Tools"), QStringLiteral("&Tools"), General, {}},
         {QStringLiteral("ID_AuditTrail")}},
        {{QStringLiteral("ID_Help"), QStringLiteral("&Help"), General, {}},
         {QStringLiteral("ID_HelpContext"), QStringLiteral("ID_ContentsIndex"),
          QStringLiteral("ID_GettingStarted"), Sep, QStringLiteral("ID_Quorvix"), Sep,
          QStringLiteral("ID_About")}},
    };
}

QStringList toolBarItems()
{
    return {QStringLiteral("ID_New"), QStringLiteral("ID_Open"), QStringLiteral("ID_Run"), Sep,
            QStringLiteral("ID_LogOut")};
}

} // namespace nebra::ToolDefinitions
