// The main window's aids to finding documents: the file list's filter box,
// the recent documents (File > Recent and the welcome page's list) and
// "Show in file manager". Each can be switched off in the settings.

#include "MainWindow.h"

#include "BrowserControl.h"
#include "FileListControl.h"
#include "FileManager.h"
#include "FolderTreeControl.h"
#include "Messages.h"
#include "RecentDocuments.h"
#include "RecentDocumentsMenu.h"
#include "SuiteSettings.h"
#include "ToolBarsControl.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenu>
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

void MainWindow::createFindingAids()
{
    const SuiteSettings& settings = *m_suite.settings;
    m_fileList->setFilterBoxShown(settings.ShowFileListFilter());
    if (settings.ShowInFileManager()) {
        auto* show = new QAction(tr("Show in &file manager"), m_fileList);
        show->setObjectName(QStringLiteral("ShowInFileManager"));
        connect(show, &QAction::triggered, this, &MainWindow::showSelectionInFileManager);
        m_fileList->addContextAction(show);
    }
    if (settings.ShowRecentDocuments())
        createRecentDocuments();
}

void MainWindow::createRecentDocuments()
{
    m_recent = std::make_unique<RecentDocuments>(*m_suite.settings);
    auto* menu = new RecentDocumentsMenu(*m_recent, this);
    connect(menu, &RecentDocumentsMenu::documentChosen, this, [this](const QString& path) {
        resetLogOutTimeOut();
        ShowDocument(path);
    });
    if (QMenu* file = m_toolBars->menu(QStringLiteral("ID_File")))
        file->insertMenu(m_toolBars->action(QStringLiteral("ID_Options")), menu);
    connect(m_browser, &BrowserControl::DocumentComplete, this, [this] {
        if (m_folderTree->currentNode().level() == 0)
            showRecentOnWelcomePage();
    });
}

void MainWindow::showRecentOnWelcomePage()
{
    m_welcomeRecent = m_recent->shown();
    m_browser->view()->page()->runJavaScript(recentListScript(m_welcomeRecent),
                                             QWebEngineScript::ApplicationWorld);
}

void MainWindow::ShowDocument(const QString& path)
{
    const QString folder = QFileInfo(path).absolutePath();
    selectFolder(folder);
    if (QDir::cleanPath(m_folderTree->currentNode().folderPath()).compare(folder, Qt::CaseInsensitive) != 0 ||
        !QFileInfo(path).isFile()) {
        Messages::show(
            {tr("The document cannot be shown: it is no longer in a folder of the Organiser.\n\n%1")
                 .arg(QDir::toNativeSeparators(path)),
             tr("Recent Documents"), MessageIcon::Information, MessageButton::Ok, MessageButton::Ok, this});
        return;
    }
    for (const FileListItem& selected : m_fileList->selectedItems())
        selected.setSelected(false);
    for (int i = 1; i <= m_fileList->itemCount(); ++i) {
        const FileListItem item = m_fileList->item(i);
        if (QDir::cleanPath(item.path()) == QDir::cleanPath(path)) {
            item.ensureVisible();
            item.setSelected(true);
            return;
        }
    }
}

void MainWindow::showSelectionInFileManager()
{
    resetLogOutTimeOut();
    QStringList paths;
    for (const FileListItem& item : m_fileList->selectedItems())
        paths.append(item.path());
    if (paths.isEmpty() && !m_fileList->folder().isEmpty())
        paths.append(m_fileList->folder());
    if (paths.isEmpty() || FileManager().showItems(paths))
        return;
    Messages::show(
        {tr("No file manager could be started to show:\n\n%1").arg(QDir::toNativeSeparators(paths.first())),
         tr("Show in File Manager"), MessageIcon::Warning, MessageButton::Ok, MessageButton::Ok, this});
}

} // namespace nebra
