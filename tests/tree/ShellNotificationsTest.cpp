#include "ShellNotifications.h"
#include "SecondProcess.h"

#include "FolderBranches.h"
#include "FolderTreeModel.h"
#include "MessageRecorder.h"
#include "TestFiles.h"
#include "TreePathRules.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace nebra;

using nebra::test::runScript;

constexpr int Bound = 10000;

// The notifications on a real tree of nodes over real folders, changed by a
// second process. What the hooks are asked is logged, in order.
class ShellNotificationsTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_parent;  // the parent folder of the data folders: watched
    QString m_results; // a data folder, in the tree
    FolderTreeModel m_model;
    FolderBranches m_branches{m_model, [] { return quint32(0); }};
    std::unique_ptr<ShellNotifications> m_notifications;
    QString m_current; // the file list's folder
    QStringList m_log;
    int m_refreshes = 0;
    int m_previews = 0;
    int m_items = 0;

    QString relative(const QString& path) const { return QString(path).remove(m_parent + QLatin1Char('/')); }

    NotificationTargets targets()
    {
        NotificationTargets t;
        t.IsThisFolderANebraFolder = [this](const QString& p) {
            return TreePathRules::IsThisFolderANebraFolder(p, m_parent);
        };
        t.IsThisCurrentFolder = [this](const QString& p) {
            return TreePathRules::IsThisCurrentFolder(p, m_current);
        };
        t.IsThisFileInCurrentFolder = [this](const QString& p) {
            return TreePathRules::IsThisFileInCurrentFolder(p, m_current);
        };
        t.AddExplorerBranch = [this](const QString& p) {
            const bool added = m_branches.AddExplorerBranch(p);
            m_log << QStringLiteral("add %1 %2").arg(relative(p)).arg(added);
            return added;
        };
        t.RemoveExplorerBranch = [this](const QString& p) {
            const bool removed = m_branches.RemoveExplorerBranch(p);
            m_log << QStringLiteral("remove %1 %2").arg(relative(p)).arg(removed);
            return removed;
        };
        t.RenameExplorerBranch = [this](const QString& from, const QString& to) {
            const bool renamed = m_branches.RenameExplorerBranch(from, to);
            m_log << QStringLiteral("rename %1 %2 %3").arg(relative(from), relative(to)).arg(renamed);
            return renamed;
        };
        t.GoToOrganiserNode = [this] {
            m_current = QStringLiteral("Organiser");
            m_log << QStringLiteral("go to Organiser");
        };
        t.refreshFileList = [this] { ++m_refreshes; };
        t.fileListItemCount = [this] { return m_items; };
        t.previewCurrentItem = [this] { ++m_previews; };
        return t;
    }

    // Activates and waits until the roots' walk, when one started, is done.
    void activate()
    {
        QSignalSpy done(&m_notifications->source(), &FolderChangeSource::watched);
        m_notifications->ActivateSHCNENotification();
        if (m_notifications->source().isWalking())
            QVERIFY(done.wait(Bound));
    }

