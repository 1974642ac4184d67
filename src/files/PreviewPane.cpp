#include "PreviewPane.h"

#include "BrowserControl.h"
#include "DocumentTypes.h"
#include "FileListControl.h"
#include "FolderReaders.h"
#include "PlateLayoutViewer.h"
#include "PreviewAge.h"
#include "SuitePaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <utility>

namespace nebra {

PreviewPane::PreviewPane(BrowserControl& browser, PlateLayoutViewer& viewer, const SuitePaths& paths,
                         Hooks hooks, QObject* parent)
    : QObject(parent), m_browser(browser), m_viewer(viewer), m_paths(paths), m_hooks(std::move(hooks)),
      m_waitLimitMs(BrowserControl::DefaultWaitLimitMs), m_readers(new FolderReaders(this))
{
}

QString PreviewPane::PreviewNotAvailablePage() const
{
    return m_paths.SuiteDataFolder() + QStringLiteral("/pna.htm");
}

QUrl PreviewPane::addressToUrl(const QString& address)
{
    if (QDir::isAbsolutePath(address))
        return QUrl::fromLocalFile(address);
    return QUrl(address);
}

void PreviewPane::ShowPreview(const PreviewItem* item)
{
    if (!item)
        return;
    cancelPageRead();
    if (item->isFolder) {
        ClearPreview(m_wait);
        return;
    }
    const DocumentType type = m_hooks.documentType ? m_hooks.documentType() : DocumentType::None;
    switch (DocumentTypes::of(type).preview) {
    case PreviewKind::Page:
        showDocumentPage(item->path);
        break;
    case PreviewKind::Layout:
        showLayout(item->path);
        break;
    case PreviewKind::None:
        // Reports are deliberately not previewed; the pane keeps what it shows.
        break;
    }
}

void PreviewPane::showDocumentPage(const QString& documentPath)
{
    struct Decision
    {
        bool usable = false;
        QString failure;
    };
    const QString preview = m_paths.PreviewFileFor(documentPath);
    cancelPageRead();
    m_pageRead = m_readers->read(
        documentPath, FolderReaders::Lane::User, this,
        [documentPath, preview] {
            Decision decision;
            if (QFileInfo::exists(preview))
                decision.usable =
                    ComparePreviewAge(documentPath, preview, &decision.failure) == PreviewUsable;
            return decision;
        },
        [this, preview](const Decision& decision) {
            m_pageRead = 0;
            if (!decision.failure.isEmpty())
                qInfo("%s", qPrintable(decision.failure));
            ShowPage(decision.usable ? preview : PreviewNotAvailablePage());
        },
        [this] { ClearPreview(false); });
}

void PreviewPane::cancelPageRead()
{
    if (m_pageRead != 0)
        m_readers->cancel(std::exchange(m_pageRead, 0));
}

// The layout is read on a reader thread; until it arrives the viewer shows
// nothing of the layout before, and after two seconds that the folder is
// waited for. An unreadable layout is the viewer's notice, never an error here.
void PreviewPane::showLayout(const QString& layoutPath)
{
    struct Read
    {
        std::optional<PlateLayout> layout;
        QString error;
    };
    const auto show = [this] {
        if (m_viewer.isHidden()) {
            m_viewer.show();
            m_viewer.raise();
        }
    };
    m_viewer.clear();
    m_pageRead = m_readers->read(
        layoutPath, FolderReaders::Lane::User, this,
        [layoutPath] {
            Read read;
            read.layout = PlateLayout::Load(layoutPath, read.error);
            return read;
        },
        [this, show](const Read& read) {
            m_pageRead = 0;
            if (read.layout)
                m_viewer.setPlateLayout(*read.layout);
            else
                m_viewer.showError(read.error);
            show();
        },
        [this, show, layoutPath] {
            m_viewer.showMessage(FileListControl::waitingText(QFileInfo(layoutPath).path()));
            show();
        });
}

void PreviewPane::ShowPage(const QString& address)
{
    cancelPageRead();
    // A page is shown in the browser, so the viewer lying over it steps aside.
    m_viewer.hide();
    if (address != m_currentPage) {
        if (m_hooks.setNodePage)
            m_hooks.setNodePage(address);
        m_browser.Navigate(addressToUrl(address));
        m_currentPage = address;
    } else {
        m_browser.Refresh();
        QCoreApplication::processEvents();
    }
    if (m_wait) {
        m_browser.WaitUntilComplete(m_waitLimitMs);
        m_browser.Refresh();
        QCoreApplication::processEvents();
    }
}

void PreviewPane::ShowRootPage(const FolderNode& node)
{
    if (node.level() == 0 && !node.page().isEmpty())
        ShowPage(node.page());
}

void PreviewPane::ClearPreview(bool waitUntilLoaded)
{
    const QString blank = QLatin1String(BlankPage);
    cancelPageRead();
    if (m_hooks.setNodePage)
        m_hooks.setNodePage(blank);
    m_browser.Navigate(QUrl(blank));
    m_currentPage = blank;
    if (waitUntilLoaded)
        m_browser.WaitUntilComplete(m_waitLimitMs);
    m_viewer.hide();
}

} // namespace nebra
