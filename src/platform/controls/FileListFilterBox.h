#pragma once

#include <QLineEdit>

namespace nebra {

// The line above the file list where the user types part of a name (or a
// wildcard pattern) to narrow the list. Escape clears it; an empty box
// passes Escape on.
class FileListFilterBox : public QLineEdit
{
    Q_OBJECT
public:
    explicit FileListFilterBox(QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace nebra
