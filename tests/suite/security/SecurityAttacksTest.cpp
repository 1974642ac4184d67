#include "IdleTimer.h"
#include "SuiteSettings.h"
#include "TestFiles.h"
#include "ToolSite.h"

#include <QProcess>
#include <QTest>

#include <grp.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

using namespace nebra;
using namespace nebra::test;

namespace {

QString myGroup()
{
    return QString::fromLocal8Bit(getgrgid(getegid())->gr_name);
}

// A site set up as an administrator does with nebra-secadmin: a system-wide
// policy naming the database, jsmith with one right, mallory with none, and a
// role "Admins" with every right.
struct Site : ToolSite
{
    explicit Site(const QStringList& createOptions = {})
        : ToolSite(QStringList{"--admin-group", myGroup()} + createOptions,
                   {{"grant", "jsmith", "AuthorisationsGeneral", "OpenProtocol"},
                    {"add-role", "Admins"},
                    {"grant-role", "Admins", "*", "*"}})
    {
    }
};

// Another user of the site group runs the program (as nobody, through setpriv).
const QStringList AsAnotherUser{"setpriv", "--reuid=65534", "--regid=users", "--clear-groups"};

} // namespace

// The attacks of a local user (and of a careless administrator) on the
// security store, each carried out for real against nebra-secadmin and the
// library: edits with an SQLite connection of their own, a second user id,
// parallel processes, a pseudo-terminal. Each must now fail.
class SecurityAttacksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // 1: the user's own settings file cannot switch security off or weaken it (the
    // "[Security]" group is read from one file as a whole: one row for a path, one for a number).
    void userFileCannotWeakenTheSitePolicy()
    {
        // clang-format off
        for (const auto& [key, userValue, effective] : std::initializer_list<std::tuple<QString, QString, QString>>{
            {"Settings/SecurityConfigured", "false", "true"}, // switch security off
            {"Security/DatabasePath", "/home/mallory/mine.db", "db"}, // own database
            {"Security/LockoutThreshold", "1000", "5"} // no lockout
        }) {
            // clang-format on
            Site o;
            SettingsStore user;
            QVERIFY(user.setValue(key, userValue));
            SettingsStore store;
            const SecuritySettings s = SecuritySettings::fromStore(store);
            const QHash<QString, QString> values = {
                {"Settings/SecurityConfigured", SuiteSettings(store).SecurityConfigured() ? "true" : "false"},
                {"Security/DatabasePath", s.databasePath},
                {"Security/LockoutThreshold", QString::number(s.lockoutThreshold)}};
            QCOMPARE(values.value(key), effective == QLatin1String("db") ? o.database() : effective);
            // status names where each value came from.
            const ProcessRun status = runProgram(SECADMIN, {"status"});
            QCOMPARE(status.exitCode, 0);
            QVERIFY2(status.out.contains(QStringLiteral("DatabasePath = %1 (system file \"%2\")")
                                             .arg(o.database(), o.folders.systemSettingsFile())),
                     qPrintable(status.out));
        }
    }

    // 2a, 6: no file of the store can be read by other users; a shared store belongs to the site group.
    void storeFilesAreClosedToOtherUsers()
    {
        Site o({"--group", myGroup()});
        // SQLite removes the -wal and -shm files when the last connection closes: keep one open.
        const std::unique_ptr<SecurityStore> store = o.fixture.open();
        QCOMPARE(Authenticator(*store).authenticate("jsmith", SecretBytes("correct horse")).status,
                 LogInStatus::Success);
        struct stat folder = {};
        QCOMPARE(::stat(QFile::encodeName(QFileInfo(o.database()).absolutePath()).constData(), &folder), 0);
        QCOMPARE(folder.st_mode & 07777, mode_t(02770));
        for (const char* suffix : {"", "-wal", "-shm", ".head", ".head.lock", ".key"}) {
            const QString path = o.database() + suffix;
            struct stat st = {};
            QVERIFY2(::stat(QFile::encodeName(path).constData(), &st) == 0, qPrintable(path));
            QVERIFY2((st.st_mode & 0777) == (path.endsWith(QLatin1String(".key")) ? 0640 : 0660),
                     qPrintable(QStringLiteral("%1: %2").arg(path).arg(st.st_mode, 0, 8)));
            QCOMPARE(st.st_gid, getegid());
        }
    }

    // 4: a rollback of the database together with an old head goes unnoticed by the head, not by the anchor.
    void rollbackIsCaughtByTheAnchorAndAKeyIsNotReused()
    {
        Site o;
        o.fixture.tamper({"PRAGMA wal_checkpoint(TRUNCATE)"});
        const QString copy = o.folders.root() + "/copy";
        for (const char* suffix : {"", ".head"})
            QVERIFY(QFile::copy(o.database() + suffix, copy + suffix));
        QCOMPARE(o.secadmin({"disable-user", "mallory"}).exitCode, 0);
        const QString point = o.secadmin({"anchor"}).out.trimmed();
        QCOMPARE(o.secadmin({"verify", "--anchor", point}).exitCode, 0);

        for (const char* suffix : {"", ".head", "-wal", "-shm"})
            QFile::remove(o.database() + suffix);
        for (const char* suffix : {"", ".head"})
            QVERIFY(QFile::copy(copy + suffix, o.database() + suffix));
        QVERIFY(QFile::setPermissions(o.database(), QFileDevice::ReadOwner | QFileDevice::WriteOwner));
        QCOMPARE(o.secadmin({"verify"}).exitCode, 0); // the embedded store's limit
        QVERIFY(refusedSaying(o.secadmin({"verify", "--anchor", point}), "no longer reaches the anchor"));
        // 14: with the database gone, create does not silently make a new one with a key others may hold.
        for (const char* suffix : {"", "-wal", "-shm", ".head"})
            QFile::remove(o.database() + suffix);
        QVERIFY(refusedSaying(o.secadmin({"create", "--per-user"}), "--reuse-key"));
        QVERIFY(!QFileInfo::exists(o.database()));
        QCOMPARE(o.secadmin({"create", "--per-user", "--reuse-key"}).exitCode, 0);
    }

    // 5: a disabled account answers alike whatever password is typed, and every attempt is recorded
    // (a locked one: AuthenticatorTest).
    void disabledAccountIsNoPasswordOracleAndNamesCompareWithoutCase()
    {
        Site o;
        QCOMPARE(o.secadmin({"disable-user", "jsmith"}).exitCode, 0);
        const int entries = o.fixture.auditTexts().size();
        QCOMPARE(o.logIn("jsmith", "wrong"), LogInStatus::Disabled);
        QCOMPARE(o.logIn("jsmith", "correct horse"), LogInStatus::Disabled);
        QCOMPARE(o.fixture.auditTexts().size(), entries + 2);
        // 13: user names compare without case in every script.
        QCOMPARE(o.secadmin({"add-user", "Ærøskøbing"}, "correct horse\n").exitCode, 0);
        QCOMPARE(o.logIn("ærØSKØBING", "correct horse"), LogInStatus::Success);
        QVERIFY(refusedSaying(o.secadmin({"add-user", "ÆRØSKØBING"}, "another horse\n"), "already a user"));
    }

    // 7, 2c: a second user of the site group can log in although the administrator made the lock
    // file, and cannot administer (that needs root or the admin group).
    void anotherUserOfTheSiteGroupLogsInButDoesNotAdminister()
    {
        if (geteuid() != 0)
            QSKIP("Running as another user needs root (setpriv).");
        Site o({"--group", "users"});
        QVERIFY(QFile::setPermissions(o.folders.root(),
                                      QFile::permissions(o.folders.root()) | QFileDevice::ExeOther));
        QCOMPARE(o.logIn("jsmith", "correct horse"), LogInStatus::Success);
        const QString lock = o.database() + ".head.lock";
        QVERIFY(QFile::setPermissions(lock, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                QFileDevice::ReadGroup | QFileDevice::ReadOther));
        const ProcessRun second =
            runProgram(STORE_WORKER, {"log-in", "jsmith", "correct horse", "1"}, {}, AsAnotherUser);
        QVERIFY2(second.exitCode == 0, qPrintable(second.err));
        QCOMPARE(second.out, QStringLiteral("%1\n").arg(int(LogInStatus::Success)));
        QCOMPARE(o.fixture.auditTexts().last(), "Log in");
        QVERIFY(refusedSaying(runProgram(SECADMIN, {"grant", "mallory", "*", "*"}, {}, AsAnotherUser),
                              "may administer"));
        QString error;
        QVERIFY(o.fixture.open()->users().rightsOf("mallory", &error).isEmpty());
        QCOMPARE(o.secadmin({"verify"}).exitCode, 0);
    }

    // 8, 2c: with the store full nothing happens unrecorded: no log-in, no
    // administration change, no entry lost behind a success.
    void aFullStoreRecordsNothingAndChangesNothing()
    {
        Site o;
        QCOMPARE(o.logIn("jsmith", "guess"), LogInStatus::Refused);
        const QStringList before = o.fixture.auditTexts();
        o.fixture.fillUp();
        QCOMPARE(o.logIn("jsmith", "correct horse"), LogInStatus::Error);
        QVERIFY(refusedSaying(o.secadmin({"grant", "mallory", "*", "*"}), "disk is full"));
        QString error;
        QCOMPARE(o.fixture.open()->users().find("jsmith", &error)->failedLogIns, 1); // no success recorded
        QVERIFY(o.fixture.open()->users().rightsOf("mallory", &error).isEmpty());
        QCOMPARE(o.fixture.auditTexts(), before);
    }

    // 9: the idle time-out runs on a clock that counts a suspend.
    void idleClockCountsSuspend()
    {
        timespec boot = {};
        clock_gettime(CLOCK_BOOTTIME, &boot);
        QVERIFY(qAbs(IdleTimer::bootClock()() - (qint64(boot.tv_sec) * 1000 + boot.tv_nsec / 1000000)) <
                1000);
    }

    // 13: guesses from parallel processes stop at the threshold.
    void parallelGuessesStopAtTheLock()
    {
        Site o;
        QVERIFY(SettingsStore(o.folders.systemSettingsFile()).setValue("Security/LockoutThreshold", "3"));
        QProcess guessers[4];
        for (QProcess& guesser : guessers)
            guesser.start(STORE_WORKER, {"log-in", "jsmith", "guess", "4"});
        for (QProcess& guesser : guessers)
            QVERIFY(guesser.waitForFinished(60000));
        const QStringList texts = o.fixture.auditTexts();
        QCOMPARE(texts.count("Failed log in: wrong password"), 3);
        QCOMPARE(texts.count("Account locked after 3 failed log ins"), 1);
        QCOMPARE(texts.count("Log in refused: account locked"), 16 - 3);
        QString error;
        QCOMPARE(o.fixture.open()->users().find("jsmith", &error)->failedLogIns, 3);
    }

    // 14: Ctrl-C at the password prompt leaves the terminal echoing.
    void ctrlCAtThePromptRestoresEcho()
    {
        Site o;
        int master = -1;
        const QByteArray program = QByteArrayLiteral(SECADMIN);
        const QByteArray db = QFile::encodeName(o.database());
        const pid_t child = forkpty(&master, nullptr, nullptr, nullptr);
        QVERIFY(child >= 0);
        if (child == 0) {
            execl(program.constData(), program.constData(), "--database", db.constData(), "set-password",
                  "jsmith", static_cast<char*>(nullptr));
            _exit(127);
        }
        QByteArray seen;
        char buffer[256];
        QDeadlineTimer deadline(30000);
        while (!seen.contains("New password") && !deadline.hasExpired()) {
            const ssize_t got = read(master, buffer, sizeof buffer);
            if (got > 0)
                seen.append(buffer, got);
        }
        QVERIFY2(seen.contains("New password"), seen.constData());
        termios terminal = {};
        QTRY_VERIFY_WITH_TIMEOUT(tcgetattr(master, &terminal) == 0 && !(terminal.c_lflag & ECHO), 10000);
        QCOMPARE(write(master, "\x03", 1), ssize_t(1)); // Ctrl-C
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGINT);
        QCOMPARE(tcgetattr(master, &terminal), 0);
        QVERIFY(terminal.c_lflag & ECHO); // echoing again
        ::close(master);
    }
};

QTEST_GUILESS_MAIN(SecurityAttacksTest)
#include "SecurityAttacksTest.moc"
