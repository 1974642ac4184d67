#pragma once

#include "DialogScript.h"
#include "NebraSecurityManager.h"
#include "PostgresServer.h"
#include "SecurityFixture.h"
#include "ServerAdministration.h"
#include "ServerConnection.h"

#include <type_traits>

namespace nebra::test {

// A security manager for the site that the settings name; null, with the
// reason logged, when there is none.
inline std::unique_ptr<NebraSecurityManager> siteManager()
{
    QString error;
    std::unique_ptr<NebraSecurityManager> manager = NebraSecurityManager::create(SettingsStore(), {}, &error);
    if (!manager)
        qWarning("No manager: %s", qPrintable(error));
    return manager;
}

// The same with jsmith logged in through the dialog seam; null when either fails.
inline std::unique_ptr<NebraSecurityManager> loggedInManager(const QString& password = "correct horse")
{
    std::unique_ptr<NebraSecurityManager> manager = siteManager();
    DialogScript dialogs;
    dialogs.logIn("jsmith", password);
    return manager && manager->LogIn(nullptr) ? std::move(manager) : nullptr;
}

// A security site for the manager's behaviour tests, on the back end that
// NEBRA_TEST_SECURITY_BACKEND names: "sqlite" (the default) or
// "postgresql". The same tests run against either; this class hides only
// how the site is made, administered, read and broken. It holds jsmith
// ("correct horse", "Jane Smith", the rights given), and writes the
// "[Security]" settings that point the manager at it.
class ManagerSite
{
public:
    explicit ManagerSite(const QStringList& rights)
    {
        if (!isServer()) {
            m_embedded = std::make_unique<SecuritySite>(rights);
            return;
        }
        QVERIFY2(server().problem().isEmpty(), qPrintable(server().problem()));
        if (!server().isRunning())
            QVERIFY(server().start());
        m_settings = server().superuser();
        m_settings.database = QStringLiteral("site_%1").arg(++s_sites);
        QString error;
        QVERIFY2(ServerSchema::createSite(m_settings, &error), qPrintable(error));
        m_folders = std::make_unique<UserFolders>();
        administer([&rights](ServerAdministration& admin, QString* e) {
            bool ok = admin.setPolicy(SecuritySettings::DefaultLockoutThreshold, 4, e) &&
                      admin.addUser("jsmith", "Jane Smith", SecretBytes("correct horse"), e);
            for (const QString& right : rights)
                ok = ok &&
                     admin.grant("jsmith",
                                 {right.section(QLatin1Char('/'), 0, 0), right.section(QLatin1Char('/'), 1)},
                                 e);
            return ok;
        });
        setSystemValue("Settings/SecurityConfigured", "true");
        setSystemValue("Security/Backend", "postgresql");
        setSystemValue("Security/Server", server().socketFolder());
        setSystemValue("Security/ServerDatabase", m_settings.database);
    }

    ~ManagerSite()
    {
        if (!m_embedded && !server().isRunning())
            server().start();
    }

    static bool isServer() { return qgetenv("NEBRA_TEST_SECURITY_BACKEND") == "postgresql"; }

    // Runs change on an administration of the site: SecurityAdministration
    // or ServerAdministration, which take the same calls.
    template <typename Change> void administer(const Change& change)
    {
        if constexpr (std::is_invocable_v<Change, SecurityAdministration&, QString*>) {
            if (m_embedded) {
                const std::unique_ptr<SecurityStore> store = m_embedded->fixture.open();
                SecurityAdministration admin(*store, "admin");
                QString error;
                QVERIFY2(change(admin, &error), qPrintable(error));
                return;
            }
        }
        if constexpr (std::is_invocable_v<Change, ServerAdministration&, QString*>) {
            if (!m_embedded)
                test::administer(*PostgresServer::connect(m_settings), change);
        }
    }

    // A policy value of "[Security]"; the server keeps its lockout threshold itself.
    void setPolicy(const QString& key, int value)
    {
        if (m_embedded) {
            QVERIFY(SettingsStore().setValue("Security/" + key, value));
            return;
        }
        setSystemValue("Security/" + key, QString::number(value));
        // The server enforces these itself (and tells the workstation at log-in).
        if (key == QLatin1String("TimeOutMinutes"))
            m_idleMinutes = value;
        if (key == QLatin1String("PasswordMinimumLength"))
            m_passwordMinimumLength = value;
        administer([&](ServerAdministration& admin, QString* e) {
            return (key != QLatin1String("LockoutThreshold") || admin.setPolicy(value, 4, e)) &&
                   admin.setSessionPolicy(m_idleMinutes, m_passwordMinimumLength, e);
        });
    }

    QStringList auditTexts()
    {
        if (m_embedded)
            return m_embedded->fixture.auditTexts();
        return column(*PostgresServer::connect(m_settings),
                      "SELECT text FROM nebra.audit_trail ORDER BY seq");
    }

    // Makes every further audit entry fail: the embedded store fills up, the
    // server goes away. Returns the reason that the failures then give.
    QString breakAppends()
    {
        if (m_embedded) {
            m_embedded->fixture.fillUp();
            return "database or disk is full";
        }
        server().stop();
        return "The connection to the security server was lost";
    }

    // Undoes breakAppends.
    void repairAppends()
    {
        if (m_embedded)
            m_embedded->fixture.tamper({"DROP TRIGGER full"});
        else
            startServer();
    }

    // Moves the last use of every open session on the server back by minutes (the server's clock).
    void ageSessions(int minutes)
    {
        script(
            *PostgresServer::connect(m_settings),
            QStringLiteral("UPDATE nebra.sessions SET last_used_utc = last_used_utc - interval '%1 minutes'")
                .arg(minutes));
    }

    void stopServer() { server().stop(); }
    void startServer() { QVERIFY2(server().start(), qPrintable(server().problem())); }

private:
    static PostgresServer& server()
    {
        static PostgresServer instance;
        return instance;
    }
    void setSystemValue(const QString& key, const QString& value)
    {
        SettingsStore system(m_folders->systemSettingsFile());
        QVERIFY(system.setValue(key, value));
    }

    static inline int s_sites = 0; // databases made on the server so far
    std::unique_ptr<SecuritySite> m_embedded;
    std::unique_ptr<UserFolders> m_folders;
    ServerSettings m_settings;
    int m_idleMinutes = SecuritySettings::DefaultTimeOutMinutes;
    int m_passwordMinimumLength = SecuritySettings::DefaultPasswordMinimumLength;
};

} // namespace nebra::test
