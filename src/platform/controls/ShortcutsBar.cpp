#include "ShortcutsBar.h"

#include "FocusVisibleDelegate.h"

#include <QAbstractButton>
#include <QListWidget>
#include <QToolBox>
#include <QVBoxLayout>

#include <algorithm>

namespace nebra {

namespace {
constexpr int KeyRole = Qt::UserRole + 1;
}

ShortcutsBar::ShortcutsBar(QWidget* parent) : QWidget(parent), m_toolBox(new QToolBox(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_toolBox);
    m_toolBox->setAccessibleName(QStringLiteral("Shortcut groups"));
    setAccessibleName(QStringLiteral("Shortcuts bar"));
}

void ShortcutsBar::setMode(Mode mode)
{
    // Collapsed leaves nothing of the bar; the window keeps its place for it.
    m_mode = mode;
    m_toolBox->setVisible(mode != Mode::Collapsed);
    setMaximumWidth(mode == Mode::Collapsed ? 0 : QWIDGETSIZE_MAX);
}

int ShortcutsBar::addGroup(const QString& caption)
{
    auto* list = new QListWidget(m_toolBox);
    list->setAccessibleName(caption);
    list->setViewMode(QListView::ListMode);
    list->setIconSize(QSize(32, 32));
    list->setItemDelegate(new FocusVisibleDelegate(list));
    connect(list, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { Q_EMIT itemClicked(item->data(KeyRole).toString()); });
    connect(list, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { Q_EMIT itemClicked(item->data(KeyRole).toString()); });
    m_toolBox->addItem(list, caption);
    // The group buttons take no focus of their own: Tab must reach them, or
    // only the open group's items could be reached without a mouse.
    const QList<QAbstractButton*> buttons = m_toolBox->findChildren<QAbstractButton*>();
    buttons.constLast()->setFocusPolicy(Qt::StrongFocus);
    buttons.constLast()->setAccessibleName(caption);
    m_groupButtons.append(buttons.constLast());
    m_groups.append(list);
    return int(m_groups.size()) - 1;
}

int ShortcutsBar::addItem(int group, const QString& caption, const QString& key)
{
    QListWidget* list = m_groups.at(group);
    auto* item = new QListWidgetItem(caption, list);
    item->setData(KeyRole, key);
    item->setData(Qt::AccessibleTextRole, caption);
    return list->count() - 1;
}

int ShortcutsBar::insertItem(int group, int position, const QString& caption, const QString& key)
{
    QListWidget* list = m_groups.at(group);
    position = std::clamp(position, 0, list->count());
    auto* item = new QListWidgetItem(caption);
    item->setData(KeyRole, key);
    item->setData(Qt::AccessibleTextRole, caption);
    list->insertItem(position, item);
    return position;
}

void ShortcutsBar::setItemCaption(int group, int item, const QString& caption)
{
    QListWidgetItem* entry = m_groups.at(group)->item(item);
    entry->setText(caption);
    entry->setData(Qt::AccessibleTextRole, caption);
}

int ShortcutsBar::itemIndex(int group, const QString& key) const
{
    const QListWidget* list = m_groups.at(group);
    for (int i = 0; i < list->count(); ++i)
        if (list->item(i)->data(KeyRole).toString() == key)
            return i;
    return -1;
}

void ShortcutsBar::setItemIcon(int group, int item, const QIcon& icon)
{
    m_groups.at(group)->item(item)->setIcon(icon);
}

QString ShortcutsBar::groupCaption(int group) const
{
    return m_toolBox->itemText(group);
}

QStringList ShortcutsBar::itemCaptions(int group) const
{
    QStringList captions;
    const QListWidget* list = m_groups.at(group);
    for (int i = 0; i < list->count(); ++i)
        captions.append(list->item(i)->text());
    return captions;
}

QString ShortcutsBar::itemKey(int group, int item) const
{
    return m_groups.at(group)->item(item)->data(KeyRole).toString();
}

QList<QWidget*> ShortcutsBar::keyboardStops() const
{
    QList<QWidget*> stops;
    for (int group = 0; group < m_groups.size(); ++group) {
        stops.append(m_groupButtons.at(group));
        if (m_toolBox->currentIndex() == group)
            stops.append(m_groups.at(group));
    }
    return stops;
}

bool ShortcutsBar::itemHasIcon(int group, int item) const
{
    return !m_groups.at(group)->item(item)->icon().isNull();
}

} // namespace nebra
