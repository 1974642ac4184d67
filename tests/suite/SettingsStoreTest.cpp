#include "SettingsStore.h"
#include "SuiteSettings.h"
#include "TestFiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace nebra;

class SettingsStoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aMissingFileMeansDefaultsUntilAValueIsWrittenAndOtherProgramsWritesAreSeen()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("Nebra/Suite.ini");
        SettingsStore store(path);
        SuiteSettings settings(store);
        QVERIFY(store.warning().isEmpty());
        QCOMPARE(settings.ShowShortcutsBar(), true);
        QVERIFY(!QFile::exists(path));
        // Writes between BeginFolderUpdate and EndFolderUpdate reach the disk together.
        settings.BeginFolderUpdate();
        QVERIFY(settings.SetExplorerModeFlag(true) && settings.SetCurrentHLD(3));
        QVERIFY(!QFile::exists(path));
        settings.EndFolderUpdate();
        SettingsStore again(path);
        QCOMPARE(SuiteSettings(again).ExplorerModeFlag(), true);
        QCOMPARE(SuiteSettings(again).CurrentHLD(), 3);
        // The level read sees what another program wrote.
        QCOMPARE(settings.DiagnosticLogLevel(), 0);
        QVERIFY(SuiteSettings(again).SetDiagnosticLogLevel(4));
        QCOMPARE(settings.DiagnosticLogLevel(), 4);
        // A write into a folder that cannot be made fails cleanly.
        const QString blocker = dir.filePath("file");
        nebra::test::writeFile(blocker, "x");
        SettingsStore unwritable(blocker + QStringLiteral("/Suite.ini"));
        QVERIFY(!unwritable.setValue("Settings/PlusCaption", true) && !unwritable.lastError().isEmpty());
        QCOMPARE(nebra::test::readFile(blocker), QByteArray("x"));
        // A file it cannot read warns and means defaults (root reads every file).
        if (geteuid() != 0) {
            nebra::test::writeFile(path, "[Settings]\nDiagnosticLogLevel=2\n");
            QFile::setPermissions(path, QFileDevice::WriteOwner);
            SettingsStore unreadable(path);
            QVERIFY(!unreadable.warning().isEmpty());
            QCOMPARE(SuiteSettings(unreadable).DiagnosticLogLevel(), 0);
        }
    }

    // Binary, not UTF-8, cut off mid-word, some other file.
    void unusableFilesMeanDefaultsAndAreLeftAlone()
    {
        // clang-format off
        for (const QByteArray& content : {QByteArray("[Settings]\nDiagnosticLogLevel=3\n\0\0\x01", 35), QByteArray("[Settings]\nPlusCaption=\xff\xfe true\n"), QByteArray("[Settings]\nDiagnosticLogLevel=3\nShowPrev"), QByteArray("#!/bin/sh\necho hello\n")}) {
            // clang-format on
            QTemporaryDir dir;
            const QString path = dir.filePath("Suite.ini");
            nebra::test::writeFile(path, content);
            SettingsStore store(path);
            SuiteSettings settings(store);
            QVERIFY(store.warning().contains(QStringLiteral("Default settings are in effect")));
            QCOMPARE(settings.DiagnosticLogLevel(), 0);
            QCOMPARE(nebra::test::readFile(path), content);
            // Writing a value keeps the unusable file aside before a new one is written.
            QVERIFY(settings.SetShowPreviewPane(false));
            const QStringList aside = QDir(dir.path()).entryList({QStringLiteral("Suite.ini.corrupt-*")});
            QCOMPARE(aside.size(), 1);
            QCOMPARE(nebra::test::readFile(dir.filePath(aside.first())), content);
            QCOMPARE(SuiteSettings(*std::make_unique<SettingsStore>(path)).ShowPreviewPane(), false);
        }
    }

    // A value that does not parse, or is out of its range, reads as its default.
    void valuesAsRead_data()
    {
        QTest::addColumn<QByteArray>("lines");
        QTest::addColumn<QString>("read"); // shortcuts bar, log level, list and tree poll seconds, watch mode
        // clang-format off
        QTest::newRow("defaults") << QByteArray() << "true 0 2 10 Auto";
        QTest::newRow("words") << QByteArray("ShowShortcutsBar=banana\nDiagnosticLogLevel=high") << "true 0 2 10 Auto";
        QTest::newRow("numbers") << QByteArray("ShowShortcutsBar=0\nDiagnosticLogLevel= 2 ") << "false 2 2 10 Auto";
        QTest::newRow("yes/no") << QByteArray("ShowShortcutsBar=No\nDiagnosticLogLevel=-1") << "false -1 2 10 Auto";
        QTest::newRow("off, and polled") << QByteArray("NetworkPollSeconds=0\nNetworkTreePollSeconds=0\nWatchMode=Poll") << "true 0 0 0 Poll";
        QTest::newRow("out of range, unknown") << QByteArray("NetworkPollSeconds=-3\nNetworkTreePollSeconds=99999999\nWatchMode=sometimes") << "true 0 2 86400 Auto";
        QTest::newRow("blanks and case") << QByteArray("WatchMode= NOTIFY ") << "true 0 2 10 Notify";
        // clang-format on
    }

    void valuesAsRead()
    {
        QFETCH(QByteArray, lines);
        QFETCH(QString, read);
        QTemporaryDir dir;
        const QString path = dir.filePath("Suite.ini");
        nebra::test::writeFile(path, "[Settings]\n" + lines + "\n");
        SettingsStore store(path);
        SuiteSettings settings(store);
        QVERIFY(store.warning().isEmpty());
        const char* const modes[] = {"Auto", "Notify", "Poll"};
        QCOMPARE(QString::asprintf("%s %d %d %d %s", settings.ShowShortcuts() ? "true" : "false",
                                   settings.DiagnosticLogLevel(), settings.NetworkPollSeconds(),
                                   settings.NetworkTreePollSeconds(), modes[int(settings.WatchMode())]),
                 read);
    }
};

QTEST_GUILESS_MAIN(SettingsStoreTest)
#include "SettingsStoreTest.moc"
