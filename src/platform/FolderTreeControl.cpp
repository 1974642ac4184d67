#include "FolderTreeControl.h"

#include <QHeaderView>
#include <QLabel>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace nebra {

FolderTreeControl::FolderTreeControl(QWidget* parent)
    : QWidget(parent), m_caption(new QLabel(this)), m_buttonBar(new QToolBar(this)), m_tree(new QTreeWidget(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(m_caption);
    layout->addWidget(m_buttonBar);
    layout->addWidget(m_tree, 1);
    m_caption->setAccessibleName(QStringLiteral("Folder tree caption"));
    m_buttonBar->setAccessibleName(QStringLiteral("Folder tree buttons"));
    m_buttonBar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_tree->setAccessibleName(QStringLiteral("Folder tree"));
    m_tree->header()->hide();
    setAccessibleName(QStringLiteral("Folder tree pane"));
    setDisplayMode(1);
}

void FolderTreeControl::setCaption(const QString& caption)
{
    m_caption->setText(caption);
}

QString FolderTreeControl::caption() const
{
    return m_caption->text();
}

void FolderTreeControl::setDisplayMode(int mode)
{
    m_displayMode = mode;
    // Mode 2 shows the explorer presentation: root decorations and lines
    // between nodes; mode 1 is the compact list-like tree.
    m_tree->setRootIsDecorated(mode == 2);
    m_tree->setIndentation(mode == 2 ? 20 : 12);
    m_tree->setAlternatingRowColors(mode == 2);
}

void FolderTreeControl::addButton(int key, const QString& caption)
{
    auto* button = new QToolButton(m_buttonBar);
    button->setText(caption);
    button->setAccessibleName(caption.trimmed().isEmpty() ? QStringLiteral("Spacer %1").arg(key) : caption);
    button->setAutoRaise(true);
    if (caption.trimmed().isEmpty())
        button->setEnabled(false);
    connect(button, &QToolButton::clicked, this, [this, key] { Q_EMIT buttonClicked(key); });
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

} // namespace nebra
