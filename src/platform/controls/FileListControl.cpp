#include "FileListControl.h"

#include "FileItemDelegate.h"
#include "FileListFilterBox.h"
#include "FileListView.h"

#include "FileListModel.h"
#include "FolderReaders.h"
#include "FolderWatch.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QStyle>
#include <QTimer>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>

#include <cstring>
#include <utility>

namespace nebra {

namespace {

constexpr int RefreshDelayMs = 250;

} // namespace

FileListControl::FileListControl(QWidget* parent)
    : QWidget(parent), m_model(new FileListModel(this)), m_view(new FileListView(m_model, this)),
      m_filterBox(new FileListFilterBox(this)), m_state(new QLabel(this)), m_readers(new FolderReaders(this)),
      m_watch(new FolderWatch(*m_readers, this)), m_refreshTimer(new QTimer(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_filterBox);
    layout->addWidget(m_state);
    layout->addWidget(m_view, 1);
    m_state->setWordWrap(true);
    m_state->setAccessibleName(QStringLiteral("File list state"));
    m_state->hide();
    m_filterBox->hide();

    setUpView();
    connectEvents();
    setAccessibleName(QStringLiteral("File list pane"));
    setFocusProxy(m_view);
}

void FileListControl::connectEvents()
{
    QHeaderView* header = m_view->header();
    connect(header, &QHeaderView::sectionClicked, this, &FileListControl::onHeaderClicked);
    connect(header, &QWidget::customContextMenuRequested, this, &FileListControl::showHeaderMenu);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &FileListControl::onSelectionChanged);
    connect(m_view, &QAbstractItemView::activated, this,
            [this](const QModelIndex& index) { activateItem(itemAtRow(index.row())); });
    connect(m_model, &FileListModel::renameRequested, this, [this](int row, const QString& name) {
        // The editor is still closing: rename once it has gone.
        const FileListItem target = itemAtRow(row);
        QTimer::singleShot(0, this, [this, target, name] { renameItem(target, name); });
    });

    auto* deleteAction = new QAction(tr("Delete"), m_view);
    deleteAction->setShortcut(QKeySequence::Delete);
    deleteAction->setShortcutContext(Qt::WidgetShortcut);
    connect(deleteAction, &QAction::triggered, this, &FileListControl::deleteSelectedItems);
    m_view->addAction(deleteAction);

    connect(m_filterBox, &QLineEdit::textChanged, this, &FileListControl::applyNameFilter);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_view, &QWidget::customContextMenuRequested, this, &FileListControl::showContextMenu);

    m_refreshTimer->setSingleShot(true);
    m_refreshTimer->setInterval(RefreshDelayMs);
    connect(m_watch, &FolderWatch::changed, m_refreshTimer, qOverload<>(&QTimer::start));
    connect(m_refreshTimer, &QTimer::timeout, this, &FileListControl::refresh);
}

void FileListControl::setUpView()
{
    m_view->beforeUserSelection = [this](const QModelIndex& index) {
        if (!m_quiet)
            Q_EMIT beforeSelectionChange(index.isValid() ? itemAtRow(index.row()) : FileListItem());
    };
}

FileListControl::~FileListControl() = default;

QTreeView* FileListControl::view() const
{
    return m_view;
}

void FileListControl::setFolder(const QString& path)
{
    m_folder = path;
    if (!m_filterBox->text().isEmpty()) {
        // A filter typed for one folder would hide another's documents. The
        // listing follows anyway, so the model need not filter now.
        const QSignalBlocker quiet(m_filterBox);
        m_filterBox->clear();
        m_model->setNameFilter(QString());
    }
    m_watch->clear(); // watched again with the listing
    markDirty();
}

void FileListControl::setFilter(const QString& pattern)
{
    m_filter = pattern;
    markDirty();
}

// The listing is asked for once the current turn of the event loop is over,
// so that a new folder and a new filter set one after the other cost one.
void FileListControl::markDirty()
{
    m_dirty = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_dirty)
                list(false);
        },
        Qt::QueuedConnection);
}

