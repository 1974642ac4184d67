#include "OptionsDialog.h"

#include "DataFolders.h"
#include "Dialogs.h"
#include "HLDCollection.h"
#include "LockPicture.h"
#include "Messages.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace nebra {

namespace {

const QString DataArea = QStringLiteral("ParentDirectoryDataFiles");
const QString DataOperation = QStringLiteral("Edit");
const QString DriverArea = QStringLiteral("Instrumentation");
const QString DriverOperation = QStringLiteral("SelectDriver");

QString restrictionText()
{
    return QStringLiteral("Security restrictions do not allow you to edit this setting");
}

// The object name is the control's name for the program and its tests; the
// accessible name is what the control shows (without the access key's mark),
// so that a screen reader says what a sighted user reads.
template <typename Widget> Widget* named(Widget* widget, const QString& name, const QString& shown)
{
    widget->setObjectName(name);
    widget->setAccessibleName(QString(shown).remove(QLatin1Char('&')));
    return widget;
}

// A control that shows its own caption is heard by it.
template <typename Widget> Widget* captioned(Widget* widget, const QString& name)
{
    return named(widget, name, widget->text());
}

QLabel* lockImage(const QString& name)
{
    auto* image = named(new QLabel, name, QStringLiteral("Locked"));
    image->setPixmap(lockPicture());
    image->setHidden(true);
    return image;
}

QLabel* restrictionLabel(const QString& name)
{
    auto* label = named(new QLabel(restrictionText()), name, restrictionText());
    label->setWordWrap(true);
    label->setHidden(true);
    return label;
}

// The hourglass for as long as the driver catalogue is read.
class BusyCursor
{
public:
    BusyCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~BusyCursor() { QApplication::restoreOverrideCursor(); }
    BusyCursor(const BusyCursor&) = delete;
    BusyCursor& operator=(const BusyCursor&) = delete;
};

} // namespace

OptionsDialog::OptionsDialog(SuiteSettings& settings, SuitePaths& paths, DataFolders& folders,
                             OptionsDialogHooks hooks, QWidget* parent)
    : QDialog(parent), m_settings(settings), m_paths(paths), m_folders(folders), m_hooks(std::move(hooks))
{
    setObjectName(QStringLiteral("frmOptions"));
    setAccessibleName(QStringLiteral("Options"));
    setWindowTitle(QStringLiteral("Options"));
    setWindowIcon(QApplication::windowIcon());
    setModal(true);

    // Tab order is the order of construction: the tabs, each page's controls, then the buttons.
    m_tabs = named(new QTabWidget, QStringLiteral("tabOptions"), QStringLiteral("Options"));
    m_tabs->tabBar()->setAccessibleName(QStringLiteral("Options"));
    buildView();
    buildData();
    buildDrivers();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    buildButtons();
    connect(m_tabs, &QTabWidget::currentChanged, this, &OptionsDialog::onTabActivated);
}

OptionsDialog::~OptionsDialog() = default;

void OptionsDialog::buildView()
{
    auto* page = named(new QWidget, QStringLiteral("panelView"), QStringLiteral("View"));
    m_chkShortcuts =
        captioned(new QCheckBox(QStringLiteral("Show &shortcuts:")), QStringLiteral("chkShortcuts"));
    m_chkPreview =
        captioned(new QCheckBox(QStringLiteral("Show &preview pane:")), QStringLiteral("chkPreview"));
    // The caption ends in a colon: the box stands to its right, as in the suite's other programs.
    m_chkShortcuts->setLayoutDirection(Qt::RightToLeft);
    m_chkPreview->setLayoutDirection(Qt::RightToLeft);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(m_chkShortcuts, 0, Qt::AlignLeft);
    layout->addWidget(m_chkPreview, 0, Qt::AlignLeft);
    layout->addStretch();
    m_tabs->addTab(page, QStringLiteral("&View"));
}

