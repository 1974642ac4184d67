#include "WizardCatalogue.h"
#include "SpecialFiles.h"
#include "TestFiles.h"
#include "WizardPlugins.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace nebra;

class WizardCatalogueTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reading_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("names"); // "Name=ProgID", in order
        QTest::addColumn<QString>("errorPart"); // empty: no error

        // clang-format off
        QTest::newRow("registration order, not sorted") << QByteArray(R"({"wizards":[{"Name":"Kinetic","ProgID":"A.K"},{"Name":"Generic","ProgID":"A.G"},)" R"({"Name":"ELISA","ProgID":"A.E"}]})") << QStringList{"Kinetic=A.K", "Generic=A.G", "ELISA=A.E"} << QString();
        QTest::newRow("empty list") << QByteArray(R"({"wizards":[]})") << QStringList{} << QString();
        QTest::newRow("two names, one plug-in") << QByteArray(R"({"wizards":[{"Name":"One","ProgID":"A.X"},{"Name":"Two","ProgID":"A.X"}]})") << QStringList{"One=A.X", "Two=A.X"} << QString();
        QTest::newRow("entries without name or ProgID skipped, the rest kept") << QByteArray(R"({"wizards":[{"ProgID":"A.X"},{"Name":"Kept","ProgID":"A.K"},{"Name":"NoId"}]})") << QStringList{"Kept=A.K"} << "(1, 3)";
        QTest::newRow("not JSON") << QByteArray("Generic=A.G") << QStringList{} << "is not a valid catalogue: ";
        QTest::newRow("no wizards list") << QByteArray(R"({"drivers":[]})") << QStringList{} << "is not a valid catalogue.";
        // clang-format on
    }
    void reading()
    {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, names);
        QFETCH(QString, errorPart);
        QTemporaryDir dir;
        const QString path = WizardCatalogue::FileIn(dir.path());
        test::writeFile(path, content);
        const WizardCatalogue catalogue(path);
        QStringList read;
        for (int i = 1; i <= catalogue.Wizards().Count(); ++i)
            read << catalogue.Wizards().Item(i).Name + QLatin1Char('=') + catalogue.Wizards().Item(i).ProgID;
        QCOMPARE(read, names);
        QCOMPARE(catalogue.errorString().isEmpty(), errorPart.isEmpty());
        QVERIFY2(catalogue.errorString().contains(errorPart), qPrintable(catalogue.errorString()));
    }

    // The shipped catalogue lists Generic first, and every plug-in it names is installed and loads.
    void installedCatalogueListsGenericFirstAndEachWizardLoadsAMissingOneNoneAPipeIsRefused()
    {
        const WizardCatalogue catalogue(WizardCatalogue::FileIn(qEnvironmentVariable("NEBRA_TEST_DATA_DIR")));
        QVERIFY(catalogue.errorString().isEmpty() && catalogue.Wizards().Count() >= 2);
        QCOMPARE(catalogue.Wizards().Item(1).Name, "Generic");
        for (int i = 1; i <= catalogue.Wizards().Count(); ++i) {
            QString reason;
            QVERIFY2(WizardPlugins(WizardPlugins::DefaultFolder())
                         .Create(catalogue.Wizards().Item(i).ProgID, &reason),
                     qPrintable(reason));
        }
        // A missing file means no wizards, without an error; a pipe is refused without blocking.
        QCOMPARE(WizardCatalogue("/nonexistent/wizards.json").Wizards().Count(), 0);
        QVERIFY(WizardCatalogue("/nonexistent/wizards.json").errorString().isEmpty());
        QTemporaryDir dir;
        test::makeFifo(dir.filePath("wizards.json"));
        const test::PipeWatchdog watchdog(dir.filePath("wizards.json"));
        const WizardCatalogue piped(dir.filePath("wizards.json"));
        QVERIFY2(!watchdog.released(), "the reader blocked on the pipe");
        QCOMPARE(piped.Wizards().Count(), 0);
        QCOMPARE(piped.errorString(),
                 QStringLiteral("The wizard catalogue \"%1\" cannot be read: it is not a regular file")
                     .arg(dir.filePath("wizards.json")));
    }
};

QTEST_MAIN(WizardCatalogueTest)
#include "WizardCatalogueTest.moc"
