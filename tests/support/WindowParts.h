#pragma once

#include "CommandId.h"
#include "Controls.h"
#include "DocumentType.h"
#include "FolderNode.h"
#include "FolderTreeControl.h"
#include "ToolDefinitions.h"

#include <QAction>
#include <QApplication>
#include <QObject>
#include <QWidget>

namespace nebra::test {

// The part of the type in the window's object tree (a control, or a
// subsystem object the window made); a window without it ends the test
// program, as every later step would fail on it.
template <typename T> T& part(const QObject& window)
{
    T* found = window.findChild<T*>();
    if (!found)
        qFatal("No %s in %s", T::staticMetaObject.className(), qPrintable(window.objectName()));
    return *found;
}

// The tree's branch of a document type: the root for None, otherwise the
// root's child whose Data is the type; invalid when there is none.
inline FolderNode branch(const FolderTreeControl& tree, DocumentType type)
{
    const FolderNode root = tree.node(0);
    if (type == DocumentType::None)
        return root;
    for (int i = 0; i < root.childCount(); ++i)
        if (root.child(i).data() == toData(type))
            return root.child(i);
    return {};
}

inline FolderNode branch(const QObject& window, DocumentType type)
{
    return branch(part<FolderTreeControl>(window), type);
}

// The menu and tool-bar action of a command.
inline QAction& tool(const QObject& window, CommandId command)
{
    return *control<QAction>(window, qPrintable(ToolDefinitions::toolId(command)));
}

// The container of the panes, which the resize rule places.
inline QWidget& panes(const QObject& window)
{
    return *control<QWidget>(window, "panes");
}

// The shown top-level window of the type (the help, the audit trail viewer), if any.
template <typename T> T* shownWindow()
{
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<T*>(window); found && found->isVisible())
            return found;
    return nullptr;
}

// The key of the tree's button for a command.
inline int treeButton(CommandId command)
{
    return ToolDefinitions::command(command).treeButton;
}

} // namespace nebra::test
