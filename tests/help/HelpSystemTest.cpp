#include "HelpSystem.h"
#include "DocumentTypes.h"
#include "HelpBrowser.h"
#include "HelpTopics.h"
#include "HelpWindow.h"
#include "MessageRecorder.h"
#include "TestFiles.h"
#include "UserFolders.h"

#include <QTabWidget>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>

using namespace nebra;
using nebra::test::MessageRecorder;
using nebra::test::UserFolders;

namespace {

// The help system over the built guide and the real help window; records in
// `calls` the order in which context help used its hooks.
struct Fixture
{
    UserFolders folders;
    HelpWindow* window = nullptr;
    QStringList calls;
    int folderKind = 0;
    HelpSystem help;

    explicit Fixture(const QString& helpFile = QStringLiteral(NEBRA_BUILT_HELP_FILE))
    {
        help.setHelpFilePath(helpFile);
        help.setViewerFactory([this](const QString& file, QString& error) -> std::unique_ptr<HelpViewer> {
            auto made = HelpWindow::factory(nullptr)(file, error);
            window = static_cast<HelpWindow*>(made.get());
            return made;
        });
        help.setSelectedDocumentType([this] {
            calls << "kind";
            return folderKind;
        });
    }

    QUrl shownPage() const { return window ? window->browser().source() : QUrl(); }
};

} // namespace

class HelpSystemTest : public QObject
{
    Q_OBJECT

private slots:
    // Every type of the table shows its help topic's page; which page that is
    // is the table's, and that the page is written, the test of every topic's.
    // Closing help says whether it was shown; a window the user closed is
    // kept, and showing help again reuses it. Each topic's page is a written
    // page of the guide with its own title; a topic without a page shows the
    // contents.
    void contextHelpFollowsTheDocumentTypeAndEveryTopicShowsItsOwnPage()
    {
        Fixture f;
        QVERIFY(!f.help.CloseHelpIfOpen());
        QVERIFY(!f.help.IsDisplayingHelp());
        const int kinds = int(DocumentTypes::all().size());
        for (const int kind : {kinds, -1}) { // beyond the table: nothing shown
            f.folderKind = kind;
            f.help.ShowContextHelp();
            QVERIFY(!f.help.IsDisplayingHelp());
        }
        QVERIFY(!f.window);
        QCOMPARE(f.calls, QStringList({"kind", "kind"}));
        for (int kind = 0; kind < kinds; ++kind) {
            f.folderKind = kind;
            f.help.ShowContextHelp();
            QVERIFY(f.help.IsDisplayingHelp());
            QCOMPARE(f.shownPage(), HelpTopics::pageUrl(DocumentTypes::of(kind).helpTopic));
            QCOMPARE(f.window->navigation().currentIndex(), int(HelpWindow::ContentsPane));
        }
        QCOMPARE(f.calls.size(), kinds + 2);

        for (const bool userClosed : {true, false}) {
            f.help.DisplayeHelpTOC();
            if (userClosed)
                QVERIFY(f.window->close());
            QCOMPARE(f.help.CloseHelpIfOpen(), !userClosed);
            QVERIFY(!f.help.IsDisplayingHelp());
            QCOMPARE(f.help.CloseHelpIfOpen(), false);
            QVERIFY(!f.window->isVisible());
        }
        HelpWindow* first = f.window;
        f.help.DisplayHelpContext(HelpTopics::Options);
        QCOMPARE(f.window, first);
        QVERIFY(f.help.IsDisplayingHelp());
        QCOMPARE(f.shownPage(), HelpTopics::pageUrl(HelpTopics::Options));

        QSet<QString> titles;
        for (const HelpTopics::Entry& entry : HelpTopics::all()) {
            f.help.DisplayHelpContext(entry.topic);
            QVERIFY2(f.help.IsDisplayingHelp(), entry.page);
            QCOMPARE(f.shownPage(), HelpTopics::pageUrl(entry.topic));
            const QString title = f.window->browser().documentTitle();
            QVERIFY2(!title.isEmpty() && !titles.contains(title), entry.page);
            titles.insert(title);
            QVERIFY2(f.window->browser().toPlainText().size() > 600, entry.page);
            // The guide's style sheet reached the page: its heading has the guide's colour.
            const QTextCharFormat heading =
                f.window->browser().document()->begin().begin().fragment().charFormat();
            QVERIFY2(heading.foreground().color() == QColor(0x1f, 0x4e, 0x79), entry.page);
        }
        f.help.DisplayHelpContext(1234);
        QCOMPARE(f.shownPage(), HelpTopics::contentsUrl());
    }

    void aBadHelpFileIsReportedOncePerRequest()
    {
        MessageRecorder messages;
        QTemporaryDir dir;
        const QString damaged = dir.filePath("damaged.qhc");
        nebra::test::writeFile(damaged, "not a help file\n");
        for (const auto& [file, words] :
             {std::pair(dir.filePath("missing.qhc"), "is missing"), std::pair(damaged, "is damaged")}) {
            messages.clear();
            Fixture f(file);
            f.help.DisplayHelpContext(HelpTopics::Reports);
            QCOMPARE(messages.count(), 1);
            QVERIFY2(messages.last().text.contains('"' + file + "\" " + words),
                     qPrintable(messages.last().text));
            QCOMPARE(messages.last().icon, MessageIcon::Warning);
            QCOMPARE(messages.last().buttons, int(MessageButton::Ok));
            QVERIFY(!f.help.IsDisplayingHelp());
            QVERIFY(!f.help.CloseHelpIfOpen());

            f.help.ShowContextHelp();
            QCOMPARE(messages.count(), 2);
            QVERIFY(!f.help.IsDisplayingHelp());
        }
    }
};

QTEST_MAIN(HelpSystemTest)
#include "HelpSystemTest.moc"
