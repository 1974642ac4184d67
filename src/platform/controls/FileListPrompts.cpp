#include "FileListPrompts.h"

#include "FileOperations.h"
#include "Messages.h"

#include <QCoreApplication>
#include <QWidget>

namespace nebra {

namespace {
QString tr(const char* text)
{
    return QCoreApplication::translate("nebra::FileListControl", text);
}
} // namespace

bool FileListPrompts::acceptNewName(QWidget* owner, const QString& name)
{
    const QString problem = FileOperations::NameProblem(name);
    if (problem.isEmpty())
        return true;
    Messages::show(
        {problem, tr("Rename"), MessageIcon::Warning, MessageButton::Ok, MessageButton::Ok, owner});
    return false;
}

void FileListPrompts::renameFailed(QWidget* owner, const QString& oldName, const QString& newName, int error)
{
    Messages::show({FileOperations::RenameFailureText(oldName, newName, error), tr("Error Renaming File"),
                    MessageIcon::Critical, MessageButton::Ok, MessageButton::Ok, owner});
}

bool FileListPrompts::confirmMoveToTrash(QWidget* owner, const QString& firstName, bool firstIsFolder,
                                         int count)
{
    const bool one = count == 1;
    const QString text = one ? tr("Are you sure you want to move \"%1\" to the Trash?").arg(firstName)
                             : tr("Are you sure you want to move these %1 items to the Trash?").arg(count);
    const QString title =
        !one ? tr("Delete Multiple Items") : (firstIsFolder ? tr("Delete Folder") : tr("Delete File"));
    return Messages::show({text, title, MessageIcon::Question, MessageButton::Yes | MessageButton::No,
                           MessageButton::Yes, owner}) == MessageButton::Yes;
}

QString FileListPrompts::moveToTrashFailure(const QString& name, const QString& reason)
{
    return tr("\"%1\": %2").arg(name, reason.isEmpty() ? tr("the file system gave no reason") : reason);
}

void FileListPrompts::moveToTrashFailed(QWidget* owner, const QStringList& failures)
{
    Messages::show(
        {tr("These items could not be moved to the Trash:\n%1").arg(failures.join(QLatin1Char('\n'))),
         tr("Error Deleting File"), MessageIcon::Critical, MessageButton::Ok, MessageButton::Ok, owner});
}

} // namespace nebra
