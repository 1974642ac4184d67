#include "FolderTreeControl.h"

#include "FocusVisibleDelegate.h"
#include "FolderTreeModel.h"
#include "StyleIcons.h"

#include <QAction>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

namespace nebra {

namespace {

constexpr int HomeStyle = 7;

// Draws a node from the model's display roles: bold caption, caption
// colour and the picture of its display style.
class FolderNodeDelegate : public FocusVisibleDelegate
{
public:
    using FocusVisibleDelegate::FocusVisibleDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        FocusVisibleDelegate::initStyleOption(option, index);
        if (index.data(FolderTreeModel::BoldRole).toBool())
            option->font.setBold(true);
        const quint32 colour = index.data(FolderTreeModel::ColourRole).toUInt();
        if (colour != 0)
            option->palette.setColor(QPalette::Text, QColor::fromRgba(colour));
        const bool home = index.data(FolderTreeModel::StyleRole).toInt() == HomeStyle;
        option->icon = StyleIcons::icon(home ? QStyle::SP_DirHomeIcon : QStyle::SP_DirIcon);
        option->features |= QStyleOptionViewItem::HasDecoration;
    }
};

bool isBlank(const QString& caption)
{
    return caption.trimmed().isEmpty();
}

} // namespace

FolderTreeControl::FolderTreeControl(QWidget* parent)
    : QWidget(parent), m_caption(new QLabel(this)), m_buttonBar(new QToolBar(this)),
      m_view(new QTreeView(this)), m_model(new FolderTreeModel(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(m_caption);
    layout->addWidget(m_buttonBar);
    layout->addWidget(m_view, 1);
    m_caption->setAccessibleName(QStringLiteral("Folder tree caption"));
    m_buttonBar->setAccessibleName(QStringLiteral("Folder tree buttons"));
    m_buttonBar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    // The buttons that do not fit a narrow pane fold into the bar's ">>"
    // menu: the pane is not held wider than the documents beside it.
    m_buttonBar->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_view->setAccessibleName(QStringLiteral("Folder tree"));
    m_view->header()->hide();
    m_view->setUniformRowHeights(true);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setItemDelegate(new FolderNodeDelegate(m_view));
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_view->setModel(m_model);
    setAccessibleName(QStringLiteral("Folder tree pane"));
    setFocusProxy(m_view);

    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &FolderTreeControl::onCurrentChanged);
    connect(m_view, &QTreeView::expanded, this,
            [this](const QModelIndex& i) { m_model->setExpandedByView(i, true); });
    connect(m_view, &QTreeView::collapsed, this,
            [this](const QModelIndex& i) { m_model->setExpandedByView(i, false); });
    connect(m_model, &FolderTreeModel::expansionRequested, m_view, &QTreeView::setExpanded);
    connect(m_model, &FolderTreeModel::updateFinished, this, &FolderTreeControl::applyExpansion);
    connect(m_view, &QWidget::customContextMenuRequested, this, &FolderTreeControl::showContextMenu);
    setDisplayMode(DisplayMode::Compact);
}

FolderTreeControl::~FolderTreeControl() = default;

void FolderTreeControl::setBusy(bool busy)
{
    if (busy == m_busy)
        return;
    m_busy = busy;
    if (busy) {
        m_view->viewport()->setCursor(Qt::BusyCursor);
        return;
    }
    m_view->viewport()->unsetCursor();
    Q_EMIT idle();
}

void FolderTreeControl::setCaption(const QString& caption)
{
    m_caption->setText(caption);
}

QString FolderTreeControl::caption() const
{
    return m_caption->text();
}

void FolderTreeControl::setDisplayMode(DisplayMode mode)
{
    m_displayMode = mode;
    const bool explorer = mode == DisplayMode::Explorer;
    m_view->setRootIsDecorated(explorer);
    m_view->setIndentation(explorer ? 20 : 12);
    m_view->setAlternatingRowColors(explorer);
    m_view->setAccessibleDescription(explorer ? QStringLiteral("Explorer presentation")
                                              : QStringLiteral("Compact presentation"));
}

