#pragma once

#include "WizardCatalogue.h"
#include "WizardRunner.h"

#include <QDialog>

class QListWidget;
class QListWidgetItem;
class QPushButton;
class QSplitter;

namespace nebra {

class BrowserControl;
class SuitePaths;

// The picker of new-assay-protocol wizards ("frmNewAssayProtocol"): the
// catalogue's wizards in a list, in catalogue order, with the preview page
// ("<WizardsParentFolder>/Wizards/<Name>/Index.html") of the one last
// clicked. Created afresh for every request, so the list is rebuilt and the
// "Generic" check repeated each time; OK or a double click runs a wizard
// (WizardRunner), the picker closing after a successful run.
//
// Loading: each entry is an item whose text is its Name; the item named
// exactly "Generic" is selected and previewed. Without such an item an
// exclamation box "No Wizard plug-ins were found on your system." ("Missing
// Wizards") is shown, even when other wizards are listed; they stay usable.
class NewAssayProtocolDialog : public QDialog
{
    Q_OBJECT
public:
    NewAssayProtocolDialog(WizardHost& host, const SuitePaths& paths, SuiteSettings& settings,
                           WizardHooks hooks, QWidget* parent = nullptr);
    ~NewAssayProtocolDialog() override;

    // Creates the picker, loads it, shows it modally and destroys it.
    static void ShowNew(WizardHost& host, const SuitePaths& paths, SuiteSettings& settings,
                        const WizardHooks& hooks, QWidget* parent);

    // Fills the list from the catalogue (the "Missing Wizards" box included).
    void LoadList();

    // Runs the wizard of a list item; closes the picker after a success.
    void RunSelectedWizard(QListWidgetItem* item);

    QString NewProtocolPath() const { return m_runner.NewProtocolPath(); }
    QListWidgetItem* ClickedItem() const { return m_clickedItem; }
    bool ItemClicked() const { return m_itemClicked; }
    // The catalogue entry behind an item (by its position in the list).
    const WizardEntry& entryOf(QListWidgetItem* item) const;

    static constexpr int HelpTopic = 9007;
    static QString caption() { return QStringLiteral("Select New Assay Protocol Wizard"); }
    static QString noItemText() { return QStringLiteral("No item is selected in the list."); }
    static QString missingText() { return QStringLiteral("No Wizard plug-ins were found on your system."); }
    static QString missingTitle() { return QStringLiteral("Missing Wizards"); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildControls();
    QWidget* buildButtons();
    void preview(const QString& name);
    void ListView1_ItemClick(QListWidgetItem* item);
    void ListView1_DblClick();
    void OKButton_Click();
    void CancelButton_Click();
    void cmdHelp_Click();

    const SuitePaths& m_paths;
    WizardHost& m_host;
    WizardRunner m_runner;
    WizardCatalogue m_catalogue;
    QSplitter* m_splitter = nullptr;
    QListWidget* m_list = nullptr;
    BrowserControl* m_browser = nullptr;
    QPushButton* m_ok = nullptr;
    QPushButton* m_cancel = nullptr;
    QPushButton* m_help = nullptr;
    QListWidgetItem* m_clickedItem = nullptr;
    bool m_itemClicked = false;
};

} // namespace nebra
