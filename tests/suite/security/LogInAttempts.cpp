// Test helper: tries to log in COUNT times as USER with PASSWORD against the
// security database that the settings name (the policy of the system-wide
// file, as the suite's programs read it), and writes each attempt's
// LogInStatus as a number on a line of its own.
//
//   log-in-attempts USER PASSWORD COUNT

#include "Authenticator.h"
#include "SecretBytes.h"
#include "SecurityStore.h"
#include "SettingsStore.h"
#include "UserFolders.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    nebra::test::UserFolders::adoptTestPolicyFile();
    const QStringList args = QCoreApplication::arguments();
    QString error;
    const std::unique_ptr<nebra::SecurityStore> store =
        nebra::SecurityStore::open(nebra::SecuritySettings::fromStore(nebra::SettingsStore()), &error);
    if (!store) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 1;
    }
    nebra::Authenticator authenticator(*store);
    for (int i = 0; i < args[3].toInt(); ++i) {
        const nebra::LogInResult result =
            authenticator.authenticate(args[1], nebra::SecretBytes(args[2].toUtf8()));
        std::printf("%d\n", int(result.status));
        std::fflush(stdout);
        if (result.status == nebra::LogInStatus::Error)
            std::fprintf(stderr, "%s\n", qPrintable(result.error));
    }
    return 0;
}
