#include "FolderReaders.h"
#include "DirectoryReader.h"
#include "MountedShare.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

using namespace nebra;
using Lane = FolderReaders::Lane;

namespace {

constexpr int Bound = 10000;

// The number of subfolders, read as the tree reads them; started is set
// just before the read, done just after it.
struct Listing
{
    QByteArray raw;
    std::shared_ptr<std::atomic<bool>> started = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<std::atomic<bool>> done = std::make_shared<std::atomic<bool>>(false);

    size_t operator()() const
    {
        *started = true;
        const size_t count = DirectoryReader::subfolders(raw).folders.size();
        *done = true;
        return count;
    }
};

} // namespace

class FolderReadersTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    // A share with two folders on it, its daemon frozen: the server stopped answering.
    static bool frozen(test::MountedShare& share)
    {
        if (!share.made())
            return false;
        QDir().mkpath(share.backing + QStringLiteral("/Protocols"));
        QDir().mkpath(share.backing + QStringLiteral("/Results"));
        share.fuse.freeze();
        return true;
    }

private Q_SLOTS:
    void readsRunOnAnotherThreadAndAnswerInOrder()
    {
        FolderReaders readers;
        const std::thread::id mainThread = std::this_thread::get_id();
        auto ranHere = std::make_shared<std::atomic<bool>>(false);
        QList<int> answers;
        for (int i = 0; i < 20; ++i) {
            readers.read(
                m_dir.path(), Lane::User, this,
                [i, mainThread, ranHere] {
                    *ranHere = *ranHere || std::this_thread::get_id() == mainThread;
                    return i;
                },
                [&answers](int answer) { answers << answer; });
        }
        QTRY_COMPARE_WITH_TIMEOUT(answers.size(), 20, Bound);
        for (int i = 0; i < 20; ++i)
            QCOMPARE(answers[i], i);
        QVERIFY(!*ranHere);
    }

    void aFrozenShareIsReportedWaitingWhileOtherFoldersAnswerAndTheProcessEndsAnyway()
    {
        test::MountedShare share;
        if (!frozen(share))
            return;
        FolderReaders readers;
        QElapsedTimer clock;
        clock.start();
        qint64 waitedAt = -1;
        std::optional<size_t> shared;
        readers.read(
            share.mount, Lane::User, this, Listing{QFile::encodeName(share.mount)},
            [&shared](size_t count) { shared = count; }, [&] { waitedAt = clock.elapsed(); });
        bool localAnswered = false;
        readers.read(m_dir.path(), Lane::User, this, Listing{QFile::encodeName(m_dir.path())},
                     [&localAnswered](size_t) { localAnswered = true; });
        QTRY_VERIFY_WITH_TIMEOUT(localAnswered, Bound);
        QTRY_VERIFY_WITH_TIMEOUT(waitedAt >= 0, FolderReaders::WaitingAfterMs + 1000);
        QVERIFY2(waitedAt >= FolderReaders::WaitingAfterMs, qPrintable(QString::number(waitedAt)));
        QVERIFY(!shared);
        // The process ends while its read is stuck.
        QProcess probe;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        // A leak check at the end would stop every thread first, and one
        // waiting in the kernel for a frozen FUSE daemon cannot be stopped.
        environment.insert(QStringLiteral("ASAN_OPTIONS"), environment.value(QStringLiteral("ASAN_OPTIONS")) +
                                                               QStringLiteral(":detect_leaks=0"));
        probe.setProcessEnvironment(environment);
        probe.start(QStringLiteral(PROBE_PATH), {share.mount});
        QVERIFY(probe.waitForFinished(FolderReaders::WaitingAfterMs + Bound));
        QCOMPARE(probe.exitStatus(), QProcess::NormalExit);
        QCOMPARE(probe.exitCode(), 0);
        QCOMPARE(probe.readAllStandardOutput(), QByteArray("waiting\n"));

        share.fuse.thaw();
        QTRY_VERIFY_WITH_TIMEOUT(shared.has_value(), Bound);
        QCOMPARE(*shared, size_t(2));
    }

    // Readers destroyed do not wait for a stuck read, nor deliver it.
    void cancelledReadsThoseWhoseAskerWentAndThoseOfDestroyedReadersAreNotDelivered()
    {
        test::MountedShare share;
        if (!frozen(share))
            return;
        FolderReaders readers;
        int delivered = 0;
        const auto count = [&delivered](size_t) { ++delivered; };
        const Listing stuck{QFile::encodeName(share.mount)};
        const Listing queued{stuck.raw};
        const Listing orphaned{stuck.raw};
        const quint64 stuckId = readers.read(share.mount, Lane::User, this, stuck, count);
        QTRY_VERIFY_WITH_TIMEOUT(*stuck.started, Bound);
        readers.cancel(stuckId);
        readers.cancel(readers.read(share.mount, Lane::User, this, queued, count));
        auto* asker = new QObject;
        readers.read(share.mount, Lane::User, asker, orphaned, count);
        delete asker;

        share.fuse.thaw();
        bool last = false;
        readers.read(
            share.mount, Lane::User, this, [] { return 0; }, [&last](int) { last = true; });
        QTRY_VERIFY_WITH_TIMEOUT(last, Bound);
        QCOMPARE(delivered, 0);
        QVERIFY(*stuck.done && !*queued.started && *orphaned.done);
        QCOMPARE(readers.pendingCount(), 0);

        // Destroying the readers never waits for a stuck read.
        share.fuse.freeze();
        auto gone = std::make_unique<FolderReaders>();
        const Listing abandoned{stuck.raw};
        gone->read(share.mount, Lane::User, this, abandoned, count);
        QTRY_VERIFY_WITH_TIMEOUT(*abandoned.started, Bound);
        QElapsedTimer clock;
        clock.start();
        gone.reset();
        QVERIFY(clock.elapsed() < 1000);
        share.fuse.thaw(); // the abandoned thread ends its read and must deliver nothing
        QTRY_VERIFY_WITH_TIMEOUT(*abandoned.done, Bound);
        QCoreApplication::processEvents();
        QCOMPARE(delivered, 0);
    }
};

QTEST_GUILESS_MAIN(FolderReadersTest)
#include "FolderReadersTest.moc"
