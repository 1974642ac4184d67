#include "WelcomePage.h"

#include "Messages.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

#include <QUrl>

namespace nebra {

namespace {
constexpr int Complete = 4;
}

WelcomePage::WelcomePage(WelcomeActions actions) : m_actions(std::move(actions)) {}

QString WelcomePage::PageFile(const SuiteSettings& settings, const SuitePaths& paths)
{
    const QString chosen = settings.OrganiserFile();
    if (!chosen.isEmpty()) {
        const QString folder =
            settings.PageFolder().isEmpty() ? paths.SuiteDataFolder() : settings.PageFolder();
        return folder + QLatin1Char('/') + chosen;
    }
    return paths.SuiteDataFolder() + (settings.UseAlternativeWelcomePage()
                                          ? QStringLiteral("/Organiser2.mht")
                                          : QStringLiteral("/Organiser.mht"));
}

QStringList WelcomePage::linkNames()
{
    return {QStringLiteral("Run a protocol"),        QStringLiteral("Create a new protocol"),
            QStringLiteral("Create a new template"), QStringLiteral("Analyse data"),
            QStringLiteral("Instrument setup"),      QStringLiteral("Exit")};
}

QString WelcomePage::CommandName(const QUrl& target)
{
    const QString decoded = QUrl::fromPercentEncoding(target.toEncoded());
    return decoded.mid(decoded.lastIndexOf(QLatin1Char('\\')) + 1);
}

void WelcomePage::call(const std::function<void()>& action)
{
    if (action)
        action();
}

void WelcomePage::WebBrowser1_BeforeNavigate2(const QUrl& target, bool& cancel)
{
    cancel = true;
    const QString name = CommandName(target);
    if (name == QLatin1String("Run a protocol"))
        m_runProtocol = true;
    else if (name == QLatin1String("Create a new protocol"))
        call(m_actions.createProtocol);
    else if (name == QLatin1String("Create a new template"))
        m_createTemplate = true;
    else if (name == QLatin1String("Analyse data"))
        m_analyseData = true;
    else if (name == QLatin1String("Instrument setup"))
        ShowOrganiserSelectionError();
    else if (name == QLatin1String("Exit"))
        m_exit = true;
    else if (name.startsWith(QLatin1String("Recent ")) && m_actions.openRecent)
        openRecent(name.mid(7));
}

void WelcomePage::openRecent(const QString& number)
{
    bool ok = false;
    const int n = number.toInt(&ok);
    if (ok && n >= 1)
        m_actions.openRecent(n - 1);
}

void WelcomePage::WebBrowser1_CommandStateChange()
{
    if (!m_actions.readyState || m_actions.readyState() != Complete)
        return;
    if (m_runProtocol) {
        m_runProtocol = false;
        call(m_actions.selectProtocolsNode);
    }
    if (m_analyseData) {
        m_analyseData = false;
        call(m_actions.selectResultsNode);
    }
    if (m_createTemplate) {
        m_createTemplate = false;
        call(m_actions.createLayoutTemplate);
    }
    // The flag stays set: the window is going.
    if (m_exit)
        call(m_actions.exit);
}

void WelcomePage::ShowOrganiserSelectionError() const
{
    // "Organizer" with a z in this one title, as it has always been written.
    Messages::show({QStringLiteral("Instrument Setup is not implemented in this version."),
                    QStringLiteral("Organizer Selection Error"), MessageIcon::Information, MessageButton::Ok,
                    MessageButton::Ok, m_actions.owner});
}

} // namespace nebra
