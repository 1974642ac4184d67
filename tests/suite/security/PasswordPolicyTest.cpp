#include "PasswordPolicy.h"
#include "SecretBytes.h"

#include <QTest>

using namespace nebra;

class PasswordPolicyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void check_data()
    {
        QTest::addColumn<int>("minimum");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("problem");
        const QString tooShort = QStringLiteral("The password must be at least %1 characters long.");
        const QString userName = QStringLiteral("The password must not be the user name.");
        // clang-format off
        QTest::newRow("exactly the minimum") << 8 << "12345678" << "";
        QTest::newRow("one short") << 8 << "1234567" << tooShort.arg(8);
        QTest::newRow("minimum setting takes effect") << 12 << "elevenchars" << tooShort.arg(12);
        QTest::newRow("minimum counts characters, not bytes") << 4 << QStringLiteral("äöüß") << "";
        QTest::newRow("empty") << 1 << "" << "The password must not be empty.";
        QTest::newRow("user name in other case") << 4 << "JSmith" << userName;
        QTest::newRow("longer than the hashing limit") << 8 << QString(257, QLatin1Char('x')) << "The password must be at most 256 characters long.";
        // clang-format on
    }

    void check()
    {
        QFETCH(int, minimum);
        QFETCH(QString, password);
        QFETCH(QString, problem);
        QCOMPARE(PasswordPolicy(minimum).check(QStringLiteral("jsmith"), SecretBytes(password.toUtf8())),
                 problem);
    }
};

QTEST_GUILESS_MAIN(PasswordPolicyTest)
#include "PasswordPolicyTest.moc"
