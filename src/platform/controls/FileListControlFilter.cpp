// The file list's filter box and context menu.

#include "FileListControl.h"

#include "FileListFilterBox.h"
#include "FileListModel.h"
#include "FileListView.h"

#include <QMenu>

namespace nebra {

void FileListControl::setNameFilter(const QString& text)
{
    if (m_filterBox->text() != text)
        m_filterBox->setText(text); // the box passes it on
    else
        applyNameFilter(text);
}

// A selected item the filter hides is no longer selected, and the handlers
// hear of it as of any other selection change.
void FileListControl::applyNameFilter(const QString& text)
{
    const QSet<QString> selected = selectedNames();
    m_quiet = true;
    m_model->setNameFilter(text);
    m_quiet = false;
    showListingState();
    if (selectedNames() != selected)
        onSelectionChanged();
}

QString FileListControl::nameFilter() const
{
    return m_model->nameFilter();
}

void FileListControl::setFilterBoxShown(bool shown)
{
    m_filterBox->setVisible(shown);
    if (!shown)
        setNameFilter(QString());
}

void FileListControl::addContextAction(QAction* action)
{
    m_contextActions.append(action);
}

void FileListControl::showContextMenu(const QPoint& position)
{
    if (m_contextActions.isEmpty())
        return;
    QMenu menu(this);
    menu.setAccessibleName(QStringLiteral("File list actions"));
    menu.addActions(m_contextActions);
    menu.exec(m_view->viewport()->mapToGlobal(position));
}

} // namespace nebra
