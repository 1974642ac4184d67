#include "SecuritySettings.h"

#include "SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace nebra {

namespace {

// Reads one file's "[Security]" group and notes where every value came from.
class GroupReader
{
public:
    GroupReader(const SettingsStore& store, QString source, QList<SecuritySettings::Origin>* origins)
        : m_store(store), m_source(std::move(source)), m_origins(origins)
    {
    }

    QString text(const char* name) const
    {
        return m_store.value(QStringLiteral("Security/") + QLatin1String(name), QString())
            .toString()
            .trimmed();
    }

    // The value as read, or fallback; either way noted with its origin.
    QString effective(const char* name, const QString& fallback) const
    {
        const QString value = text(name);
        note(name, value.isEmpty() ? fallback : value,
             value.isEmpty() ? QStringLiteral("default") : m_source);
        return value.isEmpty() ? fallback : value;
    }

    // Qt's settings files end a plain value at ';' (a comment) and split it
    // at ',', so a ';'-separated list is read from its line as written.
    QString listAsWritten(const char* name, const QString& fallback) const
    {
        QFile file(m_store.filePath());
        QString value;
        bool inGroup = false;
        const bool opened = file.open(QIODevice::ReadOnly | QIODevice::Text);
        while (opened && value.isEmpty() && !file.atEnd()) {
            const QString line = QString::fromUtf8(file.readLine()).trimmed();
            const qsizetype equals = line.indexOf(QLatin1Char('='));
            if (line.startsWith(QLatin1Char('[')))
                inGroup = line == QLatin1String("[Security]");
            else if (inGroup && equals > 0 && line.left(equals).trimmed() == QLatin1String(name))
                value = line.mid(equals + 1).trimmed().remove(QLatin1Char('"'));
        }
        note(name, value.isEmpty() ? fallback : value,
             value.isEmpty() ? QStringLiteral("default") : m_source);
        return value.isEmpty() ? fallback : value;
    }

    int number(const char* name, int defaultValue, int minimum, int maximum) const
    {
        bool ok = false;
        const int value = text(name).toInt(&ok);
        const bool taken = ok && value >= minimum && value <= maximum;
        note(name, QString::number(taken ? value : defaultValue),
             taken ? m_source : QStringLiteral("default"));
        return taken ? value : defaultValue;
    }

    int atLeast(const char* name, int minimum, int maximum) const
    {
        bool ok = false;
        const int value = text(name).toInt(&ok);
        const int taken = ok ? qBound(minimum, value, maximum) : minimum;
        note(name, QString::number(taken), ok ? m_source : QStringLiteral("default"));
        return taken;
    }

    void note(const char* name, const QString& value, const QString& source) const
    {
        m_origins->append({QLatin1String(name), value, source});
    }

private:
    const SettingsStore& m_store;
    QString m_source;
    QList<SecuritySettings::Origin>* m_origins;
};

// The back end and the server's connection; read from the system-wide file only.
void readServer(const GroupReader& r, SecuritySettings* s)
{
    const QString backend = r.effective("Backend", QStringLiteral("sqlite")).toLower();
    if (backend == QLatin1String("postgresql"))
        s->backend = SecuritySettings::Backend::Server;
    else if (backend != QLatin1String("sqlite"))
        s->policyError =
            QStringLiteral("The security back end \"%1\" is not known: use sqlite or postgresql.")
                .arg(backend);
    ServerSettings& server = s->server;
    server.host = r.effective("Server", QStringLiteral("/run/postgresql"));
    server.port = r.number("ServerPort", ServerSettings::DefaultPort, 1, 65535);
    server.database = r.effective("ServerDatabase", ServerSettings::DefaultDatabase);
    server.user = r.effective("ServerUser", ServerSettings::ClientRole);
    // Noted without its value: "status" prints the origins.
    server.password = r.text("ServerPassword");
    r.note("ServerPassword", server.password.isEmpty() ? QString() : QStringLiteral("(set)"),
           server.password.isEmpty() ? QStringLiteral("default") : QStringLiteral("system file"));
    server.sslMode =
        r.effective("ServerSslMode", server.isLocalSocket() ? QString() : QStringLiteral("verify-full"));
    server.sslRootCert = r.effective("ServerSslRootCert", QString());
}

} // namespace

QString SecuritySettings::defaultDatabasePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/Nebra/Security.db");
}

SecuritySettings SecuritySettings::fromStore(const SettingsStore& store, const QString& databaseOverride)
{
    SecuritySettings s;
    s.policyError = store.systemProblem();
    s.systemWide = store.system() && store.systemSetsSecurityPolicy();
    const SettingsStore& source = s.systemWide ? *store.system() : store;
    const GroupReader r(source,
                        QStringLiteral("%1 file \"%2\"")
                            .arg(s.systemWide ? QStringLiteral("system") : QStringLiteral("user"),
                                 QDir::toNativeSeparators(source.filePath())),
                        &s.origins);
    const bool besideOverride = !databaseOverride.isEmpty();
    if (besideOverride) {
        s.databasePath = databaseOverride;
        r.note("DatabasePath", databaseOverride, QStringLiteral("command line"));
    } else {
        s.databasePath = r.effective("DatabasePath", defaultDatabasePath());
    }
    // With a database named on the command line, its key and head lie beside it.
    s.siteKeyFile = besideOverride ? s.databasePath + QStringLiteral(".key")
                                   : r.effective("SiteKeyFile", s.databasePath + QStringLiteral(".key"));
    s.chainHeadFile = besideOverride ? s.databasePath + QStringLiteral(".head")
                                     : r.effective("ChainHeadFile", s.databasePath + QStringLiteral(".head"));
    s.timeOutMinutes = r.number("TimeOutMinutes", DefaultTimeOutMinutes, 1, 24 * 60);
    s.timeOutWarningSeconds = r.number("TimeOutWarningSeconds", DefaultTimeOutWarningSeconds, 0, 60 * 60);
    s.lockoutThreshold = r.number("LockoutThreshold", DefaultLockoutThreshold, 1, 1000);
    s.passwordMinimumLength = r.number("PasswordMinimumLength", DefaultPasswordMinimumLength, 1, 128);
    s.authenticationLibrary = r.effective("AuthenticationLibrary", QLatin1String(ServiceLibrary));
    s.hashCost.memoryMiB = r.atLeast("PasswordHashMemoryMiB", PasswordHashCost::MinimumMemoryMiB, 4096);
    s.hashCost.passes = r.atLeast("PasswordHashPasses", PasswordHashCost::MinimumPasses, 100);
    s.adminGroup = r.effective("AdminGroup", QString());
    if (s.systemWide) {
        readServer(r, &s);
        s.signatureMeanings = SignatureEntries::meaningsFrom(
            r.listAsWritten("SignatureMeanings", QString::fromLatin1(SignatureEntries::DefaultMeanings)));
    } else {
        // A user's own file never decides what a signature may mean.
        s.signatureMeanings = SignatureEntries::meaningsFrom({});
        r.note("SignatureMeanings", s.signatureMeanings.join(QLatin1Char(';')),
               QStringLiteral("default; read from the system-wide file only"));
    }
    return s;
}

} // namespace nebra
