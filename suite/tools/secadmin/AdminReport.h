#pragma once

#include "AuditReport.h"
#include "AuditTrail.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class QIODevice;

namespace nebra {

struct UserRecord;

// What nebra-secadmin says, the same whichever back end holds the store:
// results on standard output, refusals on standard error. The functions
// that end a command return its exit status (0 done, 1 failed, 2 usage).
class AdminReport
{
public:
    AdminReport(QIODevice& out, QIODevice& err);

    void say(const QString& text);
    // "nebra-secadmin: message" on standard error; returns 1.
    int fail(const QString& message);

    // One line: name, full name, state, roles and rights, tab-separated.
    void user(const UserRecord& user, bool hasPassword, const QStringList& roles, const QStringList& rights);
    // The trail as lines, or as CSV into csvPath ("-": standard output).
    int audit(const AuditEntrySource& entries, const QString& csvPath);
    // verify's answer: the chain's result and the rows altered outside the suite.
    int verification(const AuditVerification& result, const std::optional<AuditAnchor>& anchor,
                     const QStringList& alteredRows);
    // The verified newest entry as COUNT:MAC.
    int anchor(const AuditVerification& result);
    // Reports the trail's state, then seals the chain head afresh through reseal.
    int reseal(const AuditVerification& before, const std::function<bool(QString*)>& reseal);

    // Writes bytes to path, replacing a file atomically; "-": standard output.
    bool write(const QByteArray& bytes, const QString& path, QString* error);

    // The --anchor option's value; false (after saying why, exit 2) when it is not one.
    bool parseAnchor(const QString& text, std::optional<AuditAnchor>* anchor);

private:
    QIODevice& m_out;
    QIODevice& m_err;
};

} // namespace nebra
