#include "EmbeddedAdminTool.h"

#include "AdminRights.h"
#include "PasswordPrompt.h"
#include "SecurityAdministration.h"
#include "SecurityStore.h"
#include "SettingsStore.h"
#include "SitePolicyFile.h"

#include <QDir>
#include <QFileInfo>

#include <pwd.h>
#include <unistd.h>

namespace nebra {

EmbeddedAdminTool::EmbeddedAdminTool(AdminReport& report, Options options)
    : m_report(report), m_options(std::move(options))
{
}

EmbeddedAdminTool::~EmbeddedAdminTool() = default;

QString EmbeddedAdminTool::actor()
{
    const passwd* entry = getpwuid(getuid());
    const QString login = entry ? QString::fromLocal8Bit(entry->pw_name) : qEnvironmentVariable("USER");
    return login + QStringLiteral(" (nebra-secadmin)");
}

QList<EmbeddedAdminTool::Command> EmbeddedAdminTool::commands()
{
    return userCommands() + rightCommands() + inquiryCommands();
}

QList<EmbeddedAdminTool::Command> EmbeddedAdminTool::userCommands()
{
    using A = SecurityAdministration;
    const Open O = Open::IntactHead;
    return {
        {"create", Open::Create, [this](const QStringList&) { return create(); }},
        {"add-user", O, [this](const QStringList& a) { return addUser(a[0]); }},
        {"disable-user", O,
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.setDisabled(a[0], true, e); });
         }},
        {"enable-user", O,
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.setDisabled(a[0], false, e); });
         }},
        {"set-password", O, [this](const QStringList& a) { return setPassword(a[0], false); }},
        {"reset-password", O, [this](const QStringList& a) { return setPassword(a[0], true); }},
        {"unlock", O,
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.unlock(a[0], e); });
         }},
    };
}

QList<EmbeddedAdminTool::Command> EmbeddedAdminTool::rightCommands()
{
    using A = SecurityAdministration;
    const Open O = Open::IntactHead;
    auto right = [](const QStringList& a) { return Right{a[1], a[2]}; };
    return {
        {"grant", O,
         [=, this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.grant(a[0], right(a), e); });
         }},
        {"revoke", O,
         [=, this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.revoke(a[0], right(a), e); });
         }},
        {"add-role", O,
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.addRole(a[0], e); });
         }},
        {"grant-role", O,
         [=, this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.grantToRole(a[0], right(a), e); });
         }},
        {"revoke-role", O,
         [=, this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.revokeFromRole(a[0], right(a), e); });
         }},
        {"assign-role", O,
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.assignRole(a[0], a[1], e); });
         }},
        {"unassign-role", O,
         [this](const QStringList& a) {
             return change([&](A& s, QString* e) { return s.unassignRole(a[0], a[1], e); });
         }},
    };
}

QList<EmbeddedAdminTool::Command> EmbeddedAdminTool::inquiryCommands()
{
    const Open O = Open::AnyHead;
    return {
        {"list-users", O, [this](const QStringList&) { return listUsers(); }},
        {"audit", O,
         [this](const QStringList&) {
             SecurityStore& store = *m_store;
             return m_report.audit([&](const AuditEntryVisitor& visit,
                                       QString* e) { return store.audit().forEachEntry(visit, e); },
                                   m_options.csvPath);
         }},
        {"verify", O, [this](const QStringList&) { return verify(); }},
        {"verify-documents", O,
         [this](const QStringList&) {
             QHash<QString, DocumentRecord> records;
             QString error;
             return m_store->documents().read(&records, &error) ? m_options.verifyDocuments(records)
                                                                : m_report.fail(error);
         }},
        {"signatures", O,
         [this](const QStringList&) {
             return m_options.checkSignatures(
                 [this](const QString& path, QList<DocumentSignature>* signatures, QString* e) {
                     return m_store->signatures().read(path, signatures, e);
                 });
         }},
        {"anchor", O, [this](const QStringList&) { return m_report.anchor(m_store->audit().verify()); }},
        {"migrate", O,
         [this](const QStringList&) {
             return m_report.fail(
                 QStringLiteral("migrate copies to a security server: add --backend postgresql."));
         }},
        {"reseal-head", O,
         [this](const QStringList&) {
             return m_report.reseal(m_store->audit().verify(), [this](QString* e) {
                 return SecurityAdministration(*m_store, actor()).resealChainHead(e);
             });
         }},
    };
}

