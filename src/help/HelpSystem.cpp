#include "HelpSystem.h"

#include "DocumentTypes.h"
#include "HelpTopics.h"
#include "Messages.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace nebra {

namespace {

constexpr char kCollectionName[] = "organiser.qhc";

} // namespace

HelpSystem::HelpSystem(ViewerFactory factory) : m_factory(std::move(factory)) {}

HelpSystem::~HelpSystem() = default;

QString HelpSystem::defaultHelpFile()
{
    const QString name = QLatin1String(kCollectionName);
    const QString besideProgram =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../share/nebra/help/") + name;
    if (QFileInfo::exists(besideProgram))
        return QDir::cleanPath(besideProgram);
    const QString installed = QStringLiteral(NEBRA_INSTALL_DATA_DIR "/help/") + name;
    if (QFileInfo::exists(installed))
        return installed;
    return QStringLiteral(NEBRA_BUILD_HELP_DIR "/") + name;
}

bool HelpSystem::IsDisplayingHelp() const
{
    return m_displayed && m_viewer && m_viewer->isShown();
}

bool HelpSystem::CloseHelpIfOpen()
{
    if (!IsDisplayingHelp())
        return false;
    m_viewer->closeWindow();
    m_displayed = false;
    return true;
}

void HelpSystem::DisplayeHelpTOC()
{
    HelpViewer* shown = viewer();
    remember(shown && shown->showContents(HelpTopics::contentsUrl()));
}

void HelpSystem::DisplayHelpContext(int topic)
{
    m_lastContext = topic;
    const QUrl page = HelpTopics::pageUrl(topic);
    HelpViewer* shown = viewer();
    if (!shown) {
        remember(false);
        return;
    }
    remember(page.isEmpty() ? shown->showContents(HelpTopics::contentsUrl()) : shown->showPage(page));
}

void HelpSystem::ShowContextHelp()
{
    if (!m_selectedData)
        return;
    if (const int topic = DocumentTypes::of(m_selectedData()).helpTopic; topic != 0)
        DisplayHelpContext(topic);
}

// The window is made once and kept; a failure to make it is reported for this
// request only, so that a help file restored meanwhile is found next time.
HelpViewer* HelpSystem::viewer()
{
    if (m_viewer || !m_factory)
        return m_viewer.get();
    QString error;
    m_viewer = m_factory(m_helpFile, error);
    if (!m_viewer) {
        MessageRequest request;
        request.text = error.isEmpty()
                           ? QStringLiteral("Help cannot be shown: the help file \"%1\" is missing or "
                                            "cannot be read.")
                                 .arg(QDir::toNativeSeparators(m_helpFile))
                           : error;
        request.icon = MessageIcon::Warning;
        Messages::show(request);
    }
    return m_viewer.get();
}

void HelpSystem::remember(bool shown)
{
    m_displayed = shown;
}

} // namespace nebra
