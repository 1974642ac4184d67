#pragma once

#include "DocumentFolders.h"
#include "DocumentRecord.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

namespace nebra {

// verify-documents: every document under a folder against its newest
// record, on either back end. A line for each that needs a reviewer:
// "altered" (differs from its newest record, or the record was changed
// behind the suite's back), "changed outside the suite" (its newest record
// is a change no suite program made, not yet accepted), "missing" (recorded,
// gone, its removal not recorded), "unrecorded" (never recorded), and for
// information "accepted change".
class DocumentReport
{
public:
    enum class Finding
    {
        Altered,
        ChangedOutside,
        Missing,
        Unrecorded,
        AcceptedChange,
    };
    struct Line
    {
        Finding finding;
        QString path;
    };

    // Reads every document at or below within (all of them when empty). Sorted by path.
    static QList<Line> check(const DocumentFolders& folders, const QString& within,
                             const QHash<QString, DocumentRecord>& records);
    // "altered: <path>" a line; or as CSV (finding, path) with a header.
    static QByteArray text(const QList<Line>& lines);
    static QByteArray csv(const QList<Line>& lines);
    // 0 when no line but accepted changes, 1 otherwise.
    static int exitStatus(const QList<Line>& lines);

private:
    static std::optional<Finding> findingFor(const QString& path,
                                             const std::optional<DocumentRecord>& record);
    static QString label(Finding finding);
};

} // namespace nebra