QString FileListControl::waitingText(const QString& folder)
{
    return tr("Waiting for the folder %1 to answer...").arg(QDir::toNativeSeparators(folder));
}

// A listing still on its way is superseded: only the newest one is shown,
// so no listing is shown twice or out of order.
void FileListControl::list(bool keepSelection)
{
    m_dirty = false;
    m_refreshTimer->stop();
    if (m_pendingRead != 0)
        m_readers->cancel(std::exchange(m_pendingRead, 0));
    const QString folder = m_folder;
    const QString filter = m_filter;
    if (folder.isEmpty()) {
        showListing(folder, {}, false); // nothing to list
        return;
    }
    // The watch is added on the same reader just before the listing, so a
    // change the listing misses is reported.
    m_watch->watch(folder);
    m_pendingRead = m_readers->read(
        folder, FolderReaders::Lane::User, this,
        [folder, filter] { return FileListModel::read(folder, filter, false); },
        [this, folder, keepSelection](FileListModel::Listing listing) {
            m_pendingRead = 0;
            showListing(folder, std::move(listing), keepSelection);
        },
        [this, folder] { showWaiting(folder); });
}

void FileListControl::showListing(const QString& folder, FileListModel::Listing listing, bool keepSelection)
{
    const QHash<QString, bool> before = m_model->allEntries(); // name -> folder
    const QSet<QString> selected = selectedNames();
    const FileListItem current = currentItem();
    m_quiet = true;
    m_model->load(folder, std::move(listing));
    m_quiet = false;
    applyColumnVisibility();
    showListingState();
    if (m_filterBox->isVisibleTo(this)) // ready before the user can type
        QTimer::singleShot(0, m_model, &FileListModel::prepareNameFilter);
    if (keepSelection) {
        reselect(selected, current.isValid() ? QFileInfo(current.path()).fileName() : QString());
        reportChanges(before, folder);
        if (selectedNames() != selected)
            onSelectionChanged();
    }
    readComments();
    Q_EMIT listed();
}

// Rows of a folder that does not answer may be long gone: none is shown
// until it answers.
void FileListControl::showWaiting(const QString& folder)
{
    if (folder != m_folder)
        return;
    m_quiet = true;
    m_model->load(folder, FileListModel::Listing{});
    m_quiet = false;
    m_state->setText(waitingText(folder));
    m_state->show();
    Q_EMIT waiting(folder);
}

void FileListControl::refresh()
{
    if (m_view->isEditing()) {
        m_refreshTimer->start(); // a new listing would take the name being typed away
        return;
    }
    if (m_dirty || m_folder.isEmpty())
        return; // a listing of the new folder is on its way
    // Until the folder's first listing arrives there is no selection to keep.
    list(m_model->folder() == m_folder);
}

// Entries the name filter hides still count: the folder tree follows them too.
void FileListControl::reportChanges(const QHash<QString, bool>& before, const QString& oldFolder)
{
    const QHash<QString, bool> after = m_model->allEntries();
    const auto unlisted = [this](const QString& folder, const QString& name, bool isFolder) {
        return FileListItem(this, 0, -1, name, folder + QLatin1Char('/') + name, isFolder);
    };
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        if (!after.contains(it.key()))
            Q_EMIT itemRemoved(unlisted(oldFolder, it.key(), it.value()));
    QSet<QString> shown;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        shown.insert(m_model->fileName(row));
        if (!before.contains(m_model->fileName(row)))
            Q_EMIT itemAdded(itemAtRow(row));
    }
    for (auto it = after.cbegin(); it != after.cend(); ++it)
        if (!before.contains(it.key()) && !shown.contains(it.key()))
            Q_EMIT itemAdded(unlisted(m_folder, it.key(), it.value()));
}

QSet<QString> FileListControl::selectedNames() const
{
    QSet<QString> names;
    for (const FileListItem& item : selectedItems())
        names.insert(QFileInfo(item.path()).fileName());
    return names;
}

