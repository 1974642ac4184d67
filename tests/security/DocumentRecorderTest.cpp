#include "DocumentRecorder.h"
#include "ManagerSite.h"
#include "RunningPrograms.h"
#include "SecondProcess.h"
#include "SecretBytes.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTest>

using namespace nebra;
using namespace nebra::test;

namespace {

// Data folders of two kinds under a temporary parent, with the recorder of
// jsmith's session over them.
struct Recorded
{
    ManagerSite site{{"Documents/Sign"}};
    std::unique_ptr<NebraSecurityManager> manager = loggedInManager();
    QTemporaryDir parent;
    DocumentFolders folders{{{parent.path() + "/Protocols", {"*.apr"}}, {parent.path() + "/Reports", {"*"}}}};
    RunningPrograms programs;

    QString path(const QString& name) const { return parent.path() + QLatin1Char('/') + name; }
    std::unique_ptr<DocumentRecorder> recorder()
    {
        auto r = std::make_unique<DocumentRecorder>(folders, manager->DocumentWriters(), &programs);
        r->setRetryInterval(50);
        return r;
    }
    // Runs action and waits until the recorder has read and written all it caused.
    static void settle(DocumentRecorder& recorder, const std::function<void()>& action)
    {
        QSignalSpy idle(&recorder, &DocumentRecorder::idle);
        action();
        QVERIFY(!idle.isEmpty() || idle.wait(20000));
    }
    // A second process changes the document (content and time).
    void change(const QString& name, const QString& content)
    {
        runScript(parent.path(), QStringLiteral("printf '%1' > '%2' && touch -d '+%3 seconds' '%2'")
                                     .arg(content, name)
                                     .arg(++m_seconds));
    }
    QString newestEntry() { return site.auditTexts().constLast(); }
    // A recorder started over the folder given (made first, with the files
    // given holding "v1"), once it has read it.
    std::unique_ptr<DocumentRecorder> started(const QString& folder, const QStringList& files = {})
    {
        if (!manager || !QDir().mkpath(path(folder)))
            qFatal("No session or no folder");
        for (const QString& file : files)
            change(file, QStringLiteral("v1"));
        std::unique_ptr<DocumentRecorder> r = recorder();
        settle(*r, [&r] { r->start(); });
        return r;
    }

private:
    int m_seconds = 0;
};

} // namespace

