#include "ShortcutsBar.h"

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
    connect(list, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { Q_EMIT itemClicked(item->data(KeyRole).toString()); });
    connect(list, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { Q_EMIT itemClicked(item->data(KeyRole).toString()); });
    m_toolBox->addItem(list, caption);
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

bool ShortcutsBar::itemHasIcon(int group, int item) const
{
    return !m_groups.at(group)->item(item)->icon().isNull();
}

} // namespace nebra
