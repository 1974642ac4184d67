#pragma once

#include <QDateTime>
#include <QString>
#include <QtGlobal>

namespace nebra {

// Which audit entries a reviewer asks for. A field left empty (or an
// invalid time) does not narrow the view.
struct AuditFilter
{
    QDateTime from;   // inclusive
    QDateTime to;     // exclusive
    QString userName; // the whole name, without regard to case
    QString area;     // the whole area, as recorded
    QString text;     // a part of the entry's text, without regard to case
    // Not a narrowing the reviewer chooses: when above 0, entries after this
    // one are left out, so that a view read page by page stays one snapshot
    // while new entries are recorded.
    qint64 throughSequence = 0;

    bool operator==(const AuditFilter& other) const = default;
    // True when the reviewer narrows nothing (throughSequence aside).
    bool isEmpty() const
    {
        return !from.isValid() && !to.isValid() && userName.isEmpty() && area.isEmpty() && text.isEmpty();
    }
};

// The columns of the audit trail, in the order a reviewer sees them.
enum class AuditColumn
{
    Sequence,
    Time,
    User,
    Workstation,
    Area,
    Text
};

// How the entries of a view are ordered; the sequence number breaks ties,
// so a page boundary never splits or repeats equal entries.
struct AuditOrder
{
    AuditColumn column = AuditColumn::Sequence;
    Qt::SortOrder order = Qt::DescendingOrder; // newest first

    bool operator==(const AuditOrder& other) const = default;
};

} // namespace nebra
