#pragma once

#include "Authenticator.h"
#include "SecondProcess.h"
#include "SecurityFixture.h"
#include "UserFolders.h"

#include <QTest>

namespace nebra::test {

// A site in the test's own user folders made as an administrator makes it,
// with nebra-secadmin (the test's SECADMIN): the store with its key and head
// beside it, jsmith ("correct horse") and mallory ("battery staple"), then
// the further commands given. The library reads the store through fixture.
struct ToolSite
{
    UserFolders folders;
    SecurityFixture fixture{folders.root() + "/site"};

    explicit ToolSite(const QStringList& createOptions, const QList<QStringList>& commands = {})
    {
        fixture.settings().siteKeyFile = database() + ".key";
        fixture.settings().chainHeadFile = database() + ".head";
        administer(QStringList{"create"} + createOptions);
        QCOMPARE(secadmin({"add-user", "jsmith"}, "correct horse\n").exitCode, 0);
        QCOMPARE(secadmin({"add-user", "mallory"}, "battery staple\n").exitCode, 0);
        for (const QStringList& command : commands)
            administer(command);
    }

    QString database() const { return fixture.settings().databasePath; }

    ProcessRun secadmin(const QStringList& arguments, const QByteArray& input = {}) const
    {
        return runProgram(QStringLiteral(SECADMIN), QStringList{"--database", database()} + arguments, input);
    }

    // A command that must succeed; the test fails with the tool's message when it does not.
    void administer(const QStringList& arguments) const
    {
        const ProcessRun run = secadmin(arguments);
        QVERIFY2(run.exitCode == 0, qPrintable(arguments.join(' ') + ' ' + run.err));
    }

    LogInStatus logIn(const QString& name, const QString& password) const
    {
        const std::unique_ptr<SecurityStore> store = fixture.open(SecurityStore::HeadCheck::Skipped);
        return Authenticator(*store).authenticate(name, SecretBytes(password.toUtf8())).status;
    }

    bool allowed(const QString& user, const QString& area, const QString& operation) const
    {
        const std::unique_ptr<SecurityStore> store = fixture.open(SecurityStore::HeadCheck::Skipped);
        QString error;
        return store && store->users().isOperationAllowed(user, area, operation, &error);
    }
};

} // namespace nebra::test
