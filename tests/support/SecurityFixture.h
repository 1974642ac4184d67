#pragma once

#include "SecretBytes.h"
#include "SecurityAdministration.h"
#include "SecurityStore.h"
#include "SettingsStore.h"
#include "UserFolders.h"

#include <QDir>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>
#include <QUuid>

#include <memory>

namespace nebra::test {

// A security database with its site key and chain head in a folder of the
// test, made through the real administration code, and the "[Security]"
// settings that name it.
class SecurityFixture
{
public:
    explicit SecurityFixture(const QString& folder)
    {
        QDir().mkpath(folder);
        m_settings.databasePath = folder + "/Security.db";
        m_settings.siteKeyFile = folder + "/Security.key";
        m_settings.chainHeadFile = folder + "/Security.head";
    }

    SecuritySettings& settings() { return m_settings; }
    const SecuritySettings& settings() const { return m_settings; }

    // Creates the database; fails the test when it cannot.
    void create()
    {
        QString error;
        if (!SecurityStore::create(m_settings, "tester", &error))
            qFatal("Cannot create the security database: %s", qPrintable(error));
    }

    std::unique_ptr<SecurityStore>
    open(SecurityStore::HeadCheck check = SecurityStore::HeadCheck::Required) const
    {
        QString error;
        std::unique_ptr<SecurityStore> store = SecurityStore::open(m_settings, &error, check);
        if (!store)
            qWarning("Cannot open the security database: %s", qPrintable(error));
        return store;
    }

    // Adds a user with a password and rights "area/operation".
    void addUser(const QString& name, const QString& password, const QString& fullName = {},
                 const QStringList& rights = {})
    {
        const std::unique_ptr<SecurityStore> store = open();
        SecurityAdministration admin(*store, "tester");
        QString error;
        bool ok = admin.addUser(name, fullName, SecretBytes(password.toUtf8()), &error);
        for (const QString& right : rights)
            ok = ok && admin.grant(
                           name, {right.section(QLatin1Char('/'), 0, 0), right.section(QLatin1Char('/'), 1)},
                           &error);
        if (!ok)
            qFatal("Cannot add the user %s: %s", qPrintable(name), qPrintable(error));
    }

    // Creates the database with jsmith ("correct horse", "Jane Smith")
    // holding the rights given, and names it in the user's "[Security]" settings.
    void createSite(const QStringList& rights)
    {
        create();
        addUser("jsmith", "correct horse", "Jane Smith", rights);
        SettingsStore store;
        store.setValue("Security/DatabasePath", m_settings.databasePath);
        store.setValue("Security/SiteKeyFile", m_settings.siteKeyFile);
        store.setValue("Security/ChainHeadFile", m_settings.chainHeadFile);
    }

    // Runs statements on the database file through a connection of its own,
    // as someone editing the file behind the suite's back would.
    void tamper(const QStringList& statements) const
    {
        const QString name = QUuid::createUuid().toString();
        {
            QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
            db.setDatabaseName(m_settings.databasePath);
            QVERIFY(db.open());
            QSqlQuery q(db);
            for (const QString& statement : statements)
                if (!q.exec(statement))
                    qFatal("Tampering failed: %s: %s", qPrintable(statement),
                           qPrintable(q.lastError().text()));
        }
        QSqlDatabase::removeDatabase(name);
    }

    // From here on the store refuses audit entries (those of area only, when
    // given) as SQLite refuses a write to a full disk.
    void fillUp(const QString& area = {}) const
    {
        const QString when = area.isEmpty() ? QString() : QStringLiteral("WHEN NEW.area = '%1' ").arg(area);
        tamper({QStringLiteral("CREATE TRIGGER full BEFORE INSERT ON audit_trail %1"
                               "BEGIN SELECT RAISE(ABORT, 'database or disk is full'); END")
                    .arg(when)});
    }

    QStringList auditTexts() const
    {
        const std::unique_ptr<SecurityStore> store = open(SecurityStore::HeadCheck::Skipped);
        QStringList texts;
        QString error;
        for (const AuditEntry& entry : store->audit().entries(&error))
            texts.append(entry.text);
        return texts;
    }

private:
    SecuritySettings m_settings;
};

// Redirected user folders with a site database that holds jsmith
// ("correct horse", "Jane Smith", the rights given), and the "[Security]"
// settings that name it, where the manager and the Organiser look for them.
struct SecuritySite
{
    UserFolders folders;
    SecurityFixture fixture{folders.root() + "/site"};

    explicit SecuritySite(const QStringList& rights = {}) { fixture.createSite(rights); }
};

} // namespace nebra::test