void FolderTreeControl::addButton(int key, const QString& caption)
{
    auto* button = new QToolButton(m_buttonBar);
    button->setText(caption);
    button->setAccessibleName(isBlank(caption) ? QStringLiteral("Spacer %1").arg(key) : caption);
    button->setAutoRaise(true);
    if (isBlank(caption))
        button->setEnabled(false);
    // The tree's own navigation has the keys a file manager gives it.
    const QKeySequence keys = key == BackButton      ? QKeySequence(QKeySequence::Back)
                              : key == ForwardButton ? QKeySequence(QKeySequence::Forward)
                              : key == UpButton      ? QKeySequence(Qt::ALT | Qt::Key_Up)
                                                     : QKeySequence();
    if (!keys.isEmpty()) {
        // On the pane, not the button: a button folded into the bar's menu takes no keys.
        auto* shortcut = new QAction(caption, this);
        shortcut->setShortcut(keys);
        connect(shortcut, &QAction::triggered, this, [this, key] { clickButton(key); });
        addAction(shortcut);
        button->setToolTip(QStringLiteral("%1 (%2)").arg(caption, keys.toString(QKeySequence::NativeText)));
    }
    connect(button, &QToolButton::clicked, this, [this, key] { onButton(key); });
    m_buttonBar->addWidget(button);
    m_buttons.insert(key, button);
    m_buttonOrder.append(key);
}

void FolderTreeControl::addSeparator(int key)
{
    m_buttonBar->addSeparator();
    m_buttonOrder.append(key);
}

void FolderTreeControl::setButtonEnabled(int key, bool enabled)
{
    if (QToolButton* button = m_buttons.value(key))
        button->setEnabled(enabled);
}

bool FolderTreeControl::isButtonEnabled(int key) const
{
    const QToolButton* button = m_buttons.value(key);
    return button && button->isEnabled();
}

QString FolderTreeControl::buttonCaption(int key) const
{
    const QToolButton* button = m_buttons.value(key);
    return button ? button->text() : QString();
}

void FolderTreeControl::clickButton(int key)
{
    if (QToolButton* button = m_buttons.value(key); button && button->isEnabled())
        button->click();
}

void FolderTreeControl::onButton(int key)
{
    if (key == BackButton)
        goBack();
    else if (key == ForwardButton)
        goForward();
    else if (key == UpButton)
        goUp();
    Q_EMIT buttonClicked(key);
}

int FolderTreeControl::count() const
{
    return m_model->count();
}

FolderNode FolderTreeControl::node(int index) const
{
    return m_model->node(index);
}

FolderNode FolderTreeControl::addNode(const QString& text)
{
    return m_model->addNode(text);
}

FolderNode FolderTreeControl::addNode(const FolderNode& parent, const QString& text)
{
    return m_model->addNode(parent, text);
}

bool FolderTreeControl::removeNode(const FolderNode& node)
{
    return m_model->removeNode(node);
}

void FolderTreeControl::clear()
{
    m_model->clear();
    m_back.clear();
    m_forward.clear();
    updateHistoryButtons();
}

void FolderTreeControl::beginUpdate()
{
    if (!m_model->isUpdating())
        m_currentBeforeUpdate = currentNode();
    m_model->beginUpdate();
}

void FolderTreeControl::endUpdate()
{
    m_model->endUpdate();
}

FolderNode FolderTreeControl::currentNode() const
{
    return m_model->nodeAt(m_view->currentIndex());
}

void FolderTreeControl::setCurrentNode(const FolderNode& node)
{
    const QModelIndex index = m_model->indexOf(node);
    if (!index.isValid())
        return;
    for (QModelIndex up = index.parent(); up.isValid(); up = up.parent())
        m_view->expand(up);
    m_view->setCurrentIndex(index);
    m_view->scrollTo(index);
}

