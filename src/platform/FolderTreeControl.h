#pragma once

#include <QMap>
#include <QWidget>

class QLabel;
class QToolBar;
class QToolButton;
class QTreeWidget;

namespace nebra {

// The folder tree pane: a caption, the pane's own button bar (buttons keyed
// by number) and the tree of folders. Display mode 1 is the compact tree,
// mode 2 the explorer presentation.
class FolderTreeControl : public QWidget
{
    Q_OBJECT
public:
    explicit FolderTreeControl(QWidget* parent = nullptr);

    void setCaption(const QString& caption);
    QString caption() const;

    void setDisplayMode(int mode);
    int displayMode() const { return m_displayMode; }

    // Adds a button with the key and caption; a caption of one blank is a spacer.
    void addButton(int key, const QString& caption);
    // A separator is listed in buttonKeys() under its own key.
    void addSeparator(int key);
    void setButtonEnabled(int key, bool enabled);
    bool isButtonEnabled(int key) const;
    QList<int> buttonKeys() const { return m_buttonOrder; }
    QString buttonCaption(int key) const;

Q_SIGNALS:
    void buttonClicked(int key);

private:
    QLabel* m_caption;
    QToolBar* m_buttonBar;
    QTreeWidget* m_tree;
    QMap<int, QToolButton*> m_buttons;
    QList<int> m_buttonOrder;
    int m_displayMode = 1;
};

} // namespace nebra
