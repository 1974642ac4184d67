#pragma once

#include "BoundedRead.h"

#include <QDialog>

#include <functional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTabWidget;

namespace nebra {

class DataFolders;
class HLDCollection;
class SuitePaths;
class SuiteSettings;

// What the Options dialog asks of the program around it.
struct OptionsDialogHooks
{
    // A collection read afresh from the driver catalogue.
    std::function<HLDCollection()> freshDrivers;
    // Whether the user may perform operation in area; answers true when no
    // security session runs. Empty: everything is allowed.
    std::function<bool(const QString& area, const QString& operation)> isAllowed;
    // Shows the help topic with the given context number.
    std::function<void(int topic)> displayHelpContext;
    // Called after OK stored a different CurrentHLD.
    std::function<void()> handleChangedHLD;
};

// The Options dialog ("frmOptions"): the view options, the parent directory
// for data files and the instrument driver in use. Created once, hidden on
// OK and Cancel and shown again by run(). Every control has its control name
// as object name and accessible name.
//
// Each showing loads the check boxes and the parent directory from the
// settings and asks the two permissions. The Drivers tab reads the driver
// catalogue when it is opened, once per showing. OK validates and applies
// the parent directory (a refused one keeps the dialog open) and the driver;
// the check boxes are read by the caller, after run() returned true.
class OptionsDialog : public QDialog
{
    Q_OBJECT
public:
    static constexpr int HelpTopic = 9019;
    static constexpr int DriversTab = 2;

    OptionsDialog(SuiteSettings& settings, SuitePaths& paths, DataFolders& folders, OptionsDialogHooks hooks,
                  QWidget* parent = nullptr);
    ~OptionsDialog() override;

    // Prepares the showing and runs the dialog modally through the dialog
    // seam. Returns OKPressed.
    bool run();

    // The steps each showing begins with; run() calls it.
    void Activate();

    bool OKPressed() const { return m_okPressed; }
    bool DriversListed() const { return m_driversListed; }
    bool ShowShortcutsChecked() const;
    bool ShowPreviewChecked() const;

    void reject() override;

private:
    void buildView();
    void buildData();
    void buildDrivers();
    void buildButtons();
    void onTabActivated(int index);
    void fillDrivers();
    void onOK();
    bool applyDriver();
    void chooseFolder();
    bool allowed(const QString& area, const QString& operation) const;

    SuiteSettings& m_settings;
    SuitePaths& m_paths;
    DataFolders& m_folders;
    OptionsDialogHooks m_hooks;
    bool m_okPressed = false;
    bool m_checking = false;   // OK waits for the folder's check
    BoundedRead m_folderCheck; // Browse...'s look at the typed folder
    bool m_driversListed = false;

    QTabWidget* m_tabs = nullptr;
    QCheckBox* m_chkShortcuts = nullptr;
    QCheckBox* m_chkPreview = nullptr;
    QLineEdit* m_txtParentDirectoryPath = nullptr;
    QPushButton* m_browse = nullptr;
    QLabel* m_labelSecurity = nullptr;
    QLabel* m_imageSecurity = nullptr;
    QListWidget* m_lstHLDs = nullptr;
    QLabel* m_labelSecurityDrivers = nullptr;
    QLabel* m_imageSecurityDrivers = nullptr;
    QPushButton* m_ok = nullptr;
    QPushButton* m_cancel = nullptr;
    QPushButton* m_help = nullptr;
};

} // namespace nebra