// The recorder over real files, a real second process and a real store, on
// the back end NEBRA_TEST_SECURITY_BACKEND names (CTest runs it for each).
// The entries' texts are SignaturesTest's; here: which entry a change
// on disk becomes, and that the session never waits for a store that fails.
class DocumentRecorderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void changesAreAttributed_data()
    {
        QTest::addColumn<QString>("who");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<int>("state");
        // clang-format off
        QTest::newRow("the Organiser") << "organiser" << "Document changed: %1 sha256=" << int(RecordState::Recorded);
        QTest::newRow("a started program") << "running" << "Document changed: %1 sha256=" << int(RecordState::Recorded);
        QTest::newRow("a started program that ended") << "ended" << "Document changed outside the suite: %1 sha256=" << int(RecordState::ChangedOutside);
        QTest::newRow("another process") << "other" << "Document changed outside the suite: %1 sha256=" << int(RecordState::ChangedOutside);
        QTest::newRow("another process, seen by a poll") << "polled" << "Document changed outside the suite: %1 sha256=" << int(RecordState::ChangedOutside);
        QTest::newRow("a wizard in the Organiser, just ended") << "wizard" << "Document changed: %1 sha256=" << int(RecordState::Recorded);
        // clang-format on
    }

    void changesAreAttributed()
    {
        QFETCH(QString, who);
        QFETCH(QString, entry);
        QFETCH(int, state);
        Recorded o;
        const QString name = "Protocols/ELISA.apr";
        const QString folder = o.path("Protocols");
        const std::unique_ptr<DocumentRecorder> recorder = o.started("Protocols", {name});
        QVERIFY(o.newestEntry().startsWith("Document recorded: " + o.path(name)));

        QProcess editor; // stands in for the layout editor, started on the folder
        editor.start("sleep", {"60"});
        QVERIFY(editor.waitForStarted());
        o.programs.started(editor.processId(), "Layout Editor", folder);
        if (who != QLatin1String("running")) {
            editor.kill();
            QVERIFY(editor.waitForFinished());
        }
        if (who == QLatin1String("organiser"))
            recorder->expectWrite(o.path(name));
        if (who == QLatin1String("wizard"))
            o.programs.startedHere("Organiser", folder);
        o.change(name, QStringLiteral("v2"));
        if (who == QLatin1String("wizard"))
            o.programs.endedHere(folder);
        Recorded::settle(*recorder, [&] {
            if (who == QLatin1String("polled"))
                recorder->poll();
            else
                recorder->noticeChange({ShellEvent::SHCNE_UPDATEITEM, o.path(name), {}});
        });

        QVERIFY2(o.newestEntry().startsWith(entry.arg(o.path(name))), qPrintable(o.newestEntry()));
        if (state == int(RecordState::Recorded))
            QVERIFY(o.newestEntry().endsWith(who == "running" ? " by Layout Editor" : " by Organiser"));
        QCOMPARE(int(recorder->state(o.path(name))), state);
        QCOMPARE(recorder->changeSeen(o.path(name)).isValid(), state == int(RecordState::ChangedOutside));
        editor.kill();
        editor.waitForFinished();
    }

    // Changes made while no Organiser ran are found at the next start, each
    // once; a rename or a save over a document keeps its history; entries the
    // store refuses for a while are retried.
    void changesFoundAtStartRenamesAndRetriedEntriesKeepTheHistory()
    {
        Recorded o;
        static_cast<void>(o.started("Reports", {"Reports/kept", "Reports/altered", "Reports/removed"}));
        const qsizetype before = o.site.auditTexts().size();
        o.change("Reports/altered", QStringLiteral("v2"));
        o.change("Reports/new", QStringLiteral("new"));
        QVERIFY(QFile::remove(o.path(QStringLiteral("Reports/removed"))));

        const std::unique_ptr<DocumentRecorder> next = o.recorder();
        QSignalSpy progress(next.get(), &DocumentRecorder::progress);
        Recorded::settle(*next, [&] { next->start(); });
        QStringList found = o.site.auditTexts().mid(before);
        for (QString& text : found)
            text = text.section(QLatin1String(" sha256="), 0, 0);
        found.sort();
        QCOMPARE(found,
                 QStringList({"Document changed while nothing recorded it: " + o.path("Reports/altered"),
                              "Document recorded: " + o.path("Reports/new"),
                              "Document removed: " + o.path("Reports/removed")}));
        QCOMPARE(progress.constLast(), QVariantList({2, 2})); // only what changed was read
        QCOMPARE(next->state(o.path(QStringLiteral("Reports/altered"))), RecordState::ChangedUnwatched);
        const QString kept = o.path(QStringLiteral("Reports/kept"));
        QCOMPARE(next->state(kept), RecordState::Recorded);
        QCOMPARE(next->state(o.path(QStringLiteral("Reports/removed"))), RecordState::NotRecorded);

        const QString b = o.path(QStringLiteral("Reports/b"));
        const auto moved = [&](const QString& script, const QString& from) {
            runScript(o.parent.path(), script);
            Recorded::settle(*next, [&] {
                next->noticeChange({ShellEvent::SHCNE_DELETE, from, {}});
                next->noticeChange({ShellEvent::SHCNE_UPDATEITEM, b, {}});
            });
        };
        moved("mv Reports/kept Reports/b", kept);
        QCOMPARE(o.newestEntry(), QStringLiteral("Document renamed: %1 -> %2").arg(kept, b));
        QCOMPARE(next->state(b), RecordState::Recorded);
        // An editor's save: the new content written aside and moved over the document.
        const qsizetype saved = o.site.auditTexts().size();
        moved("printf v2 > Reports/.b.new && mv Reports/.b.new Reports/b", b);
        const QStringList after = o.site.auditTexts().mid(saved);
        QCOMPARE(after.size(), 1);
        QVERIFY2(after.constFirst().startsWith("Document changed outside the suite: " + b + " sha256="),
                 qPrintable(after.constFirst()));

        // The store refuses entries for a while: the failure is reported once, and
        // the entries are written, in order, once it takes them again.
        QSignalSpy failed(next.get(), &DocumentRecorder::recordingFailed);
        const QString reason = o.site.breakAppends();
        for (const char* name : {"Reports/one", "Reports/two"}) {
            o.change(QLatin1String(name), QStringLiteral("v1"));
            next->noticeChange({ShellEvent::SHCNE_UPDATEITEM, o.path(QLatin1String(name)), {}});
        }
        QVERIFY(failed.wait(20000));
        QVERIFY2(failed.constFirst().constFirst().toString().contains(reason),
                 qPrintable(failed.constFirst().constFirst().toString()));
        o.site.repairAppends();
        QTRY_VERIFY_WITH_TIMEOUT(o.newestEntry().contains(o.path("Reports/two")), 20000);
        QCOMPARE(failed.size(), 1);
        const QStringList texts = o.site.auditTexts();
        QVERIFY(texts.at(texts.size() - 2).startsWith("Document recorded: " + o.path("Reports/one")));
        QVERIFY(texts.constLast().startsWith("Document recorded: " + o.path("Reports/two")));
    }

    // A signature noted in the session, or read from the store at the start of
    // the next, shows while the document holds what was signed, and is void after.
    void aSignatureHoldsUntilTheDocumentChanges()
    {
        Recorded o;
        const QString path = o.path(QStringLiteral("Reports/r"));
        const std::unique_ptr<DocumentRecorder> signing = o.started("Reports", {"Reports/r"});
        QCOMPARE(signing->shownState(path).caption(), QStringLiteral("Recorded"));
        const SignResult result = o.manager->SignDocument(*DocumentFolders::fingerprint(path), "Approved",
                                                          "jsmith", SecretBytes("correct horse"));
        QVERIFY2(result.sequence > 0, qPrintable(result.error));
        signing->noteSigned(result.signature);
        QCOMPARE(signing->shownState(path).caption(), QStringLiteral("Signed (Approved)"));

        const std::unique_ptr<DocumentRecorder> next = o.started(QStringLiteral("Reports"));
        QCOMPARE(next->shownState(path).caption(), QStringLiteral("Signed (Approved)"));
        QVERIFY(!next->shownState(path).warns());
        o.change("Reports/r", QStringLiteral("v2"));
        Recorded::settle(*next, [&] { next->noticeChange({ShellEvent::SHCNE_UPDATEITEM, path, {}}); });
        const DocumentState shown = next->shownState(path);
        QCOMPARE(shown.caption(), DocumentState::voidText());
        QVERIFY(shown.warns());
        QCOMPARE(shown.signatures.size(), 1);
        QCOMPARE(shown.signatures.constFirst().signature.userName, QStringLiteral("jsmith"));
    }
};

QTEST_MAIN(DocumentRecorderTest)
#include "DocumentRecorderTest.moc"
