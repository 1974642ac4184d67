#include "HelpWindow.h"

#include "HelpBrowser.h"
#include "HelpCollection.h"
#include "HelpTopics.h"
#include "SuiteSettings.h"

#include <QAction>
#include <QHelpContentWidget>
#include <QHelpEngine>
#include <QHelpIndexWidget>
#include <QHelpLink>
#include <QHelpSearchEngine>
#include <QHelpSearchQueryWidget>
#include <QHelpSearchResultWidget>
#include <QLineEdit>
#include <QSplitter>
#include <QTabWidget>
#include <QToolBar>
#include <QVBoxLayout>
#include <algorithm>

namespace nebra {

namespace {

constexpr int kMaxTextSteps = 8;

} // namespace

HelpWindow::HelpWindow(std::unique_ptr<QHelpEngine> engine, SuiteSettings* settings, QWidget* parent)
    : QWidget(parent, Qt::Window), m_engine(std::move(engine)), m_settings(settings)
{
    setWindowTitle(QStringLiteral("Organiser Help"));
    setAccessibleName(QStringLiteral("Organiser Help"));
    m_browser = new HelpBrowser(*m_engine, this);
    m_navigation = new QTabWidget(this);
    m_navigation->setAccessibleName(QStringLiteral("Help navigation"));
    m_navigation->addTab(createContentsPane(), QStringLiteral("&Contents"));
    m_navigation->addTab(createIndexPane(), QStringLiteral("&Index"));
    m_navigation->addTab(createSearchPane(), QStringLiteral("&Search"));
    createToolBar();

    auto* splitter = new QSplitter(this);
    splitter->addWidget(m_navigation);
    splitter->addWidget(m_browser);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({260, 640});
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_toolBar);
    layout->addWidget(splitter);
    connect(m_browser, &QTextBrowser::sourceChanged, this, &HelpWindow::followContents);
    restoreSettings();
}

// The engine's widgets live in this window's layout; they go before the engine
// whose models they show.
HelpWindow::~HelpWindow()
{
    delete m_navigation;
    delete m_browser;
}

HelpSystem::ViewerFactory HelpWindow::factory(SuiteSettings* settings)
{
    return [settings](const QString& helpFile, QString& error) -> std::unique_ptr<HelpViewer> {
        std::unique_ptr<QHelpEngine> engine = HelpCollection::open(helpFile, error);
        if (!engine)
            return nullptr;
        return std::make_unique<HelpWindow>(std::move(engine), settings);
    };
}

