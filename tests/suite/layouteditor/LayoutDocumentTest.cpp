#include "LayoutDocument.h"
#include "MessageRecorder.h"
#include "PlateLayoutWriter.h"
#include "TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using namespace nebra;

namespace {
QList<int> wells(const PlateLayout& layout, const QString& names)
{
    QList<int> result;
    for (const QString& name : names.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        int row = 0, column = 0;
        PlateLayout::parseWellName(name, row, column);
        result << row * layout.columns() + column;
    }
    return result;
}

// "A1=S1@100" for each standard, in row order; other roles as "B2=sample:U1".
QString describe(const PlateLayout& layout)
{
    QStringList parts;
    for (int i = 0; i < layout.wellCount(); ++i) {
        const Well& well = layout.wells()[i];
        if (well.role == WellRole::Empty)
            continue;
        QString text =
            PlateLayout::wellName(i / layout.columns(), i % layout.columns()) + '=' +
            (well.role == WellRole::Standard ? QString() : PlateLayout::roleName(well.role) + ':') +
            well.label;
        if (well.concentration)
            text += '@' + PlateLayoutWriter::formatConcentration(*well.concentration);
        parts << text;
    }
    return parts.join(QLatin1Char(' '));
}
} // namespace

class LayoutDocumentTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private Q_SLOTS:
    void seriesFillsLabelsAndConcentrations_data()
    {
        QTest::addColumn<QString>("start");
        QTest::addColumn<int>("points");
        QTest::addColumn<int>("replicates");
        QTest::addColumn<bool>("alongRow");
        QTest::addColumn<QString>("expected");
        // clang-format off
        // 100 diluted by 2; on a 24-well plate (A-D, 1-6).
        QTest::newRow("down a column, duplicates") << "A1" << 3 << 2 << false << "A1=S1@100 A2=S1@100 B1=S2@50 B2=S2@50 C1=S3@25 C2=S3@25";
        QTest::newRow("along a row, single") << "B2" << 4 << 1 << true << "B2=S1@100 B3=S2@50 B4=S3@25 B5=S4@12.5";
        QTest::newRow("along a row, triplicates") << "B5" << 2 << 3 << true << "B5=S1@100 B6=S2@50 C5=S1@100 C6=S2@50 D5=S1@100 D6=S2@50";
        QTest::newRow("one point") << "D6" << 1 << 1 << false << "D6=S1@100";
        QTest::newRow("too long for the row") << "A2" << 6 << 1 << true << "needs 1 rows by 6 columns from well A2";
        QTest::newRow("too many replicates") << "A1" << 2 << 5 << true << "has room for 4 by 6";
        QTest::newRow("no points") << "A1" << 0 << 1 << true << "at least one point";
        // clang-format on
    }

    void seriesFillsLabelsAndConcentrations()
    {
        QFETCH(QString, start);
        QFETCH(int, points);
        QFETCH(int, replicates);
        QFETCH(bool, alongRow);
        QFETCH(QString, expected);
        LayoutDocument document;
        document.newLayout(4, 6);
        StandardSeries series;
        series.points = points;
        series.replicates = replicates;
        series.direction =
            alongRow ? StandardSeries::Direction::AcrossRows : StandardSeries::Direction::AcrossColumns;
        int row = 0, column = 0;
        PlateLayout::parseWellName(start, row, column);
        QString error;
        const bool filled = document.fillSeries(series, row, column, error);
        QCOMPARE(filled                     ? describe(document.layout())
                 : error.contains(expected) ? expected
                                            : error,
                 expected);
        QCOMPARE(document.undoStack().count(), filled ? 1 : 0);
    }

    void numbersSamplesInRowOrColumnOrderAndPastesOnlyWhatFits()
    {
        // clang-format off
        for (const auto& [byColumns, expected] : {std::pair{false, "A1=sample:U1 A3=sample:U2 B1=sample:U3 B2=blank:B"}, {true, "A1=sample:U1 A3=sample:U3 B1=sample:U2 B2=blank:B"}}) {
            // clang-format on
            LayoutDocument document;
            document.newLayout(2, 3);
            document.assignRole(wells(document.layout(), "A1 A3 B1"), WellRole::Sample);
            document.assignRole(wells(document.layout(), "B2"), WellRole::Blank);
            document.assignLabel(wells(document.layout(), "B2"), " B ");
            document.numberSamples(wells(document.layout(), "A1 A2 A3 B1 B2 B3"), byColumns, "U");
            QCOMPARE(describe(document.layout()), QLatin1String(expected));
        }
        // A copied block must fit on the plate where it is pasted.
        LayoutDocument document;
        document.newLayout(2, 3);
        document.assignRole(wells(document.layout(), "A1 A2"), WellRole::Blank);
        const auto block =
            WellBlock::FromText(WellBlock::Copy(document.layout(), QRect(0, 0, 2, 1)).toText());
        QVERIFY(block);
        QString error;
        QVERIFY(!document.paste(*block, 1, 2, error));
        QCOMPARE(error, "The copied block of 1 x 2 wells does not fit on the plate from well B3.");
        QVERIFY(document.paste(*block, 1, 1, error));
        QCOMPARE(describe(document.layout()), QStringLiteral("A1=blank: A2=blank: B2=blank: B3=blank:"));
        QVERIFY(!WellBlock::FromText("# Nebra wells 1 x 2\nsample,,a\n"));
    }

    void everyChangeIsUndoneAndRedone()
    {
        LayoutDocument document;
        document.newLayout(8, 12);
        QSignalSpy modified(&document, &LayoutDocument::modifiedChanged);
        QVERIFY(!document.isModified());
        const QString unchanged = describe(document.layout());
        document.assignRole(wells(document.layout(), "A1 A2"), WellRole::Control);
        document.assignLabel(wells(document.layout(), "A1"), "PC");
        document.rename("Renamed");
        QString error;
        QVERIFY(document.fillSeries(StandardSeries{}, 0, 2, error));
        document.paste(WellBlock::Copy(document.layout(), QRect(2, 0, 2, 2)), 6, 10, error);
        document.changeFormat(16, 24);
        QCOMPARE(document.undoStack().count(), 6);
        QCOMPARE(document.layout().rows(), 16);
        QCOMPARE(describe(document.layout()).count('@'), 16 + 4);
        // An edit that changes nothing is not a step.
        document.rename("Renamed");
        QCOMPARE(document.undoStack().count(), 6);
        const PlateLayout last = document.layout();
        while (document.undoStack().canUndo())
            document.undoStack().undo();
        QCOMPARE(describe(document.layout()), unchanged);
        QCOMPARE(document.layout().rows(), 8);
        QVERIFY(!document.isModified());
        while (document.undoStack().canRedo())
            document.undoStack().redo();
        QVERIFY(document.layout() == last && document.isModified());
        QCOMPARE(modified.count(), 3);
    }

    void examplesOpenAndSaveUnchanged()
    {
        const QDir folder(qEnvironmentVariable("NEBRA_TEST_DATA_DIR") + "/Example Assays/Microplate Layouts");
        const QStringList names = folder.entryList({QStringLiteral("*.mlo")});
        QVERIFY(names.size() >= 3);
        for (const QString& name : names) {
            LayoutDocument document;
            QString error;
            QVERIFY2(document.open(folder.filePath(name), error), qPrintable(error));
            QCOMPARE(document.displayName(), name);
            const QString copy = m_dir.filePath(name);
            QCOMPARE(document.saveAs(copy, error), LayoutDocument::SaveResult::Saved);
            QCOMPARE(test::readFile(copy), test::readFile(folder.filePath(name)));
            QCOMPARE(document.path(), copy);
        }
    }

    // Yes replaces the other file, No keeps it.
    void replacingAnotherFileAsksFirst()
    {
        for (const int answer : {int(MessageButton::Yes), int(MessageButton::No)}) {
            const bool replaced = answer == MessageButton::Yes;
            const QString other = m_dir.filePath(QStringLiteral("Other %1.mlo").arg(answer));
            test::writeFile(other, "precious");
            test::MessageRecorder messages;
            messages.answer(answer);
            LayoutDocument document;
            document.newLayout(2, 3);
            QString error;
            const auto result = document.saveAs(other, error);
            QCOMPARE(messages.count(), 1);
            QCOMPARE(messages.last().text,
                     QStringLiteral("\"%1\" already exists.\nDo you want to replace it?")
                         .arg(QFileInfo(other).fileName()));
            QCOMPARE(messages.last().icon, MessageIcon::Question);
            QCOMPARE(messages.last().buttons, MessageButton::Yes | MessageButton::No);
            QCOMPARE(messages.last().defaultButton, int(MessageButton::No));
            QCOMPARE(result == LayoutDocument::SaveResult::Saved, replaced);
            QCOMPARE(test::readFile(other) == "precious", !replaced);
            QCOMPARE(document.isModified(), false);
        }
    }

    // Ok saves beside the other version, Cancel saves nothing.
    void aSaveRacingAnotherProgramKeepsBothVersions()
    {
        for (const int answer : {int(MessageButton::Ok), int(MessageButton::Cancel)}) {
            QTemporaryDir dir;
            const QString path = dir.filePath(QStringLiteral("Race.mlo"));
            LayoutDocument document;
            document.newLayout(8, 12);
            QString error;
            QCOMPARE(document.saveAs(path, error), LayoutDocument::SaveResult::Saved);
            document.assignRole(wells(document.layout(), "A1"), WellRole::Sample);
            // Saving again unchanged by anyone else asks nothing.
            test::MessageRecorder messages;
            QCOMPARE(document.save(error), LayoutDocument::SaveResult::Saved);
            QCOMPARE(messages.count(), 0);
            // Another program rewrites the file meanwhile.
            const QByteArray theirs = "[Layout]\nRows=2\nColumns=3\n";
            test::writeFile(path, theirs);
            document.assignRole(wells(document.layout(), "A2"), WellRole::Blank);
            messages.answer(answer);
            const auto result = document.save(error);
            QCOMPARE(messages.count(), 1);
            QCOMPARE(messages.last().icon, MessageIcon::Warning);
            QCOMPARE(messages.last().text,
                     "\"Race.mlo\" has been changed by another program since it was opened here.\n\n"
                     "Your version will be saved as \"Race (edited).mlo\" beside it; the other version "
                     "is kept as it is.");
            QCOMPARE(test::readFile(path), theirs);
            const QString copy = dir.filePath(QStringLiteral("Race (edited).mlo"));
            if (answer == MessageButton::Ok) {
                QCOMPARE(result, LayoutDocument::SaveResult::Saved);
                QCOMPARE(document.path(), copy);
                QCOMPARE(test::readFile(copy), PlateLayoutWriter::Serialise(document.layout()));
                QCOMPARE(LayoutDocument::freeSiblingPath(path), dir.filePath("Race (edited 2).mlo"));
            } else {
                QCOMPARE(result, LayoutDocument::SaveResult::Cancelled);
                QVERIFY(!QFileInfo::exists(copy) && document.isModified());
            }
        }
    }

    void aRestrictedLayoutIsSavedOnlyIntoItsFolder_data()
    {
        QTest::addColumn<QString>("target"); // relative to a temporary folder holding "Layouts"
        QTest::addColumn<bool>("allowed");
        // clang-format off
        QTest::newRow("in the folder") << "Layouts/Plate.mlo" << true;
        QTest::newRow("extension added") << "Layouts/Plate" << true;
        QTest::newRow("beside the folder") << "Plate.mlo" << false;
        QTest::newRow("below the folder") << "Layouts/Sub/Plate.mlo" << false;
        QTest::newRow("out by ..") << "Layouts/../Plate.mlo" << false;
        QTest::newRow("in by ..") << "Layouts/Sub/../Plate.mlo" << true;
        QTest::newRow("through a link") << "Link/Plate.mlo" << false;
        // clang-format on
    }

    void aRestrictedLayoutIsSavedOnlyIntoItsFolder()
    {
        QFETCH(QString, target);
        QFETCH(bool, allowed);
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkpath("Layouts/Sub") && QFile::link(dir.path(), dir.filePath("Link")));
        LayoutDocument document;
        document.setFolderRestriction(dir.filePath("Layouts"));
        QString error;
        QCOMPARE(document.saveAs(dir.filePath(target), error) == LayoutDocument::SaveResult::Saved, allowed);
        if (!allowed)
            QCOMPARE(error, QStringLiteral("Layouts can only be saved in the folder \"%1\".")
                                .arg(dir.filePath("Layouts")));
        const QStringList written = QDir(dir.filePath("Layouts")).entryList({"*.mlo"});
        QCOMPARE(written, allowed ? QStringList{"Plate.mlo"} : QStringList{});
    }
};

QTEST_GUILESS_MAIN(LayoutDocumentTest)
#include "LayoutDocumentTest.moc"
