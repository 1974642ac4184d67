#include "FolderChangeSource.h"
#include "ChangeLines.h"
#include "MountedShare.h"
#include "SecondProcess.h"

#include "TestFiles.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <cerrno>
#include <dirent.h>
#include <functional>
#include <set>
#include <sys/inotify.h>
#include <sys/stat.h>

using namespace nebra;

using nebra::test::runScript;

namespace {

constexpr int Bound = 10000;

// Watches the roots and waits for the walk: true when every root is watched.
bool watchAndWait(FolderChangeSource& source, const QStringList& roots)
{
    QSignalSpy done(&source, &FolderChangeSource::watched);
    if (!source.watch(roots) || !done.wait(Bound))
        return false;
    return done.at(0).at(0).toBool();
}

// Every folder below folder, links to folders included but not followed;
// names as the source shows them.
void addFoldersOnDisk(const QByteArray& folder, std::set<QString>& folders)
{
    DIR* dir = ::opendir(folder.constData());
    for (const dirent* entry = nullptr; dir && (entry = ::readdir(dir));) {
        const QByteArray name(entry->d_name);
        const QByteArray path = folder + '/' + name;
        struct stat st = {};
        if (name == "." || name == ".." || ::stat(path.constData(), &st) != 0 || !S_ISDIR(st.st_mode))
            continue;
        folders.insert(QString::fromUtf8(path));
        if (::lstat(path.constData(), &st) == 0 && !S_ISLNK(st.st_mode))
            addFoldersOnDisk(path, folders);
    }
    if (dir)
        ::closedir(dir);
}

} // namespace

class FolderChangeSourceTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    const QString m_root = m_dir.path() + QStringLiteral("/data root");
    std::unique_ptr<FolderChangeSource> m_source;
    QStringList m_changes;       // as test::changeLine writes them, the root as $R
    std::set<QString> m_folders; // what the changes say is on disk: those at the start, each change applied

    void apply(const FolderChange& change)
    {
        if (change.event == ShellEvent::SHCNE_MKDIR)
            m_folders.insert(change.path1);
        if (change.event != ShellEvent::SHCNE_RMDIR && change.event != ShellEvent::SHCNE_RENAMEFOLDER)
            return;
        // A removed or renamed folder takes its subfolders along.
        std::vector<QString> renamed;
        std::erase_if(m_folders, [&](const QString& path) {
            const bool below = path == change.path1 || path.startsWith(change.path1 + QLatin1Char('/'));
            if (below && change.event == ShellEvent::SHCNE_RENAMEFOLDER)
                renamed.push_back(change.path2 + path.mid(change.path1.size()));
            return below;
        });
        m_folders.insert(renamed.begin(), renamed.end());
    }

    // setUp, when given, adjusts the source before it opens (its watch call, the rescan interval).
    void startWatching(const std::function<void(FolderChangeSource&)>& setUp = {})
    {
        m_source = std::make_unique<FolderChangeSource>();
        if (setUp)
            setUp(*m_source);
        connect(m_source.get(), &FolderChangeSource::changed, this, [this](const FolderChange& change) {
            m_changes << test::changeLine(change, m_root, QStringLiteral("$R"));
            apply(change);
        });
        addFoldersOnDisk(QFile::encodeName(m_root), m_folders);
        QVERIFY(m_source->open());
        QVERIFY(watchAndWait(*m_source, {m_root}));
    }

    // The folders the changes leave and those on disk that differ, empty when none do.
    QString difference() const
    {
        std::set<QString> disk;
        addFoldersOnDisk(QFile::encodeName(m_root), disk);
        QStringList lines;
        for (const auto& [these, others, word] : {std::tuple{&m_folders, &std::as_const(disk), "extra: "},
                                                  {&std::as_const(disk), &m_folders, "missing: "}})
            for (const QString& path : *these)
                if (!others->count(path))
                    lines << QLatin1String(word) + path;
        return lines.mid(0, 20).join(QLatin1Char('\n'));
    }

