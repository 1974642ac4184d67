// Time from F1 (context help) to the topic's page painted in the help window:
// first in a process (opening the collection and making the window) and later
// (the window kept), beside a bare QTextBrowser showing the same page from a file.

#include "BenchStats.h"
#include "HelpBrowser.h"
#include "HelpSystem.h"
#include "HelpTopics.h"
#include "HelpWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTextBrowser>

using namespace nebra;

namespace {

void paint(QTextBrowser& browser)
{
    QCoreApplication::processEvents();
    browser.viewport()->repaint();
}

// F1 with a folder of the given document type selected, until the page is painted.
double contextHelp(HelpSystem& help, HelpWindow*& window)
{
    QElapsedTimer timer;
    timer.start();
    help.ShowContextHelp();
    paint(window->browser());
    return timer.nsecsElapsed() / 1e6;
}

double bareShow(const QString& pageFile)
{
    QElapsedTimer timer;
    timer.start();
    QTextBrowser browser;
    browser.setSearchPaths({QFileInfo(pageFile).path()});
    browser.setSource(QUrl::fromLocalFile(pageFile));
    browser.resize(900, 640);
    browser.show();
    paint(browser);
    return timer.nsecsElapsed() / 1e6;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 15;
    const QString pages = QStringLiteral(NEBRA_HELP_PAGES);
    int type = 5; // Reports, then the other document types in turn
    bench::Samples first, later, bare;
    for (int i = 0; i < runs; ++i) {
        HelpWindow* window = nullptr;
        HelpSystem help([&window](const QString& file, QString& error) -> std::unique_ptr<HelpViewer> {
            auto made = HelpWindow::factory(nullptr)(file, error);
            window = static_cast<HelpWindow*>(made.get());
            return made;
        });
        help.setHelpFilePath(HelpSystem::defaultHelpFile());
        help.setSelectedDocumentType([&type] { return type; });
        first.ms << contextHelp(help, window);
        for (int k = 0; k < 6; ++k) {
            type = (type + 1) % 6;
            later.ms << contextHelp(help, window);
        }
        bare.ms << bareShow(pages + QStringLiteral("/reports.html"));
    }
    std::printf(
        "Help collection %s: %lld bytes, its documentation %lld bytes\n",
        qPrintable(HelpSystem::defaultHelpFile()), QFileInfo(HelpSystem::defaultHelpFile()).size(),
        QFileInfo(QFileInfo(HelpSystem::defaultHelpFile()).path() + QStringLiteral("/organiser.qch")).size());
    std::printf("F1 to topic painted, the process's very first: %.3f ms (collection copied and opened, "
                "window made, fonts loaded)\n",
                first.ms.value(0));
    bench::report("F1 to topic painted, new help window", first, bare);
    bench::report("F1 to topic painted, window kept", later, bare);
    return 0;
}
