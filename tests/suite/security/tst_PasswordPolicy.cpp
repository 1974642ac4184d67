#include "PasswordPolicy.h"
#include "SecretBytes.h"

#include <QTest>

using namespace nebra;

class tst_PasswordPolicy : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void check_data();
    void check();
};

void tst_PasswordPolicy::check_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("problem");

    const QString tooShort = QStringLiteral("The password must be at least %1 characters long.");
    QTest::newRow("long enough") << 8 << "correct horse"
                                 << "";
    QTest::newRow("exactly the minimum") << 8 << "12345678"
                                         << "";
    QTest::newRow("one short") << 8 << "1234567" << tooShort.arg(8);
    QTest::newRow("minimum setting takes effect") << 12 << "elevenchars" << tooShort.arg(12);
    QTest::newRow("minimum counts characters, not bytes") << 4 << QStringLiteral("äöüß") << "";
    QTest::newRow("empty") << 1 << ""
                           << "The password must not be empty.";
    QTest::newRow("user name") << 4 << "jsmith"
                               << "The password must not be the user name.";
    QTest::newRow("user name in other case") << 4 << "JSmith"
                                             << "The password must not be the user name.";
    QTest::newRow("longer than the hashing limit")
        << 8 << QString(257, QLatin1Char('x')) << "The password must be at most 256 characters long.";
}

void tst_PasswordPolicy::check()
{
    QFETCH(int, minimum);
    QFETCH(QString, password);
    QFETCH(QString, problem);
    QCOMPARE(PasswordPolicy(minimum).check(QStringLiteral("jsmith"), SecretBytes(password.toUtf8())),
             problem);
}

QTEST_GUILESS_MAIN(tst_PasswordPolicy)
#include "tst_PasswordPolicy.moc"
