#pragma once

#include <QObject>
#include <QStringList>

#include <memory>

class QWidget;

namespace nebra {

class BrowserControl;
class FileListControl;
class FileView;
class FolderTreeControl;
class RecentDocuments;
class SuiteSettings;
class ToolBarsControl;

// The aids to finding documents: the file list's filter box, the recent
// documents (File > Recent and the welcome page's list) and "Show in file
// manager" on the file list. Each can be switched off in the settings.
class FindingAids : public QObject
{
    Q_OBJECT
public:
    struct Parts
    {
        SuiteSettings& settings;
        ToolBarsControl& tools;
        FolderTreeControl& tree;
        FileListControl& list;
        BrowserControl& browser;
        FileView& fileView;
        QWidget& owner; // of the message boxes
    };

    explicit FindingAids(Parts parts, QObject* parent = nullptr);
    ~FindingAids() override;

    // A document was opened, run or made: it heads the recent documents
    // (nothing when they are switched off).
    void documentUsed(const QString& path);
    // The welcome page's n-th recent link (0-based); nothing when the recent
    // documents are switched off.
    void openRecent(int index);

private:
    void createRecentDocuments();
    void showRecentOnWelcomePage();
    void listRecentOnWelcomePage();
    void showSelectionInFileManager();

    Parts m_parts;
    std::unique_ptr<RecentDocuments> m_recent;
    QStringList m_welcomeRecent; // the recent documents the welcome page lists, in its order
};

} // namespace nebra
