// Test helper: appends audit entries to the security database named on the
// command line (database, key file, head file) as fast as it can, and
// writes "committed <sequence>" on standard output after each append has
// returned, until it is killed.
//
//   audit-appender DATABASE KEYFILE HEADFILE

#include "SecurityStore.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    nebra::SecuritySettings settings;
    settings.databasePath = args[1];
    settings.siteKeyFile = args[2];
    settings.chainHeadFile = args[3];
    QString error;
    const std::unique_ptr<nebra::SecurityStore> store = nebra::SecurityStore::open(settings, &error);
    if (!store) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 1;
    }
    for (int i = 1;; ++i) {
        const nebra::AuditAppendResult result = store->audit().append(
            "appender", "General", QStringLiteral("Entry number %1 of the appender").arg(i));
        if (result.sequence == 0 || !result.error.isEmpty()) {
            std::fprintf(stderr, "%s\n", qPrintable(result.error));
            return 1;
        }
        std::printf("committed %lld\n", static_cast<long long>(result.sequence));
        std::fflush(stdout);
    }
}