// After a new listing: the same names selected and current as before, quietly.
void FileListControl::reselect(const QSet<QString>& names, const QString& currentName)
{
    m_quiet = true;
    QItemSelectionModel* selection = m_view->selectionModel();
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QString name = m_model->fileName(row);
        if (names.contains(name))
            selection->select(m_model->index(row, 0),
                              QItemSelectionModel::Select | QItemSelectionModel::Rows);
        if (name == currentName)
            selection->setCurrentIndex(m_model->index(row, 0), QItemSelectionModel::NoUpdate);
    }
    m_quiet = false;
}

int FileListControl::listingError() const
{
    return m_model->error();
}

// An empty list says why it is empty, so that it is not taken for a
// listing still on its way or a fault.
void FileListControl::showListingState()
{
    QString text;
    if (m_folder.isEmpty())
        text.clear();
    else if (m_model->error() != 0)
        text = tr("The folder \"%1\" cannot be read: %2.")
                   .arg(m_folder, QString::fromLocal8Bit(std::strerror(m_model->error())));
    else if (m_model->rowCount() == 0)
        text = m_model->nameFilter().isEmpty() ? tr("No documents in this folder")
                                               : tr("No document matches the filter");
    m_state->setText(text);
    m_state->setVisible(!text.isEmpty());
}

void FileListControl::addColumn(const QString& name, std::function<QVariant(const QString&, int)> source)
{
    m_model->addColumn(name, std::move(source));
    applyColumnVisibility();
    readComments();
}

// The comments are read after the listing, on the background lane, never as
// rows are drawn: a long folder shows its rows first.
void FileListControl::readComments()
{
    const QString folder = m_model->folder();
    if (!m_model->needsComments() || m_model->hasComments() || folder.isEmpty() || m_model->error() != 0)
        return;
    m_readers->read(
        folder, FolderReaders::Lane::Background, this,
        [folder, names = m_model->namesById()] { return FileListModel::readComments(folder, names); },
        [this, generation = m_model->generation()](std::vector<QString> comments) {
            m_model->setComments(generation, std::move(comments));
        });
}

void FileListControl::updateItem(const QString& path)
{
    m_model->updateEntry(path);
}

void FileListControl::setDocumentIcon(const QIcon& icon)
{
    static_cast<FileItemDelegate*>(m_view->itemDelegate())->setDocumentIcon(icon);
    m_view->viewport()->update();
}

QIcon FileListControl::documentIcon() const
{
    return static_cast<FileItemDelegate*>(m_view->itemDelegate())->documentIcon();
}

QStringList FileListControl::columns() const
{
    return m_model->columns();
}

bool FileListControl::isColumnShown(const QString& name) const
{
    return m_model->columnOf(name) >= 0;
}

// Every column not hidden by the user is offered to columnAboutToBeShown().
void FileListControl::applyColumnVisibility()
{
    for (const QString& name : m_model->columns()) {
        bool show = !m_hiddenByUser.contains(name);
        if (show)
            Q_EMIT columnAboutToBeShown(name, show);
        m_model->setColumnShown(name, show);
    }
    m_view->header()->setSortIndicator(m_model->sortColumn(), m_model->sortOrder());
}

bool FileListControl::setColumnShown(const QString& name, bool shown)
{
    if (!m_model->columns().contains(name))
        return false;
    if (shown)
        m_hiddenByUser.remove(name);
    else
        m_hiddenByUser.insert(name);
    applyColumnVisibility();
    readComments();
    return isColumnShown(name);
}

void FileListControl::showHeaderMenu(const QPoint& position)
{
    QMenu menu(this);
    menu.setAccessibleName(QStringLiteral("Columns"));
    for (const QString& name : m_model->columns()) {
        QAction* action = menu.addAction(name);
        action->setCheckable(true);
        action->setChecked(isColumnShown(name));
        connect(action, &QAction::toggled, this, [this, name](bool on) { setColumnShown(name, on); });
    }
    menu.exec(m_view->header()->mapToGlobal(position));
}

void FileListControl::sortByColumn(const QString& name, Qt::SortOrder order)
{
    const int column = m_model->columnOf(name);
    if (column < 0)
        return;
    if (column != m_model->sortColumn() || order != m_model->sortOrder())
        m_model->sort(column, order);
    m_view->header()->setSortIndicator(column, order);
}

