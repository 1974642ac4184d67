// The file list's renaming and deleting. The file system's part runs on a
// reader thread, so that a folder on a server that stops answering never
// holds up the window; the list changes when the file system has answered.

#include "FileListControl.h"

#include "FileListModel.h"
#include "FileListPrompts.h"
#include "FileListView.h"
#include "FileOperations.h"
#include "FolderReaders.h"

#include <QFile>
#include <QFileInfo>
#include <QLabel>

namespace nebra {

void FileListControl::editItem(const FileListItem& item)
{
    const int row = rowOf(item);
    if (row >= 0)
        m_view->edit(m_model->index(row, 0));
}

bool FileListControl::renameItem(const FileListItem& item, const QString& newName)
{
    const int row = rowOf(item);
    if (row < 0 || newName == m_model->displayedName(row))
        return false;
    bool cancel = false;
    Q_EMIT beforeItemRenamed(item, newName, cancel);
    if (cancel || !FileListPrompts::acceptNewName(this, newName))
        return false;
    const int rowNow = rowOf(item); // a handler may have changed the list
    if (rowNow < 0)
        return false;
    QString name = newName;
    const QString oldName = m_model->fileName(rowNow);
    if (!m_model->showExtensions() && !m_model->isFolder(rowNow) && oldName != m_model->displayedName(rowNow))
        name += oldName.mid(m_model->displayedName(rowNow).size()); // the hidden extension stays
    const QString oldPath = m_model->fullPath(rowNow);
    const QString newPath = QFileInfo(oldPath).path() + QLatin1Char('/') + name;
    m_readers->read(
        oldPath, FolderReaders::Lane::User, this,
        [oldPath, newPath] { return FileOperations::RenameNoReplace(oldPath, newPath); },
        [this, item, oldName, name, oldPath](int error) {
            showListingState();
            if (error != 0) {
                FileListPrompts::renameFailed(this, oldName, name, error);
                return;
            }
            // A listing that came meanwhile may show either name, or neither.
            int renamed = rowOf(item);
            if (renamed >= 0)
                m_model->renameEntry(renamed, name);
            else
                renamed = rowOfName(name);
            const QString newPath = QFileInfo(oldPath).path() + QLatin1Char('/') + name;
            Q_EMIT itemRenamed(renamed >= 0 ? itemAtRow(renamed)
                                            : FileListItem(this, 0, -1, name, newPath, item.isFolder()),
                               oldPath);
        },
        [this, oldPath] { showBusy(QFileInfo(oldPath).path()); });
    return true;
}

void FileListControl::deleteSelectedItems()
{
    const QList<FileListItem> items = selectedItems();
    if (items.isEmpty())
        return;
    if (!FileListPrompts::confirmMoveToTrash(this, items.first().name(), items.first().isFolder(),
                                             int(items.size())))
        return;
    QStringList paths;
    for (const FileListItem& item : items)
        paths << item.path();
    // Per item, in order: empty when moved, else the file system's reason.
    const auto moveAll = [paths] {
        QStringList reasons;
        for (const QString& path : paths) {
            QFile file(path);
            reasons << (file.moveToTrash() ? QString() : file.errorString());
        }
        return reasons;
    };
    m_readers->read(
        paths.first(), FolderReaders::Lane::User, this, moveAll,
        [this, items](const QStringList& reasons) {
            QStringList failed;
            for (qsizetype i = 0; i < items.size(); ++i) {
                if (!reasons[i].isEmpty()) {
                    failed.append(FileListPrompts::moveToTrashFailure(items[i].name(), reasons[i]));
                    continue;
                }
                m_model->removeEntry(rowOf(items[i]));
                Q_EMIT itemRemoved(items[i]);
            }
            showListingState();
            if (!failed.isEmpty())
                FileListPrompts::moveToTrashFailed(this, failed);
        },
        [this, folder = QFileInfo(paths.first()).path()] { showBusy(folder); });
}

// A rename or delete the folder has not answered: the list says what it waits for.
void FileListControl::showBusy(const QString& folder)
{
    m_state->setText(waitingText(folder));
    m_state->show();
}

int FileListControl::rowOfName(const QString& name) const
{
    for (int row = 0; row < m_model->rowCount(); ++row)
        if (m_model->fileName(row) == name)
            return row;
    return -1;
}

} // namespace nebra