void OptionsDialog::buildData()
{
    auto* page = named(new QWidget, QStringLiteral("panelData"), QStringLiteral("Data"));
    auto* label = captioned(new QLabel(QStringLiteral("Parent directory for data &files:")),
                            QStringLiteral("lblRootDataPath"));
    m_txtParentDirectoryPath = named(new QLineEdit, QStringLiteral("txtParentDirectoryPath"), label->text());
    label->setBuddy(m_txtParentDirectoryPath);
    // Room for a usual path in full, in the font the dialog is shown with.
    m_txtParentDirectoryPath->setMinimumWidth(m_txtParentDirectoryPath->fontMetrics().averageCharWidth() *
                                              60);
    m_browse =
        captioned(new QPushButton(QStringLiteral("&Browse...")), QStringLiteral("cmdBrowseParentDirectory"));
    m_browse->setAutoDefault(false);
    connect(m_browse, &QPushButton::clicked, this, &OptionsDialog::chooseFolder);
    m_labelSecurity = restrictionLabel(QStringLiteral("LabelSecurity"));
    m_imageSecurity = lockImage(QStringLiteral("ImageSecurity"));

    auto* layout = new QGridLayout(page);
    layout->addWidget(label, 0, 0, 1, 2);
    layout->addWidget(m_txtParentDirectoryPath, 1, 0);
    layout->addWidget(m_browse, 1, 1);
    auto* notice = new QHBoxLayout;
    notice->addWidget(m_imageSecurity);
    notice->addWidget(m_labelSecurity, 1);
    layout->addLayout(notice, 2, 0, 1, 2);
    layout->setRowStretch(3, 1);
    m_tabs->addTab(page, QStringLiteral("&Data"));
}

void OptionsDialog::buildDrivers()
{
    auto* page = named(new QWidget, QStringLiteral("panelDrivers"), QStringLiteral("Drivers"));
    auto* label = captioned(new QLabel(QStringLiteral("&Installed drivers:")), QStringLiteral("Label1"));
    m_lstHLDs = named(new QListWidget, QStringLiteral("lstHLDs"), label->text());
    m_lstHLDs->setSelectionMode(QAbstractItemView::SingleSelection);
    label->setBuddy(m_lstHLDs);
    m_labelSecurityDrivers = restrictionLabel(QStringLiteral("LabelSecurityDrivers"));
    m_imageSecurityDrivers = lockImage(QStringLiteral("ImageSecurityDrivers"));

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(label);
    layout->addWidget(m_lstHLDs, 1);
    auto* notice = new QHBoxLayout;
    notice->addWidget(m_imageSecurityDrivers);
    notice->addWidget(m_labelSecurityDrivers, 1);
    layout->addLayout(notice);
    m_tabs->addTab(page, QStringLiteral("D&rivers"));
}

void OptionsDialog::buildButtons()
{
    m_ok = captioned(new QPushButton(QStringLiteral("&OK")), QStringLiteral("OKButton"));
    m_cancel = captioned(new QPushButton(QStringLiteral("&Cancel")), QStringLiteral("CancelButton"));
    m_help = captioned(new QPushButton(QStringLiteral("&Help")), QStringLiteral("Help"));
    // Enter confirms wherever the focus is; Escape cancels through reject().
    m_ok->setDefault(true);
    m_cancel->setAutoDefault(false);
    m_help->setAutoDefault(false);
    connect(m_ok, &QPushButton::clicked, this, &OptionsDialog::onOK);
    connect(m_cancel, &QPushButton::clicked, this, &OptionsDialog::reject);
    connect(m_help, &QPushButton::clicked, this, [this] {
        if (m_hooks.displayHelpContext)
            m_hooks.displayHelpContext(HelpTopic);
    });
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(m_ok);
    row->addWidget(m_cancel);
    row->addWidget(m_help);
    static_cast<QVBoxLayout*>(layout())->addLayout(row);
}

bool OptionsDialog::allowed(const QString& area, const QString& operation) const
{
    return !m_hooks.isAllowed || m_hooks.isAllowed(area, operation);
}

void OptionsDialog::Activate()
{
    m_okPressed = false;
    m_chkPreview->setChecked(false);
    m_chkPreview->setChecked(m_settings.ShowPreviewPane());
    m_chkShortcuts->setChecked(false);
    m_chkShortcuts->setChecked(m_settings.ShowShortcuts());
    m_txtParentDirectoryPath->setText(m_paths.ParentDirectory());

    const bool dataAllowed = allowed(DataArea, DataOperation);
    m_labelSecurity->setHidden(dataAllowed);
    m_imageSecurity->setHidden(dataAllowed);
    m_txtParentDirectoryPath->setEnabled(dataAllowed);
    m_browse->setEnabled(dataAllowed);

    const bool driverAllowed = allowed(DriverArea, DriverOperation);
    m_labelSecurityDrivers->setHidden(driverAllowed);
    m_imageSecurityDrivers->setHidden(driverAllowed);
    // Kept so: the driver list follows the data-folder permission, since a
    // driver change re-points a data folder; the driver permission only
    // shows its notice.
    m_lstHLDs->setEnabled(dataAllowed);

    // Lines left from an earlier showing must not count as a choice made in this one.
    m_lstHLDs->clear();
    m_driversListed = false;
    // The tab shown last time is shown again: reading it now counts as opening it.
    if (m_tabs->currentIndex() == DriversTab)
        fillDrivers();
}

