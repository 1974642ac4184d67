#pragma once

#include "AuditExport.h"
#include "AuditQuery.h"
#include "AuditTrail.h"

#include <QWidget>

#include <functional>

class QAbstractItemModel;
class QLabel;
class QPrinter;
class QPushButton;
class QTableView;

namespace nebra {

class AuditChainStatus;
class AuditFilterBar;

// What the audit trail viewer reads and asks of the security manager.
struct AuditTrailWindowSources
{
    // The trail's rows: newest first, sorted when a header is clicked.
    QAbstractItemModel* model = nullptr;
    // Narrows the model to the filter.
    std::function<void(const AuditFilter&)> setFilter;
    // The model's whole filtered, sorted view, for the exports.
    AuditEntrySource entries;
    // Gives the check of the whole chain, which then runs on a thread of its own.
    std::function<std::function<AuditVerification()>()> verifier;
    // Records an entry in area "Security"; true once committed. When it
    // answers false the manager has told the user why.
    AuditExport::Recorder record;
    QString site;      // the site named in the title block of a printout
    QString printedBy; // the user name and full name
    QStringList areas; // offered by the area filter
};

// The audit trail viewer: the filter bar, the chain status, the table of
// entries and the exports (CSV, PDF) and printing of the filtered view. Each
// export and each printout is recorded in the trail before the file takes
// its name or the job goes to the printer; one that cannot be recorded is
// not made.
class AuditTrailWindow : public QWidget
{
    Q_OBJECT
public:
    explicit AuditTrailWindow(AuditTrailWindowSources sources, QWidget* parent = nullptr);

    AuditFilterBar& filterBar() const { return *m_filterBar; }
    AuditChainStatus& chainStatus() const { return *m_chain; }
    QTableView& table() const { return *m_table; }
    AuditFilter filter() const { return m_filter; }

    void ExportCsv();
    void ExportPdf();
    void Print();
    // Draws the view on a printer the print dialog has set up; used by
    // Print() after the dialog. False when nothing was printed.
    bool PrintOn(QPrinter& printer);

    // A message for a failed read of the trail.
    void showReadFailure(const QString& error);

private:
    void createTable();
    QWidget* createButtons();
    void createLayout();
    void applyFilter(const AuditFilter& filter);
    QString chooseFile(const QString& caption, const QString& filter, const QString& suffix);
    AuditPrintoutTitle printoutTitle() const;
    void exportTo(const QString& kind);
    void showError(const QString& text);

    AuditTrailWindowSources m_sources;
    AuditFilter m_filter;
    AuditFilterBar* m_filterBar = nullptr;
    AuditChainStatus* m_chain = nullptr;
    QTableView* m_table = nullptr;
    QLabel* m_status = nullptr;
};

} // namespace nebra
