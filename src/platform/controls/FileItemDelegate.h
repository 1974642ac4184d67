#pragma once

#include "FocusVisibleDelegate.h"

#include <QIcon>

namespace nebra {

// Folder and file pictures in the file list's name column: a file shows the
// picture of the listed type's documents, or a plain page without one.
class FileItemDelegate : public FocusVisibleDelegate
{
    Q_OBJECT
public:
    using FocusVisibleDelegate::FocusVisibleDelegate;
    void setDocumentIcon(const QIcon& icon) { m_documentIcon = icon; }
    QIcon documentIcon() const { return m_documentIcon; }

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

private:
    QIcon m_documentIcon;
};

} // namespace nebra
