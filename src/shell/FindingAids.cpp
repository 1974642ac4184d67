#include "FindingAids.h"

#include "BrowserControl.h"
#include "FileListControl.h"
#include "FileManager.h"
#include "FileView.h"
#include "FolderTreeControl.h"
#include "Messages.h"
#include "RecentDocuments.h"
#include "RecentDocumentsMenu.h"
#include "SuiteSettings.h"
#include "ToolBarsControl.h"
#include "ToolDefinitions.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenu>
#include <QTimer>
#include <QWebEnginePage>
#include <QWebEngineScript>
#include <QWebEngineView>

namespace nebra {

namespace {

// Adds (or replaces) a "Recent" list at the end of the page. Names are set
// as text, never as markup; each link is "organiser:\Recent <n>", which the
// welcome page's link handler turns into ShowDocument().
QString recentListScript(const QStringList& paths)
{
    QJsonArray items;
    for (const QString& path : paths)
        items.append(QJsonObject{{QStringLiteral("name"), QFileInfo(path).fileName()},
                                 {QStringLiteral("path"), QDir::toNativeSeparators(path)}});
    const QString json = QString::fromUtf8(QJsonDocument(items).toJson(QJsonDocument::Compact));
    return QStringLiteral(R"((function (items) {
  var old = document.getElementById('organiser-recent');
  if (old) old.remove();
  if (!items.length || !document.body) return;
  var section = document.createElement('nav');
  section.id = 'organiser-recent';
  section.setAttribute('aria-label', 'Recent');
  var heading = document.createElement('h2');
  heading.textContent = 'Recent';
  section.appendChild(heading);
  var list = document.createElement('ul');
  items.forEach(function (item, i) {
    var link = document.createElement('a');
    link.href = 'organiser:\\Recent ' + (i + 1);
    link.textContent = item.name;
    link.title = item.path;
    var entry = document.createElement('li');
    entry.appendChild(link);
    list.appendChild(entry);
  });
  section.appendChild(list);
  document.body.appendChild(section);
})(%1);)")
        .arg(json);
}

} // namespace

FindingAids::FindingAids(Parts parts, QObject* parent) : QObject(parent), m_parts(parts)
{
    const SuiteSettings& settings = m_parts.settings;
    m_parts.list.setFilterBoxShown(settings.ShowFileListFilter());
    if (settings.ShowInFileManager()) {
        auto* show = new QAction(tr("Show in &file manager"), &m_parts.list);
        show->setObjectName(QStringLiteral("ShowInFileManager"));
        connect(show, &QAction::triggered, this, &FindingAids::showSelectionInFileManager);
        m_parts.list.addContextAction(show);
    }
    if (settings.ShowRecentDocuments())
        createRecentDocuments();
}

FindingAids::~FindingAids() = default;

void FindingAids::createRecentDocuments()
{
    m_recent = std::make_unique<RecentDocuments>(m_parts.settings);
    connect(m_recent.get(), &RecentDocuments::changed, this, [this] {
        if (m_parts.tree.currentNode().level() == 0)
            listRecentOnWelcomePage();
    });
    auto* menu = new RecentDocumentsMenu(*m_recent, &m_parts.owner);
    connect(menu, &RecentDocumentsMenu::documentChosen, &m_parts.fileView, &FileView::ShowDocument);
    if (QMenu* file = m_parts.tools.menu(ToolDefinitions::toolId(CommandId::FileMenu)))
        file->insertMenu(m_parts.tools.action(ToolDefinitions::toolId(CommandId::Options)), menu);
    connect(&m_parts.browser, &BrowserControl::DocumentComplete, this, [this] {
        if (m_parts.tree.currentNode().level() == 0)
            showRecentOnWelcomePage();
    });
}

void FindingAids::documentUsed(const QString& path)
{
    if (m_recent)
        m_recent->add(path);
}

void FindingAids::openRecent(int index)
{
    // Not from inside the browser's navigation callback: showing the
    // document navigates the same browser to its preview.
    if (m_recent && index < m_welcomeRecent.size())
        QTimer::singleShot(0, &m_parts.fileView, [&view = m_parts.fileView, path = m_welcomeRecent[index]] {
            view.ShowDocument(path);
        });
}

// The stored list at once; the documents found missing leave it when their
// checks answer (changed()).
void FindingAids::showRecentOnWelcomePage()
{
    listRecentOnWelcomePage();
    m_recent->check();
}

void FindingAids::listRecentOnWelcomePage()
{
    m_welcomeRecent = m_recent->shown();
    m_parts.browser.view()->page()->runJavaScript(recentListScript(m_welcomeRecent),
                                                  QWebEngineScript::ApplicationWorld);
}

void FindingAids::showSelectionInFileManager()
{
    QStringList paths;
    for (const FileListItem& item : m_parts.list.selectedItems())
        paths.append(item.path());
    if (paths.isEmpty() && !m_parts.list.folder().isEmpty())
        paths.append(m_parts.list.folder());
    if (paths.isEmpty() || FileManager().showItems(paths))
        return;
    Messages::show(
        {tr("No file manager could be started to show:\n\n%1").arg(QDir::toNativeSeparators(paths.first())),
         tr("Show in File Manager"), MessageIcon::Warning, MessageButton::Ok, MessageButton::Ok,
         &m_parts.owner});
}

} // namespace nebra
