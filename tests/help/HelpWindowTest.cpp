#include "HelpWindow.h"
#include "Accessibility.h"
#include "HelpBrowser.h"
#include "HelpCollection.h"
#include "HelpTopics.h"
#include "SettingsStore.h"
#include "SuiteSettings.h"
#include "UserFolders.h"

#include <QAction>
#include <QHelpContentWidget>
#include <QHelpEngine>
#include <QHelpIndexWidget>
#include <QHelpSearchEngine>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolBar>

using namespace nebra;
using nebra::test::UserFolders;

namespace {

std::unique_ptr<HelpWindow> openWindow(SuiteSettings* settings = nullptr)
{
    QString error;
    auto engine = HelpCollection::open(QStringLiteral(NEBRA_BUILT_HELP_FILE), error);
    if (!engine)
        qFatal("%s", qPrintable(error));
    return std::make_unique<HelpWindow>(std::move(engine), settings);
}

QAction* tool(const HelpWindow& window, const QString& text)
{
    for (QAction* action : window.findChild<QToolBar*>()->actions())
        if (action->text() == text)
            return action;
    return nullptr;
}

} // namespace

class HelpWindowTest : public QObject
{
    Q_OBJECT

private slots:
    // Back and Forward retrace the pages, an index keyword opens its page,
    // the arrow keys in the contents show each page, and a word of one page
    // only is found on that page and no other. Size, place and text size come
    // back in the next window.
    void everyWayToAPageShowsIt()
    {
        UserFolders folders;
        SettingsStore store(folders.settingsFile());
        SuiteSettings settings(store);
        auto window = openWindow(&settings);
        QHelpSearchEngine* search = window->engine().searchEngine();
        QSignalSpy indexed(search, &QHelpSearchEngine::indexingFinished);
        window->show();
        nebra::test::verifyAccessibleNames(*window, 2);
        QAction* back = tool(*window, "Back");
        QAction* forward = tool(*window, "Forward");
        const QUrl reports = HelpTopics::pageUrl(HelpTopics::Reports);
        const QUrl options = HelpTopics::pageUrl(HelpTopics::Options);
        QVERIFY(window->showPage(reports));
        QVERIFY(!back->isEnabled());
        QVERIFY(window->showPage(options));
        back->trigger();
        QCOMPARE(window->browser().source(), reports);
        QVERIFY(forward->isEnabled());
        forward->trigger();
        QCOMPARE(window->browser().source(), options);
        QVERIFY(!window->showPage(HelpTopics::guideUrl("no-such-page.html")));
        QCOMPARE(window->browser().source(), options);

        QHelpIndexWidget* index = window->engine().indexWidget();
        QSignalSpy created(window->engine().indexModel(), &QHelpIndexModel::indexCreated);
        if (index->model()->rowCount() == 0)
            QVERIFY(created.wait(10000));
        auto* filter = window->findChild<QLineEdit*>("indexFilter");
        filter->setText("Reports");
        QTest::keyClick(filter, Qt::Key_Return);
        QCOMPARE(window->browser().source(), reports);

        QVERIFY(window->showContents(HelpTopics::contentsUrl()));
        QHelpContentWidget* contents = window->engine().contentWidget();
        QTRY_VERIFY(contents->currentIndex().isValid());
        contents->expandAll();
        const QUrl first = window->browser().source();
        QTest::keyClick(contents, Qt::Key_Down);
        QVERIFY(window->browser().source() != first);
        QCOMPARE(window->browser().source(),
                 window->engine().contentModel()->contentItemAt(contents->currentIndex())->url());

        QVERIFY(!indexed.isEmpty() || indexed.wait(20000));
        QSignalSpy finished(search, &QHelpSearchEngine::searchingFinished);
        window->search("jumps");
        QVERIFY(finished.wait(10000));
        QCOMPARE(search->searchResultCount(), 1);
        QCOMPARE(search->searchResults(0, 1).value(0).url(), HelpTopics::guideUrl("keyboard.html"));

        // Size, place and text size come back in the next window.
        window->resize(720, 530);
        tool(*window, "Larger Text")->trigger();
        tool(*window, "Larger Text")->trigger();
        const QFont shown = window->browser().font();
        window->close();
        window = openWindow(&settings);
        QVERIFY(window->showPage(HelpTopics::pageUrl(HelpTopics::Results)));
        QCOMPARE(window->size(), QSize(720, 530));
        QCOMPARE(window->browser().font().pointSizeF(), shown.pointSizeF());
    }
};

QTEST_MAIN(HelpWindowTest)
#include "HelpWindowTest.moc"
