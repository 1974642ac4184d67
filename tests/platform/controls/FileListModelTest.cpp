#include "FileListModel.h"
#include "TestFiles.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

namespace {

QStringList rowNames(const FileListModel& model)
{
    QStringList names;
    for (int row = 0; row < model.rowCount(); ++row)
        names << model.fileName(row);
    return names;
}

} // namespace

class FileListModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Folders come first; the rest by name: Plate 1, plate 10, Run [a], Run_b, Ärger.
    void nameFilterNarrowsRowsKeepingTheSort_data()
    {
        QTest::addColumn<QStringList>("typed");
        QTest::addColumn<QStringList>("expected");
        const QStringList all{"Plates",      "Plate 1.apr", "plate 10.apr",
                              "Run [a].apr", "Run_b.apr",   "Ärger.apr"};
        // clang-format off
        QTest::newRow("empty") << QStringList{""} << all;
        QTest::newRow("blanks only") << QStringList{"  "} << all;
        QTest::newRow("substring, any case") << QStringList{"PLATE"} << QStringList{"Plates", "Plate 1.apr", "plate 10.apr"};
        QTest::newRow("typed letter by letter") << QStringList{"p", "pl", "pla", "plate 1"} << QStringList{"Plate 1.apr", "plate 10.apr"};
        QTest::newRow("widened by backspace") << QStringList{"plate 10", "plate 1"} << QStringList{"Plate 1.apr", "plate 10.apr"};
        QTest::newRow("blanks at the ends ignored") << QStringList{"plate 1", "plate "} << QStringList{"Plates", "Plate 1.apr", "plate 10.apr"};
        QTest::newRow("brackets are plain text") << QStringList{"[a]"} << QStringList{"Run [a].apr"};
        QTest::newRow("wildcard matches whole names") << QStringList{"run*"} << QStringList{"Run [a].apr", "Run_b.apr"};
        QTest::newRow("question mark is one character") << QStringList{"plate ?.apr"} << QStringList{"Plate 1.apr"};
        QTest::newRow("two patterns") << QStringList{"*10*; run_*"} << QStringList{"plate 10.apr", "Run_b.apr"};
        QTest::newRow("substring then wildcard") << QStringList{"run", "*_b*"} << QStringList{"Run_b.apr"};
        QTest::newRow("nothing matches, then cleared") << QStringList{"xyz", ""} << all;
        QTest::newRow("letters beyond ASCII, any case") << QStringList{"äR"} << QStringList{"Ärger.apr"};
        QTest::newRow("wildcard beyond ASCII") << QStringList{"ÄR*"} << QStringList{"Ärger.apr"};
        QTest::newRow("wildcard fixing the end") << QStringList{"*r.apr", "*1?.APR"} << QStringList{"plate 10.apr"};
        QTest::newRow("text spanning two names matches neither") << QStringList{"platesplate"} << QStringList{};
        // clang-format on
    }

    void nameFilterNarrowsRowsKeepingTheSort()
    {
        QFETCH(QStringList, typed);
        QFETCH(QStringList, expected);
        QTemporaryDir dir;
        for (const char* name :
             {"Run_b.apr", "plate 10.apr", "Plate 1.apr", "Run [a].apr", "notes.txt", "Ärger.apr"})
            writeFile(dir.filePath(QString::fromUtf8(name)));
        makeFolder(dir.filePath("Plates"));
        FileListModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.load(dir.path(), QStringLiteral("*.apr"));
        for (const QString& text : typed)
            model.setNameFilter(text);
        QCOMPARE(rowNames(model), expected);
        QCOMPARE(model.allEntries().size(), 6); // the hidden ones are still listed
        for (int row = 0; row < model.rowCount(); ++row)
            QCOMPARE(model.rowOfId(model.idAt(row)), row);
    }

    // A sort while filtered sorts the hidden entries too, so that they come
    // back in order; a reload keeps the filter; a persistent index on a hidden
    // row becomes invalid; names shown without extensions are matched as shown;
    // renamed and removed entries are filtered as they are now. (The comments
    // the list shows are FileListControlTest's: read after the listing.)
    void sortAndReloadUnderAFilter()
    {
        QTemporaryDir dir;
        for (const auto& [name, time] : {std::pair{"a1.mlo", 3}, {"b1.mlo", 1}, {"a2.mlo", 2}, {"b2.mlo", 4}})
            writeFile(dir.filePath(QLatin1String(name)), {}, 1700000000 + time);
        FileListModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.load(dir.path(), QStringLiteral("*.mlo"));
        const QPersistentModelIndex b1 = model.index(2, 0);
        QCOMPARE(b1.data().toString(), QStringLiteral("b1.mlo"));
        model.setNameFilter(QStringLiteral("a"));
        QVERIFY(!b1.isValid());
        model.sort(model.columnOf(FileListModel::DateModifiedColumn), Qt::AscendingOrder);
        QCOMPARE(rowNames(model), (QStringList{"a2.mlo", "a1.mlo"}));
        model.setNameFilter(QString());
        QCOMPARE(rowNames(model), (QStringList{"b1.mlo", "a2.mlo", "a1.mlo", "b2.mlo"}));
        model.setNameFilter(QStringLiteral("2"));
        writeFile(dir.filePath("c2.mlo"), {}, 1700000000);
        model.load(dir.path(), QStringLiteral("*.mlo"));
        QCOMPARE(rowNames(model), (QStringList{"c2.mlo", "a2.mlo", "b2.mlo"}));
        model.setShowExtensions(false);
        model.setNameFilter(QStringLiteral("*2"));
        QCOMPARE(rowNames(model), (QStringList{"c2.mlo", "a2.mlo", "b2.mlo"})); // matched as shown
        QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("c2"));
        QCOMPARE(model.fullPath(0), dir.filePath("c2.mlo"));
        model.renameEntry(0, QStringLiteral("x9.mlo"));
        model.setNameFilter(QStringLiteral("x"));
        QCOMPARE(rowNames(model), QStringList{"x9.mlo"});
        model.removeEntry(0);
        model.setNameFilter(QStringLiteral("2"));
        QCOMPARE(rowNames(model), (QStringList{"a2.mlo", "b2.mlo"}));
    }
};

QTEST_GUILESS_MAIN(FileListModelTest)
#include "FileListModelTest.moc"
