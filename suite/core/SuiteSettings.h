#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace nebra {

class SettingsStore;

// How the Organiser follows changes in the data folders: "auto" asks the
// kernel on local disks and polls file servers, "notify" always asks the
// kernel, "poll" always polls.
enum class FolderWatchMode
{
    Auto,
    Notify,
    Poll,
};

// The suite's settings component: the "[Settings]" group of the suite's
// settings file. Every getter reads the store; setters write one value at
// once (atomically) and return false when the file could not be written.
// Values that cannot be parsed read as their default.
class SuiteSettings
{
public:
    explicit SuiteSettings(SettingsStore& store);

    // Diagnostic log level: 0 or less is off. Read afresh from disk on every call.
    int DiagnosticLogLevel() const;
    bool SetDiagnosticLogLevel(int level);

    // True: the window caption is "Tallyo Plus" instead of the product title.
    bool PlusCaption() const;

    // The tree's display mode 2 ("explorer mode") was in use when the program last closed.
    bool ExplorerModeFlag() const;
    bool SetExplorerModeFlag(bool on);

    // One stored setting under two names: start-up reads ShowShortcutsBar,
    // the Options dialog edits ShowShortcuts.
    bool ShowShortcutsBar() const;
    bool ShowShortcuts() const { return ShowShortcutsBar(); }
    bool SetShowShortcuts(bool on);

    bool ShowPreviewPane() const;
    bool SetShowPreviewPane(bool on);

    // 1-based index of the selected instrument driver.
    int CurrentHLD() const;
    bool SetCurrentHLD(int index);

    bool SecurityConfigured() const;

    // Welcome page chosen by the installation (a file name in PageFolder()), empty for the built-in pages.
    QString OrganiserFile() const;
    QString PageFolder() const;
    bool UseAlternativeWelcomePage() const;

    bool SkipDriverFolders() const;

    // The suite is installed with instrument drivers: the tree gets its
    // instrument node and every document type is previewed (not only layouts).
    bool InstrumentDriversInUse() const;

    // Bit 5 (32): the tree pane's spaced button set without a Help button.
    int ToolbarFlags() const;
    // Bit 0x20: the instrument node is captioned generically instead of by the driver's name.
    int InstrumentFlags() const;

    bool SuppressLayoutsBranch() const;

    // Additions a site may switch off, each on by default: the filter box
    // above the file list, the recent documents (File > Recent and the
    // welcome page's list) and "Show in file manager" on the file list.
    bool ShowFileListFilter() const;
    bool ShowRecentDocuments() const;
    bool ShowInFileManager() const;

    // The documents last opened, run or created through the Organiser, newest first.
    QStringList RecentDocuments() const;
    bool SetRecentDocuments(const QStringList& paths);

    // Seconds between two polls of the folder the file list shows, and of the
    // tree's folders, on file servers (0: not polled).
    int NetworkPollSeconds() const;
    int NetworkTreePollSeconds() const;
    // "auto", "notify" or "poll", without regard to case; anything else is auto.
    FolderWatchMode WatchMode() const;

    // The help window's size and place (as QWidget::saveGeometry() gives
    // them) and its text size in steps from the normal size, in the "[Help]"
    // group. A setter that is given the stored value writes nothing.
    QByteArray HelpWindowGeometry() const;
    bool SetHelpWindowGeometry(const QByteArray& geometry);
    int HelpTextSize() const;
    bool SetHelpTextSize(int steps);

    // Bracket a run of folder creation; writes made in between reach the disk together.
    void BeginFolderUpdate();
    void EndFolderUpdate();

private:
    bool boolValue(const char* key, bool defaultValue) const;
    int intValue(const char* key, int defaultValue, bool fresh = false) const;
    QString stringValue(const char* key) const;
    bool write(const char* key, const QVariant& value);

    SettingsStore& m_store;
};

} // namespace nebra