void HelpWindow::createToolBar()
{
    m_toolBar = new QToolBar(this);
    m_toolBar->setAccessibleName(QStringLiteral("Help tools"));
    QAction* back = m_toolBar->addAction(QStringLiteral("Back"), m_browser, &QTextBrowser::backward);
    back->setShortcut(QKeySequence::Back);
    back->setEnabled(false);
    connect(m_browser, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
    QAction* forward = m_toolBar->addAction(QStringLiteral("Forward"), m_browser, &QTextBrowser::forward);
    forward->setShortcut(QKeySequence::Forward);
    forward->setEnabled(false);
    connect(m_browser, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
    m_toolBar->addAction(QStringLiteral("Contents"), this,
                         [this] { showContents(HelpTopics::contentsUrl()); });
    m_toolBar->addSeparator();
    QAction* larger =
        m_toolBar->addAction(QStringLiteral("Larger Text"), this, [this] { changeTextSize(1); });
    larger->setShortcuts({QKeySequence::ZoomIn, QKeySequence(Qt::CTRL | Qt::Key_Equal)});
    QAction* smaller =
        m_toolBar->addAction(QStringLiteral("Smaller Text"), this, [this] { changeTextSize(-1); });
    smaller->setShortcut(QKeySequence::ZoomOut);
    for (QAction* action : m_toolBar->actions())
        action->setToolTip(action->text() + (action->shortcut().isEmpty()
                                                 ? QString()
                                                 : QStringLiteral(" (%1)").arg(action->shortcut().toString(
                                                       QKeySequence::NativeText))));
}

QWidget* HelpWindow::createContentsPane()
{
    QHelpContentWidget* contents = m_engine->contentWidget();
    contents->setAccessibleName(QStringLiteral("Help contents"));
    connect(contents, &QHelpContentWidget::linkActivated, this, &HelpWindow::display);
    connect(m_engine->contentModel(), &QHelpContentModel::contentsCreated, this,
            [this] { followContents(m_browser->source()); });
    return contents;
}

QWidget* HelpWindow::createIndexPane()
{
    auto* pane = new QWidget(this);
    m_indexFilter = new QLineEdit(pane);
    m_indexFilter->setObjectName(QStringLiteral("indexFilter"));
    m_indexFilter->setAccessibleName(QStringLiteral("Look for keyword"));
    m_indexFilter->setPlaceholderText(QStringLiteral("Type a keyword"));
    QHelpIndexWidget* index = m_engine->indexWidget();
    index->setAccessibleName(QStringLiteral("Help index"));
    connect(m_indexFilter, &QLineEdit::textChanged, index,
            [index](const QString& text) { index->filterIndices(text); });
    connect(m_indexFilter, &QLineEdit::returnPressed, index, &QHelpIndexWidget::activateCurrentItem);
    connect(index, &QHelpIndexWidget::documentActivated, this,
            [this](const QHelpLink& document) { display(document.url); });
    // A keyword on several pages: the first one; the contents tell the others.
    connect(index, &QHelpIndexWidget::documentsActivated, this, [this](const QList<QHelpLink>& documents) {
        if (!documents.isEmpty())
            display(documents.first().url);
    });
    auto* layout = new QVBoxLayout(pane);
    layout->addWidget(m_indexFilter);
    layout->addWidget(index);
    return pane;
}

QWidget* HelpWindow::createSearchPane()
{
    QHelpSearchEngine* searchEngine = m_engine->searchEngine();
    auto* pane = new QWidget(this);
    QHelpSearchQueryWidget* query = searchEngine->queryWidget();
    query->setAccessibleName(QStringLiteral("Search words"));
    QHelpSearchResultWidget* results = searchEngine->resultWidget();
    results->setAccessibleName(QStringLiteral("Search results"));
    connect(query, &QHelpSearchQueryWidget::search, searchEngine,
            [searchEngine, query] { searchEngine->search(query->searchInput()); });
    connect(results, &QHelpSearchResultWidget::requestShowLink, this, &HelpWindow::display);
    // The index is built once in the background and then only checked.
    connect(searchEngine, &QHelpSearchEngine::indexingStarted, query, [query] { query->setEnabled(false); });
    connect(searchEngine, &QHelpSearchEngine::indexingFinished, query, [query] { query->setEnabled(true); });
    searchEngine->scheduleIndexDocumentation();
    auto* layout = new QVBoxLayout(pane);
    layout->addWidget(query);
    layout->addWidget(results, 1);
    return pane;
}

bool HelpWindow::showContents(const QUrl& page)
{
    if (!display(page))
        return false;
    m_navigation->setCurrentIndex(ContentsPane);
    return true;
}

bool HelpWindow::showPage(const QUrl& page)
{
    return display(page);
}

// Shows the page and brings the window forward; an unknown page leaves the
// window as it was.
bool HelpWindow::display(const QUrl& page)
{
    if (!m_browser->hasPage(page))
        return false;
    if (m_browser->source() != page)
        m_browser->setSource(page);
    if (isMinimized())
        showNormal();
    show();
    raise();
    activateWindow();
    return true;
}

void HelpWindow::search(const QString& words)
{
    m_navigation->setCurrentIndex(SearchPane);
    QHelpSearchQueryWidget* query = m_engine->searchEngine()->queryWidget();
    query->setSearchInput(words);
    m_engine->searchEngine()->search(words);
}

// Keeps the contents pane on the page shown, however it was reached.
void HelpWindow::followContents(const QUrl& page)
{
    QHelpContentWidget* contents = m_engine->contentWidget();
    const QModelIndex item = contents->indexOf(page.adjusted(QUrl::RemoveFragment));
    if (item.isValid())
        contents->setCurrentIndex(item);
}

void HelpWindow::changeTextSize(int steps)
{
    const int wanted = std::clamp(m_textSteps + steps, -kMaxTextSteps, kMaxTextSteps);
    if (wanted > m_textSteps)
        m_browser->zoomIn(wanted - m_textSteps);
    else if (wanted < m_textSteps)
        m_browser->zoomOut(m_textSteps - wanted);
    m_textSteps = wanted;
}

void HelpWindow::hideEvent(QHideEvent* event)
{
    saveSettings();
    QWidget::hideEvent(event);
}

void HelpWindow::restoreSettings()
{
    resize(960, 680);
    if (!m_settings)
        return;
    restoreGeometry(m_settings->HelpWindowGeometry());
    changeTextSize(m_settings->HelpTextSize());
}

void HelpWindow::saveSettings()
{
    if (!m_settings)
        return;
    m_settings->SetHelpWindowGeometry(saveGeometry());
    m_settings->SetHelpTextSize(m_textSteps);
}

} // namespace nebra
