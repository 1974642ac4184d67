#include "SecondProcess.h"
#include "SecurityStore.h"
#include "SettingsStore.h"
#include "SuiteSettings.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QProcess>
#include <QTest>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace nebra;
using namespace nebra::test;

// The site's policy is read from /etc/xdg/Nebra/Suite.ini and nowhere else:
// a user's environment cannot move it, replace it with a file of their own
// or make their own file the policy, and a policy file that others than
// root could change is not trusted. The real program is shown a policy at
// the real path in a private mount namespace, never the machine's own.
class PolicyFileTest : public QObject
{
    Q_OBJECT

    // A site policy naming database, as the administrator's create leaves it.
    static void writePolicy(const QString& path, const QString& database)
    {
        writeFile(path, QStringLiteral("[Settings]\nSecurityConfigured=true\n[Security]\nDatabasePath=%1\n")
                            .arg(database)
                            .toUtf8());
        QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                QFileDevice::ReadGroup | QFileDevice::ReadOther));
    }

private Q_SLOTS:
    // 5: XDG_CONFIG_HOME pointed at the policy's folder makes the policy the
    // user's own file: it stays the policy, and no personal store is used.
    void theUsersFileIsNeverThePolicy()
    {
        UserFolders folders;
        const QString policy = folders.systemSettingsFile();
        writeFile(policy,
                  "[Settings]\nSecurityConfigured=true\n[Security]\nBackend=postgresql\nServer=/run/site\n");
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(QFileInfo(policy).absolutePath() + "/.."));
        SettingsStore store;
        QVERIFY(!store.warning().isEmpty() && !store.setValue("Settings/SecurityConfigured", false));
        const SecuritySettings settings = SecuritySettings::fromStore(store);
        QVERIFY(settings.systemWide);
        QCOMPARE(settings.backend, SecuritySettings::Backend::Server);
        QCOMPARE(settings.server.host, "/run/site");
    }

    // 1, 5: a policy that cannot be used, or that others than its owner could
    // change or replace in its folder, is not trusted: security refuses to
    // start, whatever the user's own file says, naming the fix where there is one.
    void aPolicyThatCannotBeUsedOrTrustedIsRefused_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<QString>("fix"); // said with the path; empty: only that it is refused
        // clang-format off
        QTest::newRow("binary") << "binary" << "";
        QTest::newRow("a folder") << "a folder" << "";
        QTest::newRow("unreadable") << "unreadable" << "";
        QTest::newRow("file writable by the group") << "file 0664" << "chmod go-w";
        QTest::newRow("file writable by everyone") << "file 0666" << "chmod go-w";
        QTest::newRow("folder writable by the group") << "folder 0775" << "chmod go-w";
        QTest::newRow("file of another user") << "owner" << "chown";
        // clang-format on
    }

    void aPolicyThatCannotBeUsedOrTrustedIsRefused()
    {
        UserFolders folders;
        QFETCH(QString, damage);
        QFETCH(QString, fix);
        if (damage == QLatin1String("owner") && ::geteuid() != 0)
            QSKIP("Giving the file to another user needs root.");
        if (damage == QLatin1String("unreadable") && ::geteuid() == 0)
            QSKIP("The superuser reads every file, so none is unreadable to it.");
        const QString policy = folders.systemSettingsFile();
        writePolicy(policy, folders.root() + "/site.db");
        const QString target = damage.startsWith("folder") ? QFileInfo(policy).absolutePath() : policy;
        if (damage == QLatin1String("binary"))
            writeFile(policy, QByteArray("[Settings]\0\x01\x02", 13));
        else if (damage == QLatin1String("a folder"))
            QVERIFY(QFile::remove(policy) && QDir().mkpath(policy));
        else if (damage == QLatin1String("unreadable"))
            QVERIFY(QFile::setPermissions(policy, QFileDevice::Permissions()));
        else if (damage == QLatin1String("owner"))
            QCOMPARE(::chown(QFile::encodeName(policy).constData(), 65534, 65534), 0);
        else
            QCOMPARE(
                ::chmod(QFile::encodeName(target).constData(), damage.section(' ', 1).toUInt(nullptr, 8)), 0);
        QVERIFY(SettingsStore().setValue("Settings/SecurityConfigured", false)); // the user's own file
        SettingsStore store;
        const QString problem = store.systemProblem();
        QVERIFY2(!problem.isEmpty() && (fix.isEmpty() || (problem.contains(fix) && problem.contains(target))),
                 qPrintable(problem));
        QVERIFY(SuiteSettings(store).SecurityConfigured());
        QString error;
        QVERIFY(!SecurityStore::open(SecuritySettings::fromStore(store), &error));
        QCOMPARE(error, problem);
        QCOMPARE(runProgram(QStringLiteral(SECADMIN), {"status"}).exitCode, 1);
    }

    // 11: a user outside the site group is told to join it, never to open
    // the file (which may hold the server's password) to everyone.
    void aNonMemberIsToldTheGroup()
    {
        UserFolders folders;
        const QString policy = folders.systemSettingsFile();
        writePolicy(policy, folders.root() + "/site.db");
        QVERIFY(QFile::setPermissions(policy, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                  QFileDevice::ReadGroup));
        QString said;
        if (::geteuid() == 0) {
            // root reads every file: the program runs as a user of no group of the file's.
            const group* users = ::getgrnam("users");
            QVERIFY(users);
            QCOMPARE(::chown(QFile::encodeName(policy).constData(), 0, users->gr_gid), 0);
            QVERIFY(QFile::setPermissions(folders.root(),
                                          QFile::permissions(folders.root()) | QFileDevice::ExeOther));
            const ProcessRun status =
                runProgram("setpriv", {"--reuid=65534", "--regid=65534", "--clear-groups",
                                       QStringLiteral(SECADMIN), "status"});
            QCOMPARE(status.exitCode, 1);
            said = status.out;
        } else {
            QVERIFY(QFile::setPermissions(policy, QFileDevice::ReadGroup)); // not even its owner reads it
            said = SettingsStore().systemProblem();
        }
        QVERIFY2(said.contains("add you to the group") && said.contains("0640") && !said.contains("0644"),
                 qPrintable(said));
    }

    // 5: the real program, with a policy at the real path (a folder of the
    // test's bound over /etc/xdg in a mount namespace of its own), writes the
    // policy there with create from a desktop session's environment, and then
    // reads that policy whatever XDG_CONFIG_DIRS says. (XDG_CONFIG_HOME at the
    // policy's folder: theUsersFileIsNeverThePolicy.)
    void theProgramReadsAndWritesOnlyTheFixedPolicy()
    {
        if (::geteuid() != 0)
            QSKIP(
                "Showing the program a policy at /etc/xdg needs root (a bind mount in a private namespace).");
        UserFolders folders;
        const QString etc = folders.root() + "/etc-xdg";
        QVERIFY(QDir().mkpath(etc + "/xdg-desk"));
        // The user's own folder, first in the list when status runs, holds a policy that switches security
        // off.
        writeFile(folders.root() + "/desk/Nebra/Suite.ini",
                  "[Settings]\nSecurityConfigured=false\n[Security]\nDatabasePath=/home/mallory/mine.db\n");
        const ProcessRun ran = runProgram(
            "unshare", {"-m", "--propagation", "private", "sh", "-c",
                        "mount --bind \"$0\" /etc/xdg && "
                        "env XDG_CONFIG_DIRS=/etc/xdg/xdg-desk:/etc/xdg \"$1\" create --database \"$2\" && "
                        "env XDG_CONFIG_DIRS=\"$3\":/etc/xdg \"$1\" status",
                        etc, QStringLiteral(SECADMIN_PROGRAM), folders.root() + "/site/Security.db",
                        folders.root() + "/desk"});
        if (ran.err.contains(QLatin1String("unshare failed")) || ran.err.contains(QLatin1String("mount:")))
            QSKIP(qPrintable("No private mount namespace here: " + ran.err));
        QVERIFY2(ran.exitCode == 0, qPrintable(ran.out + ran.err));
        for (const char* said : {"\"/etc/xdg/Nebra/Suite.ini\" now turns security on",
                                 "Policy: set by the system-wide file \"/etc/xdg/Nebra/Suite.ini\"",
                                 "SecurityConfigured = true (system file)"})
            QVERIFY2(ran.out.contains(QLatin1String(said)), qPrintable(ran.out));
        QVERIFY(!QFileInfo::exists(etc + "/xdg-desk/Nebra/Suite.ini"));
        QVERIFY(QFileInfo::exists(etc + "/Nebra/Suite.ini"));
    }
};

QTEST_GUILESS_MAIN(PolicyFileTest)
#include "PolicyFileTest.moc"
