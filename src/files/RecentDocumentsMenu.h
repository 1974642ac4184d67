#pragma once

#include <QMenu>

namespace nebra {

class RecentDocuments;

// File > Recent: the recent documents, numbered 1 to 10 as access keys.
// Each opening shows the stored list at once and has the documents checked;
// a vanished document leaves the menu when its check answers, open or not.
// Choosing one announces it; the Organiser then shows it in its folder.
class RecentDocumentsMenu : public QMenu
{
    Q_OBJECT
public:
    RecentDocumentsMenu(RecentDocuments& recent, QWidget* parent = nullptr);

    // Fills the menu now and has the documents checked, as opening it does.
    void fill();

Q_SIGNALS:
    void documentChosen(const QString& path);

private:
    void showDocuments();

    RecentDocuments& m_recent;
};

} // namespace nebra
