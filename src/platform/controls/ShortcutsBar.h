#pragma once

#include <QList>
#include <QWidget>

class QToolBox;
class QListWidget;

namespace nebra {

// The shortcuts bar: groups of items, each item leading somewhere (its key).
// Mode Shown (0) shows the bar, Collapsed (2) collapses it.
class ShortcutsBar : public QWidget
{
    Q_OBJECT
public:
    enum class Mode
    {
        Shown = 0,
        Collapsed = 2,
    };

    explicit ShortcutsBar(QWidget* parent = nullptr);

    void setMode(Mode mode);
    Mode mode() const { return m_mode; }

    // Returns the new group's index.
    int addGroup(const QString& caption);
    // Adds an item to a group and returns its index within the group.
    int addItem(int group, const QString& caption, const QString& key);
    // Inserts an item at a position within a group and returns its index.
    int insertItem(int group, int position, const QString& caption, const QString& key);
    void setItemCaption(int group, int item, const QString& caption);
    // Index of the first item of a group with the key, -1 when there is none.
    int itemIndex(int group, const QString& key) const;
    void setItemIcon(int group, int item, const QIcon& icon);

    int groupCount() const { return int(m_groups.size()); }
    QString groupCaption(int group) const;
    QStringList itemCaptions(int group) const;
    QString itemKey(int group, int item) const;
    bool itemHasIcon(int group, int item) const;

Q_SIGNALS:
    void itemClicked(const QString& key);

private:
    QToolBox* m_toolBox;
    QList<QListWidget*> m_groups;
    Mode m_mode = Mode::Shown;
};

} // namespace nebra