private Q_SLOTS:
    void init()
    {
        QVERIFY(m_dir.isValid());
        test::makeFolder(m_root + QStringLiteral("/a/b"));
        test::makeFolder(m_dir.path() + QStringLiteral("/outside"));
        test::writeFile(m_root + QStringLiteral("/a/old.txt"), "x");
        m_changes.clear();
        m_folders.clear();
    }
    void cleanup()
    {
        m_source.reset();
        runScript(m_dir.path(), QStringLiteral("rm -rf 'data root' outside")); // odd names included
    }

    void reportsEachKindOfChange_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("changes");
        // clang-format off
        QTest::newRow("folder made") << "mkdir n" << QStringList{"MKDIR $R/n"};
        QTest::newRow("folder removed") << "rmdir a/b" << QStringList{"RMDIR $R/a/b"};
        QTest::newRow("folder renamed") << "mv a/b a/c" << QStringList{"RENAMEFOLDER $R/a/b|$R/a/c"};
        QTest::newRow("folder moved up") << "mv a/b b" << QStringList{"RENAMEFOLDER $R/a/b|$R/b"};
        QTest::newRow("folder moved out, then changed") << "mv a ../outside/ && mkdir ../outside/a/new" << QStringList{"RMDIR $R/a"};
        QTest::newRow("folder moved in with its subfolders") << "mkdir -p ../outside/m/n && mv ../outside/m m" << QStringList{"MKDIR $R/m", "MKDIR $R/m/n"};
        QTest::newRow("file written") << "echo x > a/f; echo y >> a/f" << QStringList{"UPDATEITEM $R/a/f"};
        QTest::newRow("file removed") << "rm a/old.txt" << QStringList{"DELETE $R/a/old.txt"};
        QTest::newRow("file renamed") << "mv a/old.txt a/new.txt" << QStringList{"DELETE $R/a/old.txt", "UPDATEITEM $R/a/new.txt"};
        QTest::newRow("names with blanks, newlines and odd bytes") << "mkdir 'a/with blank' $'a/new\\nline' $'a/bad\\xff'" << QStringList{"MKDIR $R/a/with blank", "MKDIR $R/a/new\nline", QStringLiteral("MKDIR $R/a/bad") + QChar(0xFFFD)};
        QTest::newRow("made and removed in one pass") << "mkdir x; rmdir x; mkdir y" << QStringList{"MKDIR $R/y"};
        QTest::newRow("made, moved and removed before it was read") << "mkdir p; mv p q; mkdir r; rmdir r" << QStringList{"MKDIR $R/q"};
        QTest::newRow("removed and made again: order kept") << "mkdir -p r/s; rmdir r/s r; mkdir r" << QStringList{"MKDIR $R/r"};
        QTest::newRow("removed, made again and moved") << "rmdir a/b; mkdir a/b; mv a/b a/c" << QStringList{"RMDIR $R/a/b", "MKDIR $R/a/c"};
        QTest::newRow("folder replaced by a link") << "rm -r a/b; ln -s ../../outside a/b" << QStringList{"RMDIR $R/a/b", "MKDIR $R/a/b"};
        QTest::newRow("inside a link: nothing") << "ln -s ../outside l && mkdir ../outside/z" << QStringList{"MKDIR $R/l"};
        // clang-format on
    }
    void reportsEachKindOfChange()
    {
        QFETCH(QString, script);
        QFETCH(QStringList, changes);
        startWatching();
        runScript(m_root, script);
        QTRY_COMPARE_WITH_TIMEOUT(m_changes.size(), changes.size(), Bound);
        QCOMPARE(m_changes, changes);
        QCOMPARE(difference(), QString());
    }

    // A folder's subfolders may be made before its watch exists.
    void nestedCreationMissesNothing_data()
    {
        QTest::addColumn<QString>("script");
        // clang-format off
        QTest::newRow("mkdir -p") << "for i in $(seq 40); do mkdir -p n$i/a/b/c/d/e/f/g; done";
        QTest::newRow("copied tree") << "mkdir -p ../outside/t/{1..9}/{1..9}/{1..3} && for i in $(seq 4); do cp -r ../outside/t c$i; done";
        QTest::newRow("moved in tree") << "mkdir -p ../outside/t/{1..9}/{1..9}/{1..3} && mv ../outside/t t";
        // clang-format on
    }
    void nestedCreationMissesNothing()
    {
        QFETCH(QString, script);
        startWatching();
        QProcess process; // runs while the source reads
        process.setWorkingDirectory(m_root);
        process.start(QStringLiteral("/bin/bash"), {QStringLiteral("-c"), script});
        QTRY_VERIFY_WITH_TIMEOUT(process.state() == QProcess::NotRunning, 60000);
        QCOMPARE(process.exitCode(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(difference(), QString(), Bound);
        QCOMPARE(QSet<QString>(m_changes.begin(), m_changes.end()).size(), m_changes.size()); // once each
    }

    // The kernel drops events past its queue's length; the source reads the disk again.
    void queueOverflowEndsEqualToDiskAndARemovedRootIsReported()
    {
        startWatching();
        // Writes alternating between two files fill the queue; what follows is lost.
        const QString flood = QStringLiteral("for i in $(seq 17000); do : > a/f$((i % 2)); done; ");
        runScript(m_root, flood + QStringLiteral("mkdir -p a/late/x a/late2; rmdir a/b"));
        QTRY_COMPARE_WITH_TIMEOUT(difference(), QString(), Bound);
        QVERIFY(m_source->statistics().overflows >= 1);
        QVERIFY(m_source->statistics().rescans >= 1);
        runScript(m_root, flood + QStringLiteral("mv a/late a/moved; rmdir a/late2; mkdir a/new"));
        QTRY_COMPARE_WITH_TIMEOUT(difference(), QString(), Bound);
        // A removed root is reported, and nothing is watched any more.
        runScript(m_dir.path(), QStringLiteral("rm -r 'data root'"));
        QTRY_COMPARE_WITH_TIMEOUT(m_changes.value(m_changes.size() - 1), QStringLiteral("RMDIR $R"), Bound);
        QVERIFY(m_folders.empty());
        QVERIFY(!m_source->isWatching());
    }

    // Past the system's limit of watches, folders are read again periodically.
    void watchLimitFallsBackToRescan()
    {
        test::makeFolder(m_root + QStringLiteral("/a/b/c/d/e"));
        int budget = 3;
        QList<int> limits;
        startWatching([&](FolderChangeSource& source) {
            source.setAddWatch([&budget](int fd, const char* path, quint32 mask) {
                if (budget-- > 0)
                    return ::inotify_add_watch(fd, path, mask);
                errno = ENOSPC;
                return -1;
            });
            source.setRescanInterval(20);
            connect(&source, &FolderChangeSource::watchLimitReached, this,
                    [&limits](int limit) { limits << limit; });
        });
        const QList<int> once{FolderChangeSource::systemWatchLimit()};
        QCOMPARE(limits, once);
        QVERIFY(m_source->statistics().unwatchedFolders > 0);
        runScript(m_root,
                  QStringLiteral("mkdir a/b/c/d/e/f a/b/c/g n; rmdir a/b/c/d/e/f; mkdir a/b/c/d/e/h"));
        QTRY_COMPARE_WITH_TIMEOUT(difference(), QString(), Bound);
        QCOMPARE(limits, once); // told once only
    }

    // The folder is unreadable, gone or no folder at the moment its watch is added.
    void folderChangingUnderTheWatch_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("reported");
        // clang-format off
        QTest::newRow("unreadable") << EACCES << true;
        QTest::newRow("deleted while read") << ENOENT << false;
        QTest::newRow("replaced by a file") << ENOTDIR << false;
        // clang-format on
    }
    void folderChangingUnderTheWatch()
    {
        QFETCH(int, error);
        QFETCH(bool, reported);
        startWatching([error](FolderChangeSource& source) {
            source.setAddWatch([error](int fd, const char* path, quint32 mask) {
                const QByteArray folder(path);
                if (!folder.endsWith("/x"))
                    return ::inotify_add_watch(fd, path, mask);
                if (error != EACCES)
                    QDir(QFile::decodeName(folder)).removeRecursively();
                if (error == ENOTDIR)
                    test::writeFile(QFile::decodeName(folder));
                errno = error;
                return -1;
            });
            source.setRescanInterval(20);
        });
        runScript(m_root, QStringLiteral("mkdir -p x/y && mkdir z"));
        QTRY_VERIFY_WITH_TIMEOUT(m_folders.count(m_root + QStringLiteral("/z")), Bound);
        QCOMPARE(m_folders.count(m_root + QStringLiteral("/x")), reported);
        QTRY_COMPARE_WITH_TIMEOUT(difference(), QString(), Bound);
    }

    // A share mounted below the root is a folder of the tree, but the source
    // neither watches nor enters it: with its server frozen, watching the
    // root returns at once.
    void openAndWatchRulesAndAShareBelowTheRootIsNotEntered()
    {
        FolderChangeSource source;
        QVERIFY(!source.watch({m_root})); // not open
        QVERIFY(source.open());
        QVERIFY(!source.open()); // open already
        QVERIFY(!watchAndWait(source, {m_dir.path() + QStringLiteral("/missing")}));
        QCOMPARE(source.lastError(), ENOENT);
        QVERIFY(!source.isWatching());
        QVERIFY(watchAndWait(source, {m_root}));
        QCOMPARE(source.watchCount(), 3); // the root, a and a/b
        source.unwatchAll();
        QCOMPARE(source.watchCount(), 0);
        source.close();
        QVERIFY(!source.isOpen());
        QVERIFY(source.open());
        test::MountedShare share;
        share.mount = m_root + QStringLiteral("/share");
        if (!share.made())
            return;
        test::makeFolder(share.backing + QStringLiteral("/inside"));
        share.fuse.freeze();
        QElapsedTimer clock;
        clock.start();
        QVERIFY(watchAndWait(source, {m_root}));
        QVERIFY(clock.elapsed() < 1000);
        QCOMPARE(source.watchCount(), 3); // the root, a and a/b
    }

    // The walk runs on a reader thread: the caller's events are handled while
    // it waits in a watch, and folders made meanwhile are reported when the
    // walk is taken in, unless it found them itself.
    void walkLeavesTheCallingThreadFree()
    {
        QSemaphore inWatch;
        QSemaphore go;
        std::atomic<bool> onCaller = false;
        QThread* const caller = QThread::currentThread();
        startWatching([&](FolderChangeSource& source) {
            source.setAddWatch([&](int fd, const char* path, quint32 mask) {
                if (QByteArray(path).endsWith("/a/b")) { // the root and a are read
                    onCaller = QThread::currentThread() == caller;
                    inWatch.release();
                    go.tryAcquire(1, Bound); // a walk on this thread fails, not hangs
                }
                return ::inotify_add_watch(fd, path, mask);
            });
            QTimer::singleShot(0, this, [&] {
                QVERIFY(inWatch.tryAcquire(1, Bound));
                QVERIFY(source.isWalking());
                runScript(m_root, QStringLiteral("mkdir c a/new a/b/found"));
                m_folders.insert(m_root + QStringLiteral("/a/b/found"));
                go.release();
            });
        });
        QVERIFY(!onCaller);
        QTRY_COMPARE_WITH_TIMEOUT(difference(), QString(), Bound);
        QCOMPARE(m_changes.size(), 2); // c and a/new
    }

    // A walk abandoned by unwatchAll() or the source's end is never taken in,
    // and nothing waits for it.
    void abandonedWalkIsDropped()
    {
        struct Gate
        {
            QSemaphore inWatch;
            QSemaphore go;
            std::atomic<bool> first = true;
        };
        auto gate = std::make_shared<Gate>(); // the last walk outlives this test
        auto source = std::make_unique<FolderChangeSource>();
        source->setAddWatch([gate](int fd, const char* path, quint32 mask) {
            if (gate->first.exchange(false)) {
                gate->inWatch.release();
                gate->go.acquire();
            }
            return ::inotify_add_watch(fd, path, mask);
        });
        QVERIFY(source->open());
        QSignalSpy done(source.get(), &FolderChangeSource::watched);
        QVERIFY(source->watch({m_root}));
        QVERIFY(gate->inWatch.tryAcquire(1, Bound));
        source->unwatchAll();
        QVERIFY(!source->isWatching());
        gate->go.release();
        QVERIFY(watchAndWait(*source, {m_root}));
        QCOMPARE(done.size(), 1); // the second walk's only
        QCOMPARE(source->watchCount(), 3);
        gate->first = true;
        QVERIFY(source->watch({m_root}));
        QVERIFY(gate->inWatch.tryAcquire(1, Bound));
        source.reset(); // returns with the walk still waiting
        gate->go.release();
    }
};

QTEST_GUILESS_MAIN(FolderChangeSourceTest)
#include "FolderChangeSourceTest.moc"
