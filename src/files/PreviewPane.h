#pragma once

#include "DocumentType.h"
#include "FolderNode.h"

#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>

namespace nebra {

class BrowserControl;
class FolderReaders;
class PlateLayoutViewer;
class SuitePaths;

// The file-list item a preview is asked for: its full path and whether it is a folder.
struct PreviewItem
{
    QString path;
    bool isFolder = false;
};

// The preview pane beside the file list. The browser shows an HTML preview of
// read configurations, protocols and results (and the welcome page); the
// plate layout viewer, which lies over the browser when shown, draws layouts.
//
// The current page is the address last sent to the browser ("about:blank"
// after clearing); asking for it again refreshes instead of navigating. The
// selected tree node keeps the page last shown for it, through a hook.
// Whether a document's preview page exists and is up to date, and a layout,
// are read on a reader thread (FolderReaders); the page or the layout follows
// when the answer arrives, unless another preview was asked for meanwhile.
// A layout not read within two seconds shows that its folder is waited for.
// Waits for the browser are bounded local event loops, so a page that never
// completes cannot hang the Organiser, and other events run meanwhile.
class PreviewPane : public QObject
{
    Q_OBJECT
public:
    struct Hooks
    {
        // The document type of the tree's selected node. Empty: None.
        std::function<DocumentType()> documentType;
        // Stores an address as the selected node's page. Empty: not stored.
        std::function<void(const QString& address)> setNodePage;
    };

    static constexpr const char* BlankPage = "about:blank";

    PreviewPane(BrowserControl& browser, PlateLayoutViewer& viewer, const SuitePaths& paths, Hooks hooks,
                QObject* parent = nullptr);

    // Shows the preview of the item (nothing for a null item): a folder
    // clears the pane; otherwise what the document type table says for the
    // selected node's type: a preview page (read configurations, protocols,
    // results) when it exists and is not out of date, otherwise the
    // preview-not-available page; a layout drawn by the plate layout viewer,
    // the browser left as it is; nothing (reports).
    void ShowPreview(const PreviewItem* item);

    // Points the browser at an address (a local file path or a URL) and
    // brings the browser to the front. The same address as the current page
    // is refreshed instead. With waiting on, returns once the page is complete
    // (or the wait limit has passed) after one more refresh.
    void ShowPage(const QString& address);

    // Blank page, stored in the selected node too; hides the plate layout viewer.
    void ClearPreview(bool waitUntilLoaded);
    // The tree's current node changed: the root shows its page (the welcome page).
    void ShowRootPage(const FolderNode& node);

    QString CurrentPage() const { return m_currentPage; }
    // The preview-not-available page: "pna.htm" in the suite's data folder.
    QString PreviewNotAvailablePage() const;

    // Whether ShowPage waits until the page is complete (off by default).
    void setWaitUntilLoaded(bool wait) { m_wait = wait; }
    bool waitUntilLoaded() const { return m_wait; }
    void setWaitLimitMs(int limitMs) { m_waitLimitMs = limitMs; }

    // A local file path becomes a file URL; anything else is taken as a URL.
    static QUrl addressToUrl(const QString& address);

private:
    void showDocumentPage(const QString& documentPath);
    void showLayout(const QString& layoutPath);
    void cancelPageRead();

    BrowserControl& m_browser;
    PlateLayoutViewer& m_viewer;
    const SuitePaths& m_paths;
    Hooks m_hooks;
    QString m_currentPage;
    bool m_wait = false;
    int m_waitLimitMs;
    FolderReaders* m_readers;
    quint64 m_pageRead = 0; // the read that decides the page of a document
};

} // namespace nebra
