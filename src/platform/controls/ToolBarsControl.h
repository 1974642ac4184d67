#pragma once

#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>

class QAction;
class QFont;
class QMainWindow;
class QMenu;
class QToolBar;

namespace nebra {

// One tool: a command that menus and the tool bar show. The caption marks its
// access key with "&".
struct ToolDefinition
{
    QString id;
    QString caption;
    QString category;
    QString tipText;
};

// The menu bar and tool bar of a main window as one control: tools are
// defined once by string ID, placed in menus and on the tool bar, and every
// click arrives as toolClick(id).
class ToolBarsControl : public QObject
{
    Q_OBJECT
public:
    static constexpr const char* Separator = "-";

    explicit ToolBarsControl(QMainWindow* window);

    void addTool(const ToolDefinition& tool);
    // A drop-down menu on the menu bar; Separator in itemIds draws a separator.
    void addMenu(const ToolDefinition& menu, const QStringList& itemIds);
    void addToolBarItems(const QStringList& itemIds);

    QStringList toolIds() const { return m_order; }
    ToolDefinition tool(const QString& id) const { return m_definitions.value(id); }
    QAction* action(const QString& id) const { return m_actions.value(id); }
    QMenu* menu(const QString& id) const { return m_menus.value(id); }
    QToolBar* toolBar() const { return m_toolBar; }

    void setToolVisible(const QString& id, bool visible);
    bool isToolVisible(const QString& id) const;
    void setToolEnabled(const QString& id, bool enabled);
    bool isToolEnabled(const QString& id) const;

    void setMenuFont(const QFont& font);

Q_SIGNALS:
    void toolClick(const QString& id);

private:
    void place(QWidget* container, const QStringList& itemIds);

    QMainWindow* m_window;
    QToolBar* m_toolBar;
    QHash<QString, QAction*> m_actions;
    QHash<QString, ToolDefinition> m_definitions;
    QHash<QString, QMenu*> m_menus;
    QStringList m_order;
};

} // namespace nebra
