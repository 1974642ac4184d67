#include "FileListControl.h"

#include <QHeaderView>
#include <QStandardItemModel>
#include <QTreeView>
#include <QVBoxLayout>

namespace nebra {

FileListControl::FileListControl(QWidget* parent)
    : QWidget(parent), m_view(new QTreeView(this)),
      m_columns{QStringLiteral("Name"), QStringLiteral("Date Modified")}
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    auto* model = new QStandardItemModel(0, int(m_columns.size()), this);
    model->setHorizontalHeaderLabels(m_columns);
    m_view->setModel(model);
    m_view->setRootIsDecorated(false);
    m_view->setAccessibleName(QStringLiteral("File list"));
    setAccessibleName(QStringLiteral("File list pane"));
}

void FileListControl::addColumn(const QString& name)
{
    m_columns.append(name);
    auto* model = static_cast<QStandardItemModel*>(m_view->model());
    model->setColumnCount(int(m_columns.size()));
    model->setHorizontalHeaderLabels(m_columns);
}

} // namespace nebra
