#pragma once

#include <QMenu>

namespace nebra {

class RecentDocuments;

// File > Recent: the recent documents, filled afresh each time the menu
// opens (so that vanished documents are gone), numbered 1 to 10 as access
// keys. Choosing one announces it; the Organiser then shows it in its folder.
class RecentDocumentsMenu : public QMenu
{
    Q_OBJECT
public:
    RecentDocumentsMenu(RecentDocuments& recent, QWidget* parent = nullptr);

    // Fills the menu now, as opening it does.
    void fill();

Q_SIGNALS:
    void documentChosen(const QString& path);

private:
    RecentDocuments& m_recent;
};

} // namespace nebra
