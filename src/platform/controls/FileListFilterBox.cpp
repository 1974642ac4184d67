#include "FileListFilterBox.h"

#include <QKeyEvent>

namespace nebra {

FileListFilterBox::FileListFilterBox(QWidget* parent) : QLineEdit(parent)
{
    setPlaceholderText(tr("Filter by name (* and ? as wildcards)"));
    setClearButtonEnabled(true);
    setAccessibleName(QStringLiteral("File list filter"));
    setAccessibleDescription(
        tr("Shows only the documents whose names contain the text or match the pattern"));
}

void FileListFilterBox::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && !text().isEmpty()) {
        clear();
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

} // namespace nebra