private Q_SLOTS:
    void init()
    {
        m_parent = m_dir.path() + QStringLiteral("/Parent");
        m_results = m_parent + QStringLiteral("/My Assays/Results");
        test::makeFolder(m_results + QStringLiteral("/Run1/sub"));
        test::makeFolder(m_parent + QStringLiteral("/My Assays/Protocols"));
        test::makeFolder(m_dir.path() + QStringLiteral("/elsewhere"));
        m_model.clear();
        const FolderNode root = m_model.addNode(QStringLiteral("Organiser"));
        root.setFolderPath(QStringLiteral("Organiser"));
        const FolderNode results = m_model.addNode(root, QStringLiteral("Results"));
        results.setFolderPath(m_results);
        results.setData(4);
        m_branches.AddSubFolderNodes(m_results, results, DocumentType::Results);
        m_current = m_results + QStringLiteral("/Run1");
        m_log.clear();
        m_refreshes = m_previews = m_items = 0;
        m_notifications = std::make_unique<ShellNotifications>();
        m_notifications->setTargets(targets());
        m_notifications->setWatchedRoots([this] { return QStringList{m_parent}; });
        m_notifications->setWindowId([] { return quintptr(0x4A2F); });
    }
    void cleanup()
    {
        m_notifications.reset();
        runScript(m_dir.path(), QStringLiteral("rm -rf Parent elsewhere"));
    }

    void treeFollowsAnotherProcess_data()
    {
        QTest::addColumn<QString>("script"); // run in the results folder
        QTest::addColumn<QStringList>("log");
        QTest::addColumn<QStringList>("tree");
        QTest::addColumn<bool>("toRoot"); // the file list's folder is then the root's
        const QString run1 = QStringLiteral("My Assays/Results/Run1");
        const QString results = QStringLiteral("My Assays/Results");
        // clang-format off
        QTest::newRow("folder made in Results: a childless node") << "mkdir Run7" << QStringList{"add My Assays/Results/Run7 1"} << QStringList{results, run1, run1 + "/sub", results + "/Run7"} << false;
        QTest::newRow("folder made outside the data folders: nothing") << "mkdir ../../../elsewhere/x ../../x" << QStringList{"add x 0"} << QStringList{results, run1, run1 + "/sub"} << false;
        QTest::newRow("shown folder deleted: node removed, then to the root") << "rm -r Run1" << QStringList{"remove My Assays/Results/Run1/sub 1", "remove " + run1 + " 1", "go to Organiser"} << QStringList{results} << true;
        QTest::newRow("shown folder renamed: to the root, then a fresh node") << "mv Run1 Run9" << QStringList{"go to Organiser", "rename " + run1 + " My Assays/Results/Run9 1"} << QStringList{results, results + "/Run9"} << true;
        QTest::newRow("renamed out of the data folders: removed, nothing added") << "mv Run1/sub ../../../elsewhere/" << QStringList{"remove My Assays/Results/Run1/sub 1"} << QStringList{results, run1} << false;
        // clang-format on
    }
    void treeFollowsAnotherProcess()
    {
        QFETCH(QString, script);
        QFETCH(QStringList, log);
        QFETCH(QStringList, tree);
        QFETCH(bool, toRoot);
        activate();
        QVERIFY(m_notifications->isActive());
        runScript(m_results, script);
        QTRY_COMPARE_WITH_TIMEOUT(m_log.size(), log.size(), Bound);
        QCOMPARE(m_log, log);
        QStringList paths; // the tree's folder paths below the root, relative to the parent folder
        for (int i = 1; i < m_model.count(); ++i)
            paths << relative(m_model.node(i).folderPath());
        QCOMPARE(paths, tree);
        QCOMPARE(m_current, toRoot ? QStringLiteral("Organiser") : m_results + "/Run1");
        QCOMPARE(m_model.node(m_model.count() - 1).data(), 4);
    }

    void activateAndTerminateTwiceThenAStartFailureShowsTheWindowId()
    {
        test::MessageRecorder messages;
        m_notifications->TerminateSHCNENotification(); // while inactive: nothing
        QVERIFY(!m_notifications->isActive());
        activate();
        const int watches = m_notifications->source().watchCount();
        activate(); // while active: nothing
        QVERIFY(m_notifications->isActive());
        QCOMPARE(m_notifications->source().watchCount(), watches);
        m_notifications->TerminateSHCNENotification();
        QVERIFY(!m_notifications->isActive() && !m_notifications->source().isOpen());
        runScript(m_results, QStringLiteral("mkdir Unseen"));
        activate(); // again after termination
        QVERIFY(m_notifications->isActive() && m_log.isEmpty() && messages.requests().isEmpty());
        // The system refuses a notification instance: no descriptor is free.
        m_notifications->TerminateSHCNENotification();
        const int lowestFree = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        ::close(lowestFree);
        rlimit saved = {};
        ::getrlimit(RLIMIT_NOFILE, &saved);
        rlimit tight = saved;
        tight.rlim_cur = rlim_t(lowestFree);
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &tight), 0);
        activate();
        ::setrlimit(RLIMIT_NOFILE, &saved);
        QVERIFY(!m_notifications->isActive());
        QCOMPARE(messages.requests().size(), 1);
        QCOMPARE(messages.requests().at(0).text, QStringLiteral("Unable to successfully subclass &H4A2F"));
        QCOMPARE(messages.requests().at(0).icon, MessageIcon::Critical);
        QCOMPARE(messages.requests().at(0).buttons, int(MessageButton::Ok));
    }

    // Watching fails silently, the source stays open: the next activation
    // finds it open and fails as a start failure.
    void registrationFailureIsSilent()
    {
        test::MessageRecorder messages;
        m_notifications->setWatchedRoots([this] { return QStringList{m_dir.path() + "/none"}; });
        activate();
        QVERIFY(!m_notifications->isActive() && messages.requests().isEmpty());
        QVERIFY(m_notifications->source().isOpen());
        activate();
        QCOMPARE(messages.requests().size(), 1);
        QVERIFY(!m_notifications->isActive());
    }

    // Only the activation's walk may switch the notifications off: after a
    // rewatch, a root that cannot be watched leaves the others followed.
    void aRewatchKeepsTheNotificationsOn()
    {
        activate();
        m_notifications->setWatchedRoots([this] { return QStringList{m_parent, m_dir.path() + "/none"}; });
        QSignalSpy done(&m_notifications->source(), &FolderChangeSource::watched);
        m_notifications->rewatch();
        QVERIFY(done.wait(Bound));
        QCOMPARE(done.last().at(0).toBool(), false);
        QVERIFY(m_notifications->isActive());
    }

    void watchLimitWarnsOnce()
    {
        test::MessageRecorder messages;
        m_notifications->source().setAddWatch([](int fd, const char* path, quint32 mask) {
            if (QByteArray(path).endsWith("/Parent"))
                return ::inotify_add_watch(fd, path, mask);
            errno = ENOSPC;
            return -1;
        });
        activate();
        QVERIFY(m_notifications->isActive());
        runScript(m_parent, QStringLiteral("mkdir a b"));
        QTRY_COMPARE_WITH_TIMEOUT(m_log.size(), 2, Bound);
        QCOMPARE(messages.requests().size(), 1);
        const MessageRequest warning = messages.requests().at(0);
        QCOMPARE(warning.icon, MessageIcon::Warning);
        QVERIFY(warning.text.contains(QString::number(FolderChangeSource::systemWatchLimit())));
        QVERIFY(warning.text.contains(QStringLiteral("sysctl fs.inotify.max_user_watches=")));
    }

    // The file list is refreshed through the notifications once only, and previewed when it holds items.
    void refreshGuard_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("items");
        QTest::addColumn<int>("refreshes");
        QTest::addColumn<int>("previews");
        // clang-format off
        QTest::newRow("in the current folder, with items") << "Run1/a.ars" << 2 << 1 << 1;
        QTest::newRow("in a subfolder of it") << "Run1/sub/a.ars" << 1 << 1 << 1;
        QTest::newRow("empty list: no preview") << "Run1/a.ars" << 0 << 1 << 0;
        QTest::newRow("elsewhere: nothing") << "a.ars" << 2 << 0 << 0;
        // clang-format on
    }
    void refreshGuard()
    {
        QFETCH(QString, file);
        QFETCH(int, items);
        QFETCH(int, refreshes);
        QFETCH(int, previews);
        m_items = items;
        const QString path = m_results + QLatin1Char('/') + file;
        for (int i = 0; i < 3; ++i)
            m_notifications->NotificationReceipt(path, std::nullopt, ShellEvent::SHCNE_UPDATEITEM);
        QCOMPARE(m_refreshes, refreshes);
        QCOMPARE(m_previews, previews);
    }

    void absentItemKeepsItsFields()
    {
        m_notifications->NotificationReceipt("/x/old", "/x/new", ShellEvent::SHCNE_RENAMEFOLDER);
        m_notifications->NotificationReceipt("/y/made", std::nullopt, ShellEvent::SHCNE_MKDIR);
        QCOMPARE(m_notifications->item1DisplayName(), QStringLiteral("made"));
        QCOMPARE(m_notifications->item1Path(), QStringLiteral("/y/made"));
        QCOMPARE(m_notifications->item2DisplayName(), QStringLiteral("new"));
        QCOMPARE(m_notifications->item2Path(), QStringLiteral("/x/new"));
        QCOMPARE(m_notifications->lastEventText(), QStringLiteral("\r\nSHCNE_MKDIR"));
        // No name: both empty.
        m_notifications->NotificationReceipt(QStringLiteral("/"), std::nullopt, 0x12345);
        QCOMPARE(m_notifications->item1Path(), QString());
        QCOMPARE(m_notifications->lastEventText(), QStringLiteral("\r\n"));
    }
};

QTEST_GUILESS_MAIN(ShellNotificationsTest)
#include "ShellNotificationsTest.moc"
