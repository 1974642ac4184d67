#pragma once

#include <QStringList>
#include <QWidget>

class QTreeView;

namespace nebra {

// The file list pane: the documents of one folder, filtered by a wildcard,
// in columns "Name", "Date Modified" and any columns added after them.
class FileListControl : public QWidget
{
    Q_OBJECT
public:
    explicit FileListControl(QWidget* parent = nullptr);

    // Adds a column after the standard ones.
    void addColumn(const QString& name);
    QStringList columns() const { return m_columns; }

private:
    QTreeView* m_view;
    QStringList m_columns;
};

} // namespace nebra
