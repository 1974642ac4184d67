#include "FolderPoller.h"

#include "FileSystemKind.h"
#include "FolderEntries.h"
#include "FolderReaders.h"
#include "FolderSnapshot.h"
#include "SnapshotDiff.h"
#include "WildcardFilter.h"

#include <QDir>
#include <QFile>
#include <QTimer>

#include <cerrno>

namespace nebra {

namespace {

constexpr auto Background = FolderReaders::Lane::Background;

// A folder that is gone is reported and becomes the new baseline; one that
// errs otherwise (a server error, no permission) keeps the last baseline, so
// that nothing is reported removed because a server hiccupped.
bool replacesBaseline(int error)
{
    return error == 0 || error == ENOENT || error == ENOTDIR;
}

struct TreePoll
{
    std::shared_ptr<const FolderSnapshot> snapshot;
    std::vector<FolderChange> changes;
};

struct ListPoll
{
    std::shared_ptr<const FolderEntries> entries;
    SnapshotDiff::EntryChanges diff;
};

} // namespace

struct FolderPoller::Root
{
    enum class State
    {
        Choosing,
        Notified,
        Polled,
    };
    QString text;
    QByteArray raw;
    State state = State::Choosing;
    std::shared_ptr<const FolderSnapshot> snapshot; // none before the first poll
    quint64 read = 0;                               // the read in flight
    int pollsSinceFullRead = 0;
    QTimer* timer = nullptr;
};

struct FolderPoller::Listed
{
    QString text;
    QByteArray raw;
    QString filter;
    std::shared_ptr<const FolderEntries> entries;
    quint64 read = 0;
};

FolderPoller::FolderPoller(FolderReaders& readers, QObject* parent)
    : QObject(parent), m_readers(readers), m_listTimer(new QTimer(this))
{
    m_listTimer->setSingleShot(true);
    connect(m_listTimer, &QTimer::timeout, this, &FolderPoller::pollList);
}

FolderPoller::~FolderPoller()
{
    cancelReads();
}

void FolderPoller::setIntervals(int listSeconds, int treeSeconds)
{
    m_listSeconds = listSeconds;
    m_treeSeconds = treeSeconds;
    for (const auto& root : m_roots) {
        if (root->state == Root::State::Polled && !root->read && root->snapshot)
            arm(*root->timer, m_treeSeconds);
    }
    if (m_listed && !m_listed->read && m_listed->entries)
        arm(*m_listTimer, m_listSeconds);
}

void FolderPoller::watch(const QStringList& roots, FolderWatchMode mode)
{
    for (const QString& path : roots) {
        auto added = std::make_unique<Root>();
        Root& root = *added;
        root.text = QDir::cleanPath(path);
        root.raw = QFile::encodeName(root.text);
        root.timer = new QTimer(this);
        root.timer->setSingleShot(true);
        connect(root.timer, &QTimer::timeout, this, [this, &root] { pollTree(root); });
        m_roots.push_back(std::move(added));
        if (mode != FolderWatchMode::Auto) {
            choose(root, mode == FolderWatchMode::Poll);
            continue;
        }
        // statfs waits for the server, so even the choice is made on a reader.
        root.read = m_readers.read(
            root.text, Background, this,
            [raw = root.raw] {
                int error = 0;
                return FileSystemKind::of(raw, error).isNotified();
            },
            [this, &root](bool notified) {
                root.read = 0;
                choose(root, !notified);
            },
            [this, text = root.text] { Q_EMIT waiting(text); });
    }
}

void FolderPoller::choose(Root& root, bool polled)
{
    root.state = polled ? Root::State::Polled : Root::State::Notified;
    const QString text = root.text;
    if (polled) {
        pollTree(root); // the first poll only notes what is there
        if (m_listed && !m_listed->entries)
            pollList();
    }
    Q_EMIT rootChosen(text, polled);
}

void FolderPoller::unwatchAll()
{
    cancelReads();
    for (const auto& root : m_roots)
        delete root->timer;
    m_roots.clear();
    m_listTimer->stop();
    if (m_listed)
        m_listed->entries.reset(); // a root watched again starts from a fresh look
}

void FolderPoller::cancelReads()
{
    for (const auto& root : m_roots) {
        m_readers.cancel(root->read);
        root->read = 0;
    }
    if (m_listed) {
        m_readers.cancel(m_listed->read);
        m_listed->read = 0;
    }
}

QStringList FolderPoller::polledRoots() const
{
    QStringList roots;
    for (const auto& root : m_roots) {
        if (root->state == Root::State::Polled)
            roots << root->text;
    }
    return roots;
}

void FolderPoller::pollNow()
{
    for (const auto& root : m_roots)
        pollTree(*root);
    pollList();
}

void FolderPoller::pollTree(Root& root)
{
    if (root.state != Root::State::Polled || root.read)
        return;
    root.timer->stop();
    const std::shared_ptr<const FolderSnapshot> previous = root.snapshot;
    const bool fullRead = previous && ++root.pollsSinceFullRead >= FullReadEvery;
    if (fullRead)
        root.pollsSinceFullRead = 0;
    root.read = m_readers.read(
        root.text, Background, this,
        [raw = root.raw, text = root.text, previous, fullRead] {
            auto now =
                std::make_shared<const FolderSnapshot>(FolderSnapshot::take(raw, previous.get(), fullRead));
            return TreePoll{now, previous ? SnapshotDiff::folders(*previous, *now, text)
                                          : std::vector<FolderChange>()};
        },
        [this, &root](TreePoll poll) {
            root.read = 0;
            treePolled(root, std::move(poll.snapshot), poll.changes);
        },
        [this, text = root.text] { Q_EMIT waiting(text); });
}

void FolderPoller::treePolled(Root& root, std::shared_ptr<const FolderSnapshot> snapshot,
                              const std::vector<FolderChange>& changes)
{
    if (!root.snapshot || replacesBaseline(snapshot->error()))
        root.snapshot = std::move(snapshot);
    arm(*root.timer, m_treeSeconds);
    const QString text = root.text; // a receiver may forget the root
    for (const FolderChange& change : changes)
        Q_EMIT changed(change);
    Q_EMIT polled(text);
}

void FolderPoller::setListedFolder(const QString& folder, const QString& filter)
{
    const QString text = folder.isEmpty() ? QString() : QDir::cleanPath(folder);
    if (m_listed && m_listed->text == text && m_listed->filter == filter)
        return;
    if (m_listed)
        m_readers.cancel(m_listed->read);
    m_listTimer->stop();
    m_listed.reset();
    if (text.isEmpty())
        return;
    m_listed = std::make_unique<Listed>();
    m_listed->text = text;
    m_listed->raw = QFile::encodeName(text);
    m_listed->filter = filter;
    pollList(); // the first poll is the baseline, and the list reads again after it
}

void FolderPoller::pollList()
{
    if (!m_listed || m_listed->read || !polledRootOf(m_listed->text))
        return;
    m_listTimer->stop();
    Listed& listed = *m_listed;
    listed.read = m_readers.read(
        listed.text, Background, this,
        [raw = listed.raw, filter = listed.filter, text = listed.text, previous = listed.entries] {
            auto now =
                std::make_shared<const FolderEntries>(FolderEntries::take(raw, WildcardFilter(filter)));
            return ListPoll{now, previous ? SnapshotDiff::entries(*previous, *now, text)
                                          : SnapshotDiff::EntryChanges()};
        },
        [this](ListPoll poll) {
            Listed& listed = *m_listed; // the same: a new folder cancels this read
            listed.read = 0;
            // The list read the folder before this first look: what changed in
            // between is only in this look, so the list reads once more.
            const bool first = !listed.entries;
            if (first || replacesBaseline(poll.entries->error()))
                listed.entries = std::move(poll.entries);
            arm(*m_listTimer, m_listSeconds);
            const QString text = listed.text;
            for (const FolderChange& change : poll.diff.changes)
                Q_EMIT changed(change);
            if (first || poll.diff.changed)
                Q_EMIT listedFolderChanged(text);
            Q_EMIT polled(text);
        },
        [this, text = listed.text] { Q_EMIT waiting(text); });
}

FolderPoller::Root* FolderPoller::polledRootOf(const QString& folder) const
{
    for (const auto& root : m_roots) {
        if (root->state != Root::State::Polled)
            continue;
        const QString& top = root->text;
        if (folder == top || folder.startsWith(top.endsWith(QLatin1Char('/')) ? top : top + QLatin1Char('/')))
            return root.get();
    }
    return nullptr;
}

void FolderPoller::arm(QTimer& timer, int seconds)
{
    if (seconds > 0)
        timer.start(seconds * 1000);
    else
        timer.stop();
}

} // namespace nebra
