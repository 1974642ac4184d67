#include "RecentDocuments.h"
#include "RecentDocumentsMenu.h"
#include "SettingsStore.h"
#include "SuiteSettings.h"
#include "TestFiles.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace nebra;
using nebra::test::writeFile;

class RecentDocumentsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Each row: documents used in order (names in a temporary folder), the
    // names then deleted, and the list shown once they are checked, newest first.
    void theListAsShown_data()
    {
        QTest::addColumn<QStringList>("used");
        QTest::addColumn<QStringList>("deleted");
        QTest::addColumn<QStringList>("shown");
        // clang-format off
        QTest::newRow("newest first") << QStringList{"a.apr", "b.ars"} << QStringList{} << QStringList{"b.ars", "a.apr"};
        QTest::newRow("used again moves to the front") << QStringList{"a.apr", "b.ars", "c.mlo", "a.apr"} << QStringList{} << QStringList{"a.apr", "c.mlo", "b.ars"};
        QStringList twelve;
        for (int i = 1; i <= 12; ++i)
            twelve << QStringLiteral("run %1.ars").arg(i);
        QTest::newRow("ten at most: the last ten, newest first") << twelve << QStringList{} << QStringList(twelve.crbegin(), twelve.crend() - 2);
        QTest::newRow("missing files dropped") << QStringList{"a.apr", "b.ars", "c.mlo"} << QStringList{"b.ars", "c.mlo"} << QStringList{"a.apr"};
        // clang-format on
    }

    void theListAsShown()
    {
        QFETCH(QStringList, used);
        QFETCH(QStringList, deleted);
        QFETCH(QStringList, shown);
        QTemporaryDir dir;
        const QString ini = dir.filePath("Suite.ini");
        {
            SettingsStore store(ini);
            SuiteSettings settings(store);
            RecentDocuments recent(settings);
            for (const QString& name : used) {
                writeFile(dir.filePath(name));
                recent.add(dir.filePath(name));
            }
        }
        for (const QString& name : deleted)
            QVERIFY(QFile::remove(dir.filePath(name)));
        SettingsStore store(ini); // as at the next start
        SuiteSettings settings(store);
        RecentDocuments recent(settings);
        QStringList expected;
        for (const QString& name : shown)
            expected << dir.filePath(name);
        recent.check();
        QTRY_COMPARE(recent.shown(), expected);
        QCOMPARE(settings.RecentDocuments(), expected); // the missing ones are gone for good
    }

    // Commas, quotes and ampersands survive the settings file and the menu.
    void awkwardNamesInTheMenu()
    {
        QTemporaryDir dir;
        SettingsStore store(dir.filePath("Suite.ini"));
        SuiteSettings settings(store);
        RecentDocuments recent(settings);
        const QString awkward = dir.filePath("Plate 1, \"fast\" & slow.apr");
        writeFile(awkward);
        recent.add(awkward);
        SettingsStore reread(dir.filePath("Suite.ini"));
        QCOMPARE(SuiteSettings(reread).RecentDocuments(), QStringList{awkward});
        RecentDocumentsMenu menu(recent);
        Q_EMIT menu.aboutToShow(); // filled as it opens
        QCOMPARE(menu.actions().size(), 1);
        QCOMPARE(menu.actions().first()->text(), QStringLiteral("&1  Plate 1, \"fast\" && slow.apr"));
        QSignalSpy chosen(&menu, &RecentDocumentsMenu::documentChosen);
        menu.actions().first()->trigger();
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(chosen[0][0].toString(), awkward);
        QFile::remove(awkward);
        menu.fill(); // the menu follows the check's answer
        QTRY_VERIFY(!menu.actions().first()->isEnabled());
    }
};

QTEST_MAIN(RecentDocumentsTest)
#include "RecentDocumentsTest.moc"