int EmbeddedAdminTool::run(const QString& name, const QStringList& arguments)
{
    for (const Command& command : commands()) {
        if (command.name != name)
            continue;
        if (command.open == Open::Create && !m_options.perUser)
            m_options.settings.systemWide = true; // this database is to be the site's
        QString error;
        if (!AdminRights::mayAdminister(m_options.settings, &error))
            return m_report.fail(error);
        if (command.open != Open::Create &&
            !(m_store =
                  SecurityStore::open(m_options.settings, &error,
                                      command.open == Open::IntactHead ? SecurityStore::HeadCheck::Required
                                                                       : SecurityStore::HeadCheck::Skipped)))
            return m_report.fail(error);
        return command.action(arguments);
    }
    return -1;
}

int EmbeddedAdminTool::create()
{
    const SecuritySettings& settings = m_options.settings;
    QString error;
    if (!m_options.group.isEmpty() &&
        !AdminRights::prepareSharedFolder(QFileInfo(settings.databasePath).absolutePath(), m_options.group,
                                          &error))
        return m_report.fail(error);
    m_store =
        SecurityStore::create(settings, actor(), &error,
                              m_options.reuseKey ? SecurityStore::KeyUse::Reuse : SecurityStore::KeyUse::New);
    if (!m_store)
        return m_report.fail(error);
    m_report.say(QStringLiteral("Created the security database \"%1\" with the site key \"%2\".")
                     .arg(QDir::toNativeSeparators(settings.databasePath),
                          QDir::toNativeSeparators(settings.siteKeyFile)));
    if (m_options.perUser)
        return 0;
    if (!SitePolicyFile::write(settings, m_options.adminGroup, &error))
        return m_report.fail(error);
    m_report.say(QStringLiteral("The system-wide settings file \"%1\" now turns security on for every user.")
                     .arg(QDir::toNativeSeparators(SettingsStore::systemFilePath())));
    return 0;
}

int EmbeddedAdminTool::change(const Change& action)
{
    SecurityAdministration administration(*m_store, actor());
    QString error;
    return action(administration, &error) ? 0 : m_report.fail(error);
}

int EmbeddedAdminTool::addUser(const QString& name)
{
    QString error;
    const std::optional<SecretBytes> password = PasswordPrompt::readNewPassword(name, &error);
    if (!password)
        return m_report.fail(error);
    return change([&](SecurityAdministration& s, QString* e) {
        return s.addUser(name, m_options.fullName, *password, e);
    });
}

int EmbeddedAdminTool::setPassword(const QString& name, bool mustChange)
{
    QString error;
    if (!m_store->users().find(name, &error))
        return m_report.fail(error.isEmpty() ? QStringLiteral("There is no user \"%1\".").arg(name) : error);
    const std::optional<SecretBytes> password = PasswordPrompt::readNewPassword(name, &error);
    if (!password)
        return m_report.fail(error);
    return change(
        [&](SecurityAdministration& s, QString* e) { return s.setPassword(name, *password, mustChange, e); });
}

int EmbeddedAdminTool::listUsers()
{
    QString error;
    const QList<UserRecord> users = m_store->users().users(&error);
    for (const UserRecord& user : users) {
        QStringList rights;
        for (const Right& r : m_store->users().rightsOf(user.name, &error))
            rights << r.area + QLatin1Char('/') + r.operation;
        m_report.user(user, !user.passwordHash.isEmpty(), m_store->users().rolesOf(user.name, &error),
                      rights);
    }
    return error.isEmpty() ? 0 : m_report.fail(error);
}

int EmbeddedAdminTool::verify()
{
    std::optional<AuditAnchor> anchor;
    if (!m_report.parseAnchor(m_options.anchor, &anchor))
        return 2;
    const AuditVerification result = m_store->audit().verify(anchor);
    QString error;
    QStringList altered = m_store->users().alteredRows(&error);
    if (error.isEmpty())
        altered += m_store->documents().alteredRows(&error);
    if (error.isEmpty())
        altered += m_store->signatures().alteredRows(&error);
    if (!error.isEmpty()) {
        for (const QString& row : altered)
            m_report.say(row);
        return m_report.fail(error);
    }
    return m_report.verification(result, anchor, altered);
}

} // namespace nebra
