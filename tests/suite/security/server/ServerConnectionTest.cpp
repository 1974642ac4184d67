// The connection to a security server across the network: TLS with the
// server's certificate and name checked ("verify-full", unless the
// administrator says otherwise) against the authority named in the
// system-wide file. A throw-away authority and
// server certificate are made for the test; one server serves every row.

#include "ServerConnection.h"
#include "PostgresServer.h"
#include "SecondProcess.h"
#include "SecuritySettings.h"
#include "SettingsStore.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QTcpServer>
#include <QtTest>

#include <unistd.h>

using namespace nebra;

class ServerConnectionTest : public QObject
{
    Q_OBJECT

    // Runs openssl in the certificates' folder; false (with the reason logged) when it fails.
    bool openssl(const QStringList& arguments)
    {
        const test::ProcessRun run =
            test::runProgram("openssl", arguments, {}, {"env", "-C", m_certificates.path()});
        if (run.exitCode != 0)
            qWarning("openssl %s: %s", qPrintable(arguments.join(QLatin1Char(' '))), qPrintable(run.err));
        return run.exitCode == 0;
    }
    // A key and a certificate signed by the authority ca ("" for one that signs itself).
    bool certificate(const QString& name, const QString& subject, const QString& ca)
    {
        const auto words = [](const char* text) { return QString::fromLatin1(text).split(QLatin1Char(' ')); };
        const QStringList key = words("-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2") +
                                QStringList{"-subj", subject, "-keyout", name + ".key"};
        if (ca.isEmpty())
            return openssl(words("req -x509 -out") + QStringList{name + ".crt"} + key);
        return openssl(words("req -out") + QStringList{name + ".csr"} + key) &&
               openssl(words("x509 -req -CAcreateserial -days 2 -extfile san.ext -in") +
                       QStringList{name + ".csr", "-CA", ca + ".crt", "-CAkey", ca + ".key", "-out",
                                   name + ".crt"});
    }
    QTemporaryDir m_certificates;
    test::UserFolders m_folders;
    std::unique_ptr<test::PostgresServer> m_server;
    int m_port = 0;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QFile::setPermissions(
            m_certificates.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner |
                                       QFileDevice::ReadOther | QFileDevice::ExeOther));
        if (QStandardPaths::findExecutable("openssl").isEmpty())
            QSKIP("openssl is not installed (scripts/install-deps.sh)");
        QVERIFY(certificate("ca", "/CN=Lab Test Authority", {}));
        QVERIFY(certificate("other-ca", "/CN=Another Authority", {}));
        // The certificate names localhost only, not the address it is reached at as well.
        test::writeFile(m_certificates.filePath("san.ext"), "subjectAltName=DNS:localhost\n");
        QVERIFY(certificate("server", "/CN=localhost", "ca"));
        // TCP with TLS only: no "host" line, which would take plain connections as well.
        test::writeFile(m_certificates.filePath("pg_hba.conf"),
                        "local all all trust\nhostssl all all 127.0.0.1/32 trust\n");
        // The server's own files: readable by its id, the key by nobody else.
        for (const auto& [name, permissions] :
             {std::pair{"server.key", QFileDevice::Permissions(QFileDevice::ReadOwner)},
              std::pair{"pg_hba.conf", QFileDevice::Permissions(QFileDevice::ReadOwner)},
              std::pair{"server.crt", QFileDevice::ReadOwner | QFileDevice::ReadOther}}) {
            const QString path = m_certificates.filePath(name);
            QVERIFY(QFile::setPermissions(path, permissions));
            QVERIFY(::geteuid() != 0 || ::chown(qPrintable(path), test::PostgresServer::ServerUid,
                                                test::PostgresServer::ServerGid) == 0);
        }
        QTcpServer probe; // a free port
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        m_port = probe.serverPort();
        probe.close();
        m_server = std::make_unique<test::PostgresServer>(
            test::PostgresServer::Durability::Fast,
            test::PostgresServer::Tls{m_certificates.filePath("server.crt"),
                                      m_certificates.filePath("server.key"),
                                      m_certificates.filePath("pg_hba.conf"), m_port});
        if (!m_server->problem().isEmpty())
            QSKIP(qPrintable(m_server->problem()));
    }

    void verifyFull_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("authority");
        QTest::addColumn<QString>("refusal"); // empty: connects, over TLS
        // clang-format off
        QTest::newRow("the certificate's name and authority") << "localhost" << "ca.crt" << "";
        QTest::newRow("another name") << "127.0.0.1" << "ca.crt" << "does not match host name";
        QTest::newRow("another authority") << "localhost" << "other-ca.crt" << "certificate verify failed";
        QTest::newRow("no authority file") << "localhost" << "missing.crt" << "does not exist";
        // clang-format on
    }

    void verifyFull()
    {
        QFETCH(QString, host);
        QFETCH(QString, authority);
        QFETCH(QString, refusal);
        // The administrator's file for a workstation across the network, which leaves the TLS mode to its
        // default.
        test::writeFile(m_folders.systemSettingsFile(),
                        QStringLiteral("[Settings]\nSecurityConfigured=true\n[Security]\nBackend=postgresql\n"
                                       "Server=%1\nServerPort=%2\nServerDatabase=postgres\nServerUser=%3\n"
                                       "ServerSslRootCert=%4\n")
                            .arg(host, QString::number(m_port), test::PostgresServer::Superuser,
                                 m_certificates.filePath(authority))
                            .toUtf8());
        const SecuritySettings settings = SecuritySettings::fromStore(SettingsStore(), {});
        QVERIFY2(settings.policyError.isEmpty(), qPrintable(settings.policyError));
        QString error;
        const std::unique_ptr<ServerConnection> connection = ServerConnection::open(settings.server, &error);
        if (!refusal.isEmpty()) {
            QVERIFY(!connection);
            QVERIFY2(error.startsWith(QLatin1String("The security server cannot be reached: postgres on ")),
                     qPrintable(error));
            QVERIFY2(error.contains(refusal), qPrintable(error));
            return;
        }
        QVERIFY2(connection, qPrintable(error));
        QCOMPARE(test::column(*connection, "SELECT ssl FROM pg_stat_ssl WHERE pid = pg_backend_pid()"),
                 QStringList{"true"});
    }
};

QTEST_GUILESS_MAIN(ServerConnectionTest)
#include "ServerConnectionTest.moc"