bool OptionsDialog::run()
{
    Activate();
    Dialogs::exec(*this);
    return m_okPressed;
}

void OptionsDialog::onTabActivated(int index)
{
    if (index == DriversTab)
        fillDrivers();
}

void OptionsDialog::fillDrivers()
{
    if (m_driversListed)
        return;
    m_lstHLDs->clear();
    {
        BusyCursor busy;
        const HLDCollection drivers = m_hooks.freshDrivers ? m_hooks.freshDrivers() : HLDCollection();
        for (const HLDElement& driver : drivers.Items())
            m_lstHLDs->addItem(driver.FullName);
    }
    if (m_lstHLDs->count() > 0) {
        // A CurrentHLD outside the catalogue selects nothing; OK then stores 0.
        const int row = m_settings.CurrentHLD() - 1;
        if (row >= 0 && row < m_lstHLDs->count())
            m_lstHLDs->setCurrentRow(row);
        else
            m_lstHLDs->setCurrentRow(-1);
    } else {
        m_lstHLDs->setEnabled(false);
    }
    m_driversListed = true;
}

// The folder is checked while the event loop runs (it may be on a file
// server that is slow to answer): meanwhile the dialog takes no second OK and
// no Cancel, and it may even be closed and deleted by a forced log-out.
void OptionsDialog::onOK()
{
    if (m_checking)
        return;
    const QPointer<OptionsDialog> alive(this);
    QString text = m_txtParentDirectoryPath->text();
    bool accepted = false;
    {
        m_checking = true;
        for (QPushButton* button : {m_ok, m_cancel, m_browse})
            button->setEnabled(false);
        accepted = m_folders.ApplyParentDirectory(text);
    }
    if (!alive)
        return;
    m_checking = false;
    for (QPushButton* button : {m_ok, m_cancel, m_browse})
        button->setEnabled(true);
    m_txtParentDirectoryPath->setText(text);
    if (!accepted || !applyDriver())
        return;
    m_okPressed = true;
    done(QDialog::Accepted);
}

bool OptionsDialog::applyDriver()
{
    // No line selected is index -1: CurrentHLD becomes 0, and the change is handled like any other.
    const int row = m_lstHLDs->currentRow();
    if (m_lstHLDs->count() == 0 || row == m_settings.CurrentHLD() - 1)
        return true;
    if (!m_settings.SetCurrentHLD(row + 1)) {
        Messages::show({QStringLiteral("The instrument driver could not be saved in the settings file, "
                                       "so it has not been changed."),
                        QStringLiteral("Options"), MessageIcon::Critical, MessageButton::Ok,
                        MessageButton::Ok, this});
        return false;
    }
    if (m_hooks.handleChangedHLD)
        m_hooks.handleChangedHLD();
    return true;
}

void OptionsDialog::reject()
{
    if (m_checking)
        return; // the check ends within its bound; OK then decides
    m_okPressed = false;
    QDialog::reject();
}

void OptionsDialog::chooseFolder()
{
    QFileDialog chooser(this, QStringLiteral("Parent directory for data files"));
    chooser.setObjectName(QStringLiteral("dlgParentDirectory"));
    chooser.setAccessibleName(chooser.windowTitle());
    chooser.setFileMode(QFileDialog::Directory);
    chooser.setOptions(QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog);
    const QString typed = m_txtParentDirectoryPath->text().trimmed();
    // Started where the typed folder is, when it answers at once; a folder
    // that does not is left for OK to report.
    if (!typed.isEmpty() &&
        m_folderCheck.run(typed, [typed] { return QDir(typed).exists(); }).value_or(false))
        chooser.setDirectory(typed);
    if (Dialogs::exec(chooser) != QDialog::Accepted || chooser.selectedFiles().isEmpty())
        return;
    // The chosen folder only fills the text box: OK validates it like a typed one.
    m_txtParentDirectoryPath->setText(QDir::toNativeSeparators(chooser.selectedFiles().constFirst()));
}

bool OptionsDialog::ShowShortcutsChecked() const
{
    return m_chkShortcuts->isChecked();
}

bool OptionsDialog::ShowPreviewChecked() const
{
    return m_chkPreview->isChecked();
}

} // namespace nebra