QString FileListControl::sortColumn() const
{
    return m_model->sortColumnName();
}

Qt::SortOrder FileListControl::sortOrder() const
{
    return m_model->sortOrder();
}

void FileListControl::onHeaderClicked(int section)
{
    const QString name = m_model->columnName(section);
    if (name.isEmpty())
        return;
    const bool again = section == m_model->sortColumn() && m_model->sortOrder() == Qt::AscendingOrder;
    Q_EMIT columnHeaderClicked(name);
    sortByColumn(name, again ? Qt::DescendingOrder : Qt::AscendingOrder);
}

void FileListControl::clickColumnHeader(const QString& name)
{
    const int column = m_model->columnOf(name);
    if (column >= 0)
        onHeaderClicked(column);
}

int FileListControl::itemCount() const
{
    return m_model->rowCount();
}

FileListItem FileListControl::item(int index) const
{
    return index >= 1 && index <= m_model->rowCount() ? itemAtRow(index - 1) : FileListItem();
}

FileListItem FileListControl::itemAtRow(int row) const
{
    if (row < 0 || row >= m_model->rowCount())
        return {};
    return FileListItem(const_cast<FileListControl*>(this), m_model->generation(), m_model->idAt(row),
                        m_model->displayedName(row), m_model->fullPath(row), m_model->isFolder(row));
}

int FileListControl::rowOf(const FileListItem& item) const
{
    if (item.m_control != this || item.m_generation != m_model->generation())
        return -1;
    return m_model->rowOfId(item.m_id);
}

int FileListControl::selectedCount() const
{
    return int(m_view->selectionModel()->selectedRows().size());
}

QList<FileListItem> FileListControl::selectedItems() const
{
    QModelIndexList rows = m_view->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(),
              [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    QList<FileListItem> items;
    for (const QModelIndex& index : rows)
        items.append(itemAtRow(index.row()));
    return items;
}

FileListItem FileListControl::firstSelectedItem() const
{
    const QList<FileListItem> items = selectedItems();
    return items.isEmpty() ? FileListItem() : items.first();
}

FileListItem FileListControl::currentItem() const
{
    const QModelIndex current = m_view->currentIndex();
    return current.isValid() ? itemAtRow(current.row()) : FileListItem();
}

void FileListControl::onSelectionChanged()
{
    if (m_quiet)
        return;
    const FileListItem current = currentItem();
    Q_EMIT selectionChanged(current.isValid() && isItemSelected(current) ? current : firstSelectedItem());
}

void FileListControl::setShowExtensions(bool show)
{
    m_model->setShowExtensions(show);
}

bool FileListControl::showExtensions() const
{
    return m_model->showExtensions();
}

quint32 FileListControl::colour() const
{
    return m_view->palette().color(QPalette::Text).rgba();
}

bool FileListControl::isItemListed(const FileListItem& item) const
{
    return rowOf(item) >= 0;
}

bool FileListControl::isItemSelected(const FileListItem& item) const
{
    const int row = rowOf(item);
    return row >= 0 && m_view->selectionModel()->isRowSelected(row, {});
}

void FileListControl::setItemSelected(const FileListItem& item, bool selected)
{
    const int row = rowOf(item);
    if (row < 0)
        return;
    const QModelIndex index = m_model->index(row, 0);
    QItemSelectionModel* selection = m_view->selectionModel();
    selection->select(index, (selected ? QItemSelectionModel::Select : QItemSelectionModel::Deselect) |
                                 QItemSelectionModel::Rows);
    if (selected && !selection->currentIndex().isValid())
        selection->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
}

void FileListControl::ensureItemVisible(const FileListItem& item)
{
    const int row = rowOf(item);
    if (row >= 0)
        m_view->scrollTo(m_model->index(row, 0));
}

void FileListControl::activateItem(const FileListItem& item)
{
    if (!isItemListed(item))
        return;
    bool handled = false;
    Q_EMIT itemActivated(item, handled);
    if (handled)
        return;
    if (item.isFolder())
        setFolder(item.path());
    else
        QDesktopServices::openUrl(QUrl::fromLocalFile(item.path()));
}

} // namespace nebra
