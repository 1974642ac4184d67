#include "AuditTrailWindow.h"

#include "AuditChainStatus.h"
#include "AuditFilterBar.h"
#include "Dialogs.h"
#include "Messages.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

namespace nebra {

namespace {
const QString WindowTitle = QStringLiteral("Audit Trail");

QPushButton* button(const QString& caption, const QString& name, const QString& accessible, QWidget* parent)
{
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(name);
    b->setAccessibleName(accessible);
    return b;
}

// The hourglass while a long view is read or written out.
class Hourglass
{
public:
    Hourglass() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~Hourglass() { QApplication::restoreOverrideCursor(); }
    Hourglass(const Hourglass&) = delete;
    Hourglass& operator=(const Hourglass&) = delete;
};
} // namespace

AuditTrailWindow::AuditTrailWindow(AuditTrailWindowSources sources, QWidget* parent)
    : QWidget(parent, Qt::Window), m_sources(std::move(sources))
{
    setObjectName(QStringLiteral("frmAuditTrail"));
    setAccessibleName(WindowTitle);
    setWindowTitle(WindowTitle);
    setAttribute(Qt::WA_DeleteOnClose);
    m_filterBar = new AuditFilterBar(m_sources.areas, this);
    m_chain = new AuditChainStatus(m_sources.verifier, this);
    createTable();
    createLayout();
    connect(m_filterBar, &AuditFilterBar::filterChanged, this, &AuditTrailWindow::applyFilter);
    resize(1000, 640);
    m_chain->check();
}

void AuditTrailWindow::createTable()
{
    m_table = new QTableView(this);
    m_table->setObjectName(QStringLiteral("tblAuditTrail"));
    m_table->setAccessibleName(QStringLiteral("Audit trail entries"));
    m_table->setModel(m_sources.model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setWordWrap(false);
    m_table->setAlternatingRowColors(true);
    // Rows of one height: a million of them scroll without measuring each.
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->horizontalHeader()->setSortIndicator(0, Qt::DescendingOrder); // newest first
    m_table->setSortingEnabled(true);
    // Columns grow to show their entries in full (only the rows on screen are
    // measured); the text, last, takes what is left.
    connect(m_table->model(), &QAbstractItemModel::modelReset, m_table, [this] {
        const QAbstractItemView* table = m_table;
        QHeaderView* header = m_table->horizontalHeader();
        for (int column = 0; column + 1 < header->count(); ++column)
            header->resizeSection(
                column, std::max(header->sectionSize(column), std::max(table->sizeHintForColumn(column),
                                                                       header->sectionSizeHint(column))));
    });
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lblStatus"));
    m_status->setAccessibleName(QStringLiteral("Status"));
}

QWidget* AuditTrailWindow::createButtons()
{
    auto* bar = new QWidget(this);
    bar->setAccessibleName(QStringLiteral("Exports"));
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_status, 1);
    QPushButton* csv = button(QStringLiteral("Export &CSV..."), QStringLiteral("cmdExportCsv"),
                              QStringLiteral("Export CSV"), bar);
    QPushButton* pdf = button(QStringLiteral("Export &PDF..."), QStringLiteral("cmdExportPdf"),
                              QStringLiteral("Export PDF"), bar);
    QPushButton* print =
        button(QStringLiteral("P&rint..."), QStringLiteral("cmdPrint"), QStringLiteral("Print"), bar);
    QPushButton* close =
        button(QStringLiteral("Cl&ose"), QStringLiteral("cmdClose"), QStringLiteral("Close"), bar);
    for (QPushButton* b : {csv, pdf, print, close})
        layout->addWidget(b);
    connect(csv, &QPushButton::clicked, this, &AuditTrailWindow::ExportCsv);
    connect(pdf, &QPushButton::clicked, this, &AuditTrailWindow::ExportPdf);
    connect(print, &QPushButton::clicked, this, &AuditTrailWindow::Print);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    return bar;
}

void AuditTrailWindow::createLayout()
{
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_chain);
    layout->addWidget(m_filterBar);
    layout->addWidget(m_table, 1);
    layout->addWidget(createButtons());
}

void AuditTrailWindow::applyFilter(const AuditFilter& filter)
{
    // A text filter over a million entries takes about a second on the store.
    const Hourglass busy;
    m_filter = filter;
    m_status->clear();
    m_sources.setFilter(filter);
}

void AuditTrailWindow::showReadFailure(const QString& error)
{
    showError(QStringLiteral("The audit trail cannot be read.\n\n") + error);
}

