// The security manager on the server back end, where it differs from the
// embedded one (that only the administrator's file chooses the server is
// SecuritySettingsTest's): a server that cannot be reached at start-up
// means no manager (no unsecured run), and a connection lost mid-session
// refuses every check and entry until the server is back, then carries on.

#include "ManagerSite.h"
#include "MessageRecorder.h"
#include "NebraSecurityManager.h"
#include "ServerSecurityBackend.h"
#include "TestFiles.h"

#include <QtTest>

using namespace nebra;
using namespace nebra::test;

class ServerManagerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unreachableServerMeansNoManager()
    {
        UserFolders folders;
        writeFile(folders.systemSettingsFile(),
                  "[Settings]\nSecurityConfigured=true\n[Security]\nBackend=postgresql\nServer=" +
                      QFile::encodeName(folders.root()) + "/no-server\n");
        QString error;
        QVERIFY(!NebraSecurityManager::create(SettingsStore(), {}, &error));
        QVERIFY2(error.startsWith(QLatin1String("The security server cannot be reached")), qPrintable(error));
    }

    void lostConnectionRefusesUntilTheServerIsBack()
    {
        qputenv("NEBRA_TEST_SECURITY_BACKEND", "postgresql");
        ManagerSite site({"General/RunProtocol"});
        MessageRecorder messages;
        const std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
        QVERIFY(manager && manager->IsOperationAllowed("General", "RunProtocol"));

        site.stopServer();
        QVERIFY(!manager->IsOperationAllowed("General", "RunProtocol"));
        QCOMPARE(messages.count(), 1);
        QVERIFY2(messages.last().text.startsWith(QLatin1String("The security database cannot be read.")),
                 qPrintable(messages.last().text));
        // The entry's message is NebraSecurityManagerTest's (auditEntryThatCannotBeCommittedIsReported).
        QVERIFY(!manager->AddAuditTrailEntry("General", "While down"));
        QCOMPARE(messages.count(), 2);

        site.startServer();
        QVERIFY(manager->IsOperationAllowed("General", "RunProtocol"));
        QVERIFY(manager->AddAuditTrailEntry("General", "After the restart"));
        QCOMPARE(messages.count(), 2);
        manager->SessionLogOut();
        const QStringList texts = site.auditTexts();
        QVERIFY(!texts.contains("While down"));
        QCOMPARE(texts.count("After the restart"), 1);
        QCOMPARE(texts.last(), "Log out");
    }

    // The server ended the session (its last use lies beyond the idle minutes):
    // the next activity the Organiser reports ends it here too, as a time-out.
    void theServerEndsAnIdleSession()
    {
        qputenv("NEBRA_TEST_SECURITY_BACKEND", "postgresql");
        ManagerSite site({"General/RunProtocol"});
        MessageRecorder messages;
        DialogScript dialogs;
        qint64 now = 0;
        QString error;
        const std::unique_ptr<NebraSecurityManager> manager =
            NebraSecurityManager::create(SettingsStore(), {[&now] { return now; }, 0}, &error);
        QVERIFY2(manager, qPrintable(error));
        dialogs.logIn("jsmith", "correct horse");
        QVERIFY(manager->LogIn(nullptr));
        QSignalSpy loggedOut(manager.get(), &NebraSecurityManager::UserLoggedOut);
        site.ageSessions(SecuritySettings::DefaultTimeOutMinutes + 1);
        // The workstation's own timer is far from its end.
        now += (ServerSecurityBackend::KeepAliveSeconds + 1) * 1000;
        manager->ResetTimeOut();
        QTRY_COMPARE(loggedOut.count(), 1);
        QCOMPARE(loggedOut.first().at(1).toInt(), int(NebraSecurityManager::TimedOut));
        QCOMPARE(site.auditTexts().last(),
                 "Session timed out on the server after 15 minutes without activity");
        QCOMPARE(messages.count(), 0);
    }
};

QTEST_MAIN(ServerManagerTest)
#include "ServerManagerTest.moc"
