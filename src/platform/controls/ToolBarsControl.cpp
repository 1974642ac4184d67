#include "ToolBarsControl.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

namespace nebra {

namespace {
QString withoutAccessKey(QString caption)
{
    return caption.remove(QLatin1Char('&'));
}
} // namespace

ToolBarsControl::ToolBarsControl(QMainWindow* window)
    : QObject(window), m_window(window), m_toolBar(new QToolBar(window))
{
    m_toolBar->setObjectName(QStringLiteral("MainToolBar"));
    m_toolBar->setAccessibleName(QStringLiteral("Tool bar"));
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_toolBar->setMovable(false);
    window->addToolBar(m_toolBar);
    window->menuBar()->setAccessibleName(QStringLiteral("Menu bar"));
}

void ToolBarsControl::addTool(const ToolDefinition& tool)
{
    auto* action = new QAction(tool.caption, m_window);
    action->setObjectName(tool.id);
    action->setProperty("category", tool.category);
    if (!tool.tipText.isEmpty())
        action->setToolTip(withoutAccessKey(tool.tipText));
    connect(action, &QAction::triggered, this, [this, id = tool.id] { Q_EMIT toolClick(id); });
    m_actions.insert(tool.id, action);
    m_definitions.insert(tool.id, tool);
    m_order.append(tool.id);
}

void ToolBarsControl::addMenu(const ToolDefinition& menuTool, const QStringList& itemIds)
{
    QMenu* menu = m_window->menuBar()->addMenu(menuTool.caption);
    menu->setObjectName(menuTool.id);
    menu->setAccessibleName(withoutAccessKey(menuTool.caption));
    menu->menuAction()->setProperty("category", menuTool.category);
    // Opening a drop-down is a click on its tool too.
    connect(menu, &QMenu::aboutToShow, this, [this, id = menuTool.id] { Q_EMIT toolClick(id); });
    m_menus.insert(menuTool.id, menu);
    place(menu, itemIds);
}

void ToolBarsControl::addToolBarItems(const QStringList& itemIds)
{
    place(m_toolBar, itemIds);
}

void ToolBarsControl::place(QWidget* container, const QStringList& itemIds)
{
    for (const QString& id : itemIds) {
        if (id == QLatin1String(Separator)) {
            if (auto* menu = qobject_cast<QMenu*>(container))
                menu->addSeparator();
            else
                static_cast<QToolBar*>(container)->addSeparator();
        } else if (QAction* action = m_actions.value(id)) {
            container->addAction(action);
        }
    }
}

void ToolBarsControl::setToolVisible(const QString& id, bool visible)
{
    if (QAction* action = m_actions.value(id))
        action->setVisible(visible);
}

bool ToolBarsControl::isToolVisible(const QString& id) const
{
    const QAction* action = m_actions.value(id);
    return action && action->isVisible();
}

void ToolBarsControl::setToolEnabled(const QString& id, bool enabled)
{
    if (QAction* action = m_actions.value(id))
        action->setEnabled(enabled);
}

bool ToolBarsControl::isToolEnabled(const QString& id) const
{
    const QAction* action = m_actions.value(id);
    return action && action->isEnabled();
}

void ToolBarsControl::setMenuFont(const QFont& font)
{
    m_window->menuBar()->setFont(font);
    for (QMenu* menu : std::as_const(m_menus))
        menu->setFont(font);
}

} // namespace nebra