void AuditTrailWindow::showError(const QString& text)
{
    Messages::show({text, WindowTitle, MessageIcon::Critical, MessageButton::Ok, MessageButton::Ok, this});
}

// The file dialog leaves replacing a file to this window, which asks the
// same question for every export.
QString AuditTrailWindow::chooseFile(const QString& caption, const QString& filter, const QString& suffix)
{
    QFileDialog dialog(this, caption, QDir::homePath(), filter);
    dialog.setObjectName(QStringLiteral("dlgExportFile"));
    dialog.setAccessibleName(caption);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(suffix);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.selectFile(QStringLiteral("Audit Trail.") + suffix);
    if (Dialogs::exec(dialog) != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    const QString path = dialog.selectedFiles().constFirst();
    if (QFile::exists(path) &&
        Messages::show({QStringLiteral("\"%1\" already exists.\nDo you want to replace it?")
                            .arg(QDir::toNativeSeparators(path)),
                        WindowTitle, MessageIcon::Question, MessageButton::Yes | MessageButton::No,
                        MessageButton::No, this}) != MessageButton::Yes)
        return {};
    return path;
}

AuditPrintoutTitle AuditTrailWindow::printoutTitle() const
{
    return {m_sources.site, m_sources.printedBy, QDateTime::currentDateTime(),
            AuditExport::filterInWords(m_filter), m_chain->statusText()};
}

void AuditTrailWindow::ExportCsv()
{
    exportTo(QStringLiteral("CSV"));
}

void AuditTrailWindow::ExportPdf()
{
    exportTo(QStringLiteral("PDF"));
}

void AuditTrailWindow::exportTo(const QString& kind)
{
    const QString suffix = kind.toLower();
    const QString path = chooseFile(QStringLiteral("Export Audit Trail as ") + kind,
                                    QStringLiteral("%1 files (*.%2)").arg(kind, suffix), suffix);
    if (path.isEmpty())
        return;
    AuditExport exporter(m_sources.entries, AuditExport::filterInWords(m_filter), m_sources.record);
    QString error;
    std::optional<Hourglass> busy(std::in_place);
    const AuditExport::Outcome outcome = suffix == QLatin1String("csv")
                                             ? exporter.writeCsv(path, &error)
                                             : exporter.writePdf(path, printoutTitle(), &error);
    busy.reset();
    // A refused record has been reported by the manager already.
    if (outcome == AuditExport::Outcome::Failed)
        showError(error);
    if (outcome == AuditExport::Outcome::Written)
        m_status->setText(QStringLiteral("%1 entries exported to \"%2\".")
                              .arg(exporter.entryCount())
                              .arg(QDir::toNativeSeparators(path)));
}

void AuditTrailWindow::Print()
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(QPageLayout::Landscape);
    printer.setDocName(WindowTitle);
    QPrintDialog dialog(&printer, this);
    dialog.setObjectName(QStringLiteral("dlgPrint"));
    dialog.setAccessibleName(QStringLiteral("Print the audit trail"));
    if (Dialogs::exec(dialog) != QDialog::Accepted)
        return;
    if (PrintOn(printer))
        m_status->setText(QStringLiteral("Printed."));
}

bool AuditTrailWindow::PrintOn(QPrinter& printer)
{
    QPainter painter;
    if (!painter.begin(&printer)) {
        showError(QStringLiteral("The printer \"%1\" cannot be used.").arg(printer.printerName()));
        return false;
    }
    AuditPrintout printout(printoutTitle(), m_sources.entries);
    QString error;
    std::optional<Hourglass> busy(std::in_place);
    bool done = printout.paint(painter, printer, &error);
    busy.reset();
    const QString where = printer.outputFileName().isEmpty()
                              ? printer.printerName()
                              : QDir::toNativeSeparators(printer.outputFileName());
    // Recorded before the job is handed over: a printout the trail does not know of is never made.
    done = done && m_sources.record(AuditExport::recordText(QStringLiteral("printed on"), where,
                                                            AuditExport::filterInWords(m_filter),
                                                            printout.entryCount()));
    const bool abandoned = !done && printer.abort();
    painter.end();
    // Printing to a file cannot always be called off half-way; the file goes instead.
    if (!done && !abandoned && !printer.outputFileName().isEmpty())
        QFile::remove(printer.outputFileName());
    if (!done && !error.isEmpty())
        showError(error);
    return done;
}

} // namespace nebra
