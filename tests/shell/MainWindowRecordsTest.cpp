#include "CommandDispatcher.h"
#include "DocumentRecording.h"
#include "FileListControl.h"
#include "FileListModel.h"
#include "FolderTreeControl.h"
#include "ListingWait.h"
#include "LoadedOrganiser.h"
#include "SecondProcess.h"
#include "WebEngineTestMain.h"
#include "WindowParts.h"

#include <QAction>
#include <QLabel>
#include <QTreeView>

using namespace nebra;
using namespace nebra::test;

namespace {

const QString Layout = QStringLiteral("Microplate Layouts/Plate A.mlo");

// A security session over data folders with one layout, the layout editor a
// script that appends to the layout and runs until the test's folder goes.
struct Records : LoadedOrganiser
{
    QTemporaryDir tools;

    explicit Records(const QStringList& rights)
    {
        secure(rights);
        writeFile(doc(Layout), "v1", QDateTime::currentSecsSinceEpoch() - 600);
        const QString editor = tools.filePath(QStringLiteral("editor"));
        writeFile(editor,
                  QStringLiteral("#!/bin/sh\nprintf v2 >> '%1'\nwhile [ -d '%2' ]; do sleep 0.05; done\n")
                      .arg(doc(Layout), tools.path())
                      .toUtf8());
        QVERIFY(QFile::setPermissions(editor, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        set(QStringLiteral("Paths/LayoutEditorPath"), editor);
    }

    // The layout's first fingerprint written, the layouts listed and the layout selected.
    bool showLayout()
    {
        MainWindow& w = load();
        if (!QTest::qWaitFor(
                [&] { return entryStarting(QStringLiteral("Document recorded: ") + doc(Layout)); }, 20000))
            return false;
        part<FolderTreeControl>(w).setCurrentNode(branch(w, DocumentType::Layouts));
        return waitForListing(part<FileListControl>(w));
    }
    bool entryStarting(const QString& text) const
    {
        const QStringList texts = security->auditTexts();
        return std::any_of(texts.cbegin(), texts.cend(),
                           [&](const QString& t) { return t.startsWith(text); });
    }
    QString recordCell(FileListControl& list, int role = Qt::DisplayRole) const
    {
        auto* model = static_cast<FileListModel*>(list.view()->model());
        return model->index(0, model->columnOf(QStringLiteral("Record"))).data(role).toString();
    }
    void changeOutside()
    {
        runScript(doc("Microplate Layouts"), QStringLiteral("printf v3 >> 'Plate A.mlo'"));
    }
};

} // namespace

// The documents' records in the window: which change the list and the trail
// show, how a reviewer accepts one, and nothing of it without security. The
// rules are DocumentRecorderTest's and DocumentRecordsTest's; here the wiring,
// one row per path.
class MainWindowRecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aChangeIsRecordedAsItsMakers_data()
    {
        QTest::addColumn<bool>("byEditor");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("cell");
        // clang-format off
        QTest::newRow("the started layout editor") << true << "Document changed: %1 sha256=" << "Recorded";
        QTest::newRow("a second process") << false << "Document changed outside the suite: %1 sha256=" << "Changed outside the suite";
        // clang-format on
    }
    void aChangeIsRecordedAsItsMakers()
    {
        QFETCH(bool, byEditor);
        QFETCH(QString, entry);
        QFETCH(QString, cell);
        Records o({QStringLiteral("AuthorisationsGeneral/EditLayout")});
        QVERIFY(o.showLayout());
        FileListControl& list = part<FileListControl>(*o.window);
        QCOMPARE(o.recordCell(list), QStringLiteral("Recorded"));
        if (byEditor)
            part<CommandDispatcher>(*o.window).run(CommandId::Open);
        else
            o.changeOutside();
        QTRY_VERIFY_WITH_TIMEOUT(o.entryStarting(entry.arg(o.doc(Layout))), 20000);
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell(list), cell, 5000);
        QCOMPARE(o.security->auditTexts().constLast().endsWith(QLatin1String(" by editor")), byEditor);
    }

    void aReviewerAcceptsAChangeWithAReason_data()
    {
        QTest::addColumn<bool>("mayAccept");
        // clang-format off
        QTest::newRow("with the right") << true;
        QTest::newRow("without it") << false;
        // clang-format on
    }
    void aReviewerAcceptsAChangeWithAReason()
    {
        QFETCH(bool, mayAccept);
        Records o(mayAccept ? QStringList{QStringLiteral("Documents/AcceptChange")} : QStringList());
        QVERIFY(o.showLayout());
        FileListControl& list = part<FileListControl>(*o.window);
        o.changeOutside();
        QTRY_COMPARE_WITH_TIMEOUT(o.recordCell(list), QStringLiteral("Changed outside the suite"), 20000);
        QVERIFY(
            o.recordCell(list, Qt::AccessibleDescriptionRole).startsWith("Changed outside the suite, seen "));
        auto* line = o.window->findChild<QLabel*>(QStringLiteral("recordState"));
        QVERIFY(line && line->isVisible());
        QVERIFY(line->text().startsWith(QLatin1String("Record: Changed outside the suite, seen ")));
        QTRY_COMPARE(tool(*o.window, CommandId::AcceptChange).isEnabled(), mayAccept);

        o.dialogs.accept({{QStringLiteral("txtReason"), QStringLiteral("Checked against the lab book")}});
        const int messages = o.messages.count();
        part<CommandDispatcher>(*o.window).run(CommandId::AcceptChange);
        const QString accepted = QStringLiteral("Document change accepted: ") + o.doc(Layout);
        QCOMPARE(o.entryStarting(accepted), mayAccept);
        QCOMPARE(o.messages.count() - messages, mayAccept ? 0 : 1); // the refusal
        QCOMPARE(o.recordCell(list),
                 mayAccept ? QStringLiteral("Recorded") : QStringLiteral("Changed outside the suite"));
        if (mayAccept)
            QVERIFY(o.security->auditTexts().constLast().endsWith(
                QLatin1String("reason: Checked against the lab book")));
    }

    void nothingIsRecordedWithoutSecurity()
    {
        LoadedOrganiser o;
        writeFile(o.doc(Layout), "v1");
        MainWindow& w = o.load();
        QVERIFY(!part<DocumentRecording>(w).isRecording());
        QVERIFY(!part<FileListControl>(w).columns().contains(QStringLiteral("Record")));
        QVERIFY(!tool(w, CommandId::AcceptChange).isVisible());
    }
};

NEBRA_WEBENGINE_TEST_MAIN(MainWindowRecordsTest)
#include "MainWindowRecordsTest.moc"
