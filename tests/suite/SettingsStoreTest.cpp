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
    void aMissingFileMeansDefaultsUntilAValueIsWritten()
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
        QVERIFY(settings.SetExplorerModeFlag(true));
        QVERIFY(settings.SetCurrentHLD(3));
        QVERIFY(!QFile::exists(path));
        settings.EndFolderUpdate();
        SettingsStore again(path);
        QCOMPARE(SuiteSettings(again).ExplorerModeFlag(), true);
        QCOMPARE(SuiteSettings(again).CurrentHLD(), 3);
    }

    void unusableFilesMeanDefaultsAndAreLeftAlone_data()
    {
        QTest::addColumn<QByteArray>("content");
        // clang-format off
        QTest::newRow("binary") << QByteArray("[Settings]\nDiagnosticLogLevel=3\n\0\0\x01", 35);
        QTest::newRow("not utf-8") << QByteArray("[Settings]\nPlusCaption=\xff\xfe true\n");
        QTest::newRow("truncated mid-word") << QByteArray("[Settings]\nDiagnosticLogLevel=3\nShowPrev");
        QTest::newRow("some other file") << QByteArray("#!/bin/sh\necho hello\n");
        // clang-format on
    }

    void unusableFilesMeanDefaultsAndAreLeftAlone()
    {
        QFETCH(QByteArray, content);
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

    void unreadableFileWarns()
    {
        if (geteuid() == 0)
            QSKIP("root reads every file");
        QTemporaryDir dir;
        const QString path = dir.filePath("Suite.ini");
        nebra::test::writeFile(path, "[Settings]\nDiagnosticLogLevel=2\n");
        QFile::setPermissions(path, QFileDevice::WriteOwner);
        SettingsStore store(path);
        QVERIFY(!store.warning().isEmpty());
        QCOMPARE(SuiteSettings(store).DiagnosticLogLevel(), 0);
    }

    void valuesThatDoNotParseReadAsDefaults_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<bool>("showShortcuts");
        QTest::addColumn<int>("level");
        // clang-format off
        QTest::newRow("words") << QByteArray("ShowShortcutsBar=banana\nDiagnosticLogLevel=high") << true << 0;
        QTest::newRow("numbers") << QByteArray("ShowShortcutsBar=0\nDiagnosticLogLevel= 2 ") << false << 2;
        QTest::newRow("yes/no") << QByteArray("ShowShortcutsBar=No\nDiagnosticLogLevel=-1") << false << -1;
        // clang-format on
    }

    void valuesThatDoNotParseReadAsDefaults()
    {
        QFETCH(QByteArray, line);
        QFETCH(bool, showShortcuts);
        QFETCH(int, level);
        QTemporaryDir dir;
        const QString path = dir.filePath("Suite.ini");
        nebra::test::writeFile(path, "[Settings]\n" + line + "\n");
        SettingsStore store(path);
        SuiteSettings settings(store);
        QVERIFY(store.warning().isEmpty());
        QCOMPARE(settings.ShowShortcuts(), showShortcuts);
        QCOMPARE(settings.DiagnosticLogLevel(), level);
    }

    void followingFileServers_data()
    {
        QTest::addColumn<QByteArray>("lines");
        QTest::addColumn<int>("listSeconds");
        QTest::addColumn<int>("treeSeconds");
        QTest::addColumn<int>("mode");
        // clang-format off
        QTest::newRow("defaults") << QByteArray() << 2 << 10 << int(FolderWatchMode::Auto);
        QTest::newRow("off, and polled") << QByteArray("NetworkPollSeconds=0\nNetworkTreePollSeconds=0\nWatchMode=Poll") << 0 << 0 << int(FolderWatchMode::Poll);
        QTest::newRow("out of range, unknown") << QByteArray("NetworkPollSeconds=-3\nNetworkTreePollSeconds=99999999\nWatchMode=sometimes") << 2 << 86400 << int(FolderWatchMode::Auto);
        QTest::newRow("blanks and case") << QByteArray("WatchMode= NOTIFY ") << 2 << 10 << int(FolderWatchMode::Notify);
        // clang-format on
    }

    void followingFileServers()
    {
        QFETCH(QByteArray, lines);
        QFETCH(int, listSeconds);
        QFETCH(int, treeSeconds);
        QFETCH(int, mode);
        QTemporaryDir dir;
        const QString path = dir.filePath("Suite.ini");
        nebra::test::writeFile(path, "[Settings]\n" + lines + "\n");
        SettingsStore store(path);
        const SuiteSettings settings(store);
        QCOMPARE(settings.NetworkPollSeconds(), listSeconds);
        QCOMPARE(settings.NetworkTreePollSeconds(), treeSeconds);
        QCOMPARE(int(settings.WatchMode()), mode);
    }

    void theLevelSeesOtherProgramsAndAWriteIntoAnUnwritableFolderFailsCleanly()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("Suite.ini");
        nebra::test::writeFile(path, "[Settings]\nDiagnosticLogLevel=0\n");
        SettingsStore store(path);
        SuiteSettings settings(store);
        QCOMPARE(settings.DiagnosticLogLevel(), 0);
        SettingsStore other(path);
        QVERIFY(SuiteSettings(other).SetDiagnosticLogLevel(4));
        QCOMPARE(settings.DiagnosticLogLevel(), 4);
        const QString blocker = dir.filePath("file");
        nebra::test::writeFile(blocker, "x");
        SettingsStore unwritable(blocker + QStringLiteral("/Suite.ini"));
        QVERIFY(!unwritable.setValue(QStringLiteral("Settings/PlusCaption"), true));
        QVERIFY(!unwritable.lastError().isEmpty());
        QCOMPARE(nebra::test::readFile(blocker), QByteArray("x"));
    }
};

QTEST_GUILESS_MAIN(SettingsStoreTest)
#include "SettingsStoreTest.moc"
