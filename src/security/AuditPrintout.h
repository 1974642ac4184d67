#pragma once

#include "AuditCsv.h"

#include <QDateTime>
#include <QFont>
#include <QRectF>
#include <QString>
#include <QStringList>

class QPagedPaintDevice;
class QPainter;

namespace nebra {

// What the title block of a printed audit trail says.
struct AuditPrintoutTitle
{
    QString site;
    QString printedBy;   // the user name and full name
    QDateTime printedAt; // shown in the local zone, zone named
    QString filter;      // the filter in words
    QString chainStatus;
};

// The audit trail laid out on pages, one drawing for the PDF file and the
// printer: a title block on the first page, the columns' titles on every
// page, one table row per entry with long texts wrapped within their
// column, and "Page N of M" at the foot of every page.
//
// The entries are read twice, first to count the pages and then to draw
// them, so memory stays the same however many entries are printed. When the
// two readings differ (entries were added in between), nothing is claimed:
// paint() fails and the caller discards the output.
class AuditPrintout
{
public:
    AuditPrintout(AuditPrintoutTitle title, AuditEntrySource entries);

    // Draws every page with painter, which is active on device; the caller
    // ends the painter (which completes the file or the print job) or
    // abandons it. False, with *error set, when the entries cannot be read.
    bool paint(QPainter& painter, QPagedPaintDevice& device, QString* error);

    qint64 entryCount() const { return m_count; }
    int pageCount() const { return m_pages; }

    // "2026-11-25 09:14:03 CET", as the table shows the entries' times.
    static QString localTime(const QDateTime& time);

private:
    struct Pass; // one reading of the entries: counting or drawing

    bool run(QPainter& painter, QPagedPaintDevice& device, bool draw, QString* error);
    void startTable(QPainter& painter, Pass& pass) const;
    // Lays out (and when drawing, draws) one entry's row, on a new page if need be.
    bool place(QPainter& painter, QPagedPaintDevice& device, Pass& pass, const AuditEntry& entry) const;
    void setUpPage(QPainter& painter, QPagedPaintDevice& device);
    qreal drawTitleBlock(QPainter& painter, bool draw) const;
    void drawColumnTitles(QPainter& painter, qreal top) const;
    void drawFooter(QPainter& painter, int page) const;
    qreal rowHeight(QPainter& painter, const QStringList& cells) const;
    void drawRow(QPainter& painter, const QStringList& cells, qreal top, qreal height) const;
    static QStringList cellsOf(const AuditEntry& entry);

    AuditPrintoutTitle m_title;
    AuditEntrySource m_entries;
    QRectF m_page;
    QFont m_bodyFont;
    QFont m_headFont;
    QFont m_titleFont;
    qreal m_padding = 0;
    qreal m_columnTitlesHeight = 0;
    qreal m_footerHeight = 0;
    qint64 m_count = 0;
    int m_pages = 0;
    qint64 m_firstSequence = 0;
    qint64 m_lastSequence = 0;
};

} // namespace nebra