void FolderTreeControl::onCurrentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    const FolderNode node = m_model->nodeAt(current);
    const FolderNode before = m_model->nodeAt(previous);
    if (!m_navigating && before.isValid() && before != node) {
        m_back.append(before);
        m_forward.clear();
    }
    updateHistoryButtons();
    Q_EMIT currentNodeChanged(node, m_navigating ? NavigationChange : SelectedChange);
    if (node.isValid())
        Q_EMIT nodeSelected(node);
}

void FolderTreeControl::navigateTo(const FolderNode& node)
{
    m_navigating = true;
    setCurrentNode(node);
    m_navigating = false;
    updateHistoryButtons();
}

void FolderTreeControl::goBack()
{
    pruneHistory();
    if (m_back.isEmpty())
        return;
    const FolderNode target = m_back.takeLast();
    if (const FolderNode current = currentNode(); current.isValid())
        m_forward.append(current);
    navigateTo(target);
}

void FolderTreeControl::goForward()
{
    pruneHistory();
    if (m_forward.isEmpty())
        return;
    const FolderNode target = m_forward.takeLast();
    if (const FolderNode current = currentNode(); current.isValid())
        m_back.append(current);
    navigateTo(target);
}

void FolderTreeControl::goUp()
{
    const FolderNode current = currentNode();
    const FolderNode parent = current.parent();
    if (!parent.isValid())
        return;
    m_back.append(current);
    m_forward.clear();
    navigateTo(parent);
}

// Nodes removed since they were visited drop out of the history.
void FolderTreeControl::pruneHistory()
{
    auto gone = [](const FolderNode& node) { return !node.isValid(); };
    m_back.removeIf(gone);
    m_forward.removeIf(gone);
}

bool FolderTreeControl::canGoBack() const
{
    return std::any_of(m_back.begin(), m_back.end(), [](const FolderNode& n) { return n.isValid(); });
}

bool FolderTreeControl::canGoForward() const
{
    return std::any_of(m_forward.begin(), m_forward.end(), [](const FolderNode& n) { return n.isValid(); });
}

void FolderTreeControl::updateHistoryButtons()
{
    pruneHistory();
    setButtonEnabled(BackButton, !m_back.isEmpty());
    setButtonEnabled(ForwardButton, !m_forward.isEmpty());
}

// After a bulk update the view knows nothing of the expanded nodes: open
// those whose display flag A is set, and select the first node when none is.
void FolderTreeControl::applyExpansion()
{
    const int total = m_model->count();
    for (int i = 0; i < total; ++i) {
        const FolderNode n = m_model->node(i);
        if (n.displayFlagA())
            m_view->expand(m_model->indexOf(n));
    }
    updateHistoryButtons();
    const FolderNode before = std::exchange(m_currentBeforeUpdate, {});
    if (before.isValid()) {
        // Still the same node: the owner has nothing to hear about.
        const QModelIndex index = m_model->indexOf(before);
        const QSignalBlocker blocker(m_view->selectionModel());
        m_view->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
        m_view->scrollTo(index);
        m_view->viewport()->update();
    } else if (!currentNode().isValid() && m_model->topLevelCount() > 0) {
        setCurrentNode(m_model->topLevelNode(0));
    }
}

void FolderTreeControl::showContextMenu(const QPoint& position)
{
    QMenu menu(this);
    menu.setAccessibleName(QStringLiteral("Folder commands"));
    for (int key : m_buttonOrder) {
        QToolButton* button = m_buttons.value(key);
        if (!button || isBlank(button->text()) || key == BackButton || key == ForwardButton ||
            key == UpButton)
            continue;
        QAction* action = menu.addAction(button->text());
        action->setEnabled(button->isEnabled());
        connect(action, &QAction::triggered, this, [this, key] { onButton(key); });
    }
    if (!menu.isEmpty())
        menu.exec(m_view->viewport()->mapToGlobal(position));
}

} // namespace nebra
