#include "NewAssayProtocolDialog.h"

#include "BrowserControl.h"
#include "DiagnosticLog.h"
#include "Dialogs.h"
#include "Messages.h"
#include "SuitePaths.h"
#include "WizardHost.h"

#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QUrl>
#include <QVBoxLayout>

namespace nebra {

NewAssayProtocolDialog::NewAssayProtocolDialog(WizardHost& host, const SuitePaths& paths,
                                               SuiteSettings& settings, WizardHooks hooks, QWidget* parent)
    : QDialog(parent), m_paths(paths), m_host(host), m_runner(host, settings, std::move(hooks))
{
    setObjectName(QStringLiteral("frmNewAssayProtocol"));
    setWindowTitle(caption());
    setAccessibleName(caption());
    setWindowIcon(QApplication::windowIcon());
    setSizeGripEnabled(true);
    buildControls();
    resize(560, 520);
}

NewAssayProtocolDialog::~NewAssayProtocolDialog() = default;

void NewAssayProtocolDialog::buildControls()
{
    m_splitter = new QSplitter(Qt::Vertical, this);
    m_splitter->setObjectName(QStringLiteral("SSSplitter1"));
    m_splitter->setAccessibleName(QStringLiteral("Wizards and preview"));
    m_splitter->setChildrenCollapsible(false);

    m_list = new QListWidget(m_splitter);
    m_list->setObjectName(QStringLiteral("ListView1"));
    m_list->setAccessibleName(QStringLiteral("Wizards"));
    m_list->setViewMode(QListView::IconMode);
    m_list->setResizeMode(QListView::Adjust);
    m_list->setMovement(QListView::Static);
    m_list->setWordWrap(true);
    m_list->setGridSize(QSize(110, 72));
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->viewport()->installEventFilter(this);
    connect(m_list, &QListWidget::itemClicked, this, &NewAssayProtocolDialog::ListView1_ItemClick);

    m_browser = new BrowserControl(m_splitter);
    m_browser->setObjectName(QStringLiteral("WebBrowser1"));
    m_browser->setAccessibleName(QStringLiteral("Wizard preview"));
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 3);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_splitter, 1);
    layout->addWidget(buildButtons());
}

QWidget* NewAssayProtocolDialog::buildButtons()
{
    auto* row = new QWidget(this);
    auto* buttons = new QHBoxLayout(row);
    buttons->setContentsMargins(0, 0, 0, 0);
    m_ok = new QPushButton(QStringLiteral("OK"), row);
    m_ok->setObjectName(QStringLiteral("OKButton"));
    m_ok->setAccessibleName(QStringLiteral("OK"));
    m_ok->setDefault(true);
    m_cancel = new QPushButton(QStringLiteral("Cancel"), row);
    m_cancel->setObjectName(QStringLiteral("CancelButton"));
    m_cancel->setAccessibleName(QStringLiteral("Cancel"));
    m_help = new QPushButton(QStringLiteral("Help"), row);
    m_help->setObjectName(QStringLiteral("cmdHelp"));
    m_help->setAccessibleName(QStringLiteral("Help"));
    buttons->addStretch(1);
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);
    buttons->addWidget(m_help);
    connect(m_ok, &QPushButton::clicked, this, &NewAssayProtocolDialog::OKButton_Click);
    connect(m_cancel, &QPushButton::clicked, this, &NewAssayProtocolDialog::CancelButton_Click);
    connect(m_help, &QPushButton::clicked, this, &NewAssayProtocolDialog::cmdHelp_Click);
    return row;
}

void NewAssayProtocolDialog::ShowNew(WizardHost& host, const SuitePaths& paths, SuiteSettings& settings,
                                     const WizardHooks& hooks, QWidget* parent)
{
    NewAssayProtocolDialog dialog(host, paths, settings, hooks, parent);
    dialog.LoadList();
    Dialogs::exec(dialog);
}

void NewAssayProtocolDialog::LoadList()
{
    m_list->clear();
    m_clickedItem = nullptr;
    m_itemClicked = false;
    m_catalogue = m_host.ReadCatalogue();
    if (!m_catalogue.errorString().isEmpty())
        LogNote(m_catalogue.errorString());
    const QIcon icon = style()->standardIcon(QStyle::SP_FileDialogNewFolder);
    bool genericFound = false;
    const WizardCollection& wizards = m_catalogue.Wizards();
    for (int i = 1; i <= wizards.Count(); ++i) {
        const QString name = wizards.Item(i).Name;
        auto* item = new QListWidgetItem(icon, name, m_list);
        item->setData(Qt::AccessibleTextRole, name);
        if (name == QLatin1String("Generic")) {
            genericFound = true;
            m_list->setCurrentItem(item);
            item->setSelected(true);
            preview(name);
        }
    }
    m_list->doItemsLayout();
    if (!genericFound)
        Messages::show({missingText(), missingTitle(), MessageIcon::Warning, MessageButton::Ok,
                        MessageButton::Ok, this});
}

const WizardEntry& NewAssayProtocolDialog::entryOf(QListWidgetItem* item) const
{
    return m_catalogue.Wizards().Item(m_list->row(item) + 1);
}

void NewAssayProtocolDialog::preview(const QString& name)
{
    m_browser->Navigate(QUrl::fromLocalFile(m_paths.WizardsParentFolder() + QStringLiteral("/Wizards/") +
                                            name + QStringLiteral("/Index.html")));
}

void NewAssayProtocolDialog::ListView1_ItemClick(QListWidgetItem* item)
{
    m_clickedItem = item;
    m_itemClicked = true;
    preview(item->text());
}

// A press on the list forgets the last click first, so that a double click
// on empty space finds nothing to run.
bool NewAssayProtocolDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_list->viewport()) {
        // The second press of a double click comes with the double click
        // itself and must not undo the click before it.
        if (event->type() == QEvent::MouseButtonPress &&
            !static_cast<QMouseEvent*>(event)->flags().testFlag(Qt::MouseEventCreatedDoubleClick)) {
            m_clickedItem = nullptr;
            m_itemClicked = false;
        } else if (event->type() == QEvent::MouseButtonDblClick) {
            ListView1_DblClick();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void NewAssayProtocolDialog::ListView1_DblClick()
{
    if (!m_itemClicked || !m_clickedItem)
        return;
    RunSelectedWizard(m_clickedItem);
    m_clickedItem = nullptr;
}

void NewAssayProtocolDialog::RunSelectedWizard(QListWidgetItem* item)
{
    m_runner.RunSelectedWizard(entryOf(item), this, [this] { accept(); });
}

void NewAssayProtocolDialog::OKButton_Click()
{
    for (int row = 0; row < m_list->count(); ++row) {
        if (m_list->item(row)->isSelected()) {
            RunSelectedWizard(m_list->item(row));
            return;
        }
    }
    Messages::show(
        {noItemText(), QString(), MessageIcon::NoIcon, MessageButton::Ok, MessageButton::Ok, this});
}

void NewAssayProtocolDialog::CancelButton_Click()
{
    reject();
}

void NewAssayProtocolDialog::cmdHelp_Click()
{
    if (m_runner.hooks().displayHelp)
        m_runner.hooks().displayHelp(HelpTopic);
}

} // namespace nebra
