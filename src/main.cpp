// The Organiser: the hub window of the Nebra microplate-reader suite.

#include "BrowserControl.h"
#include "Dialogs.h"
#include "MainWindow.h"
#include "Messages.h"
#include "OrganiserApplication.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>

#include <exception>

#include <unistd.h>

namespace {

// Handles --help and --version before any window system is needed, so both
// work without a display. Returns true when the program should go on.
bool handleInformationOptions(int argc, char** argv, int& exitCode)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("NMain5"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NEBRA_VERSION));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The Organiser: browse the suite's data folders, preview documents and start the "
                       "suite's programs on them."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    if (!parser.parse(QCoreApplication::arguments())) {
        std::fprintf(stderr, "%s\n", qPrintable(parser.errorText()));
        exitCode = 2;
        return false;
    }
    if (parser.isSet(help) || parser.isSet(version)) {
        std::fputs(qPrintable(parser.isSet(help)
                                  ? parser.helpText()
                                  : QStringLiteral("NMain5 %1\n").arg(QStringLiteral(NEBRA_VERSION))),
                   stdout);
        exitCode = 0;
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    int exitCode = 0;
    if (!handleInformationOptions(argc, argv, exitCode))
        return exitCode;

    // The web engine's sandbox cannot run as root and refuses to start there.
    if (geteuid() == 0)
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    // The welcome page's links use the program's own scheme, which the web engine must know before it starts.
    nebra::BrowserControl::RegisterOrganiserScheme();
    nebra::OrganiserApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("NMain5"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NEBRA_VERSION));
    QCoreApplication::setOrganizationName(QStringLiteral("Nebra"));
    // The installed menu entry and icon carry this name; desktops match the window to them by it.
    QGuiApplication::setDesktopFileName(QStringLiteral("example.quorvix.Organiser"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("example.quorvix.Organiser")));
    nebra::Dialogs::installMessageBoxes();

    nebra::MainWindow window;
    try {
        switch (window.Load()) {
        case nebra::MainWindow::LoadOutcome::Loaded:
            break;
        case nebra::MainWindow::LoadOutcome::DuplicateInstance:
            return 0;
        case nebra::MainWindow::LoadOutcome::Ended:
            return 1;
        }
        return QApplication::exec();
    } catch (const std::exception& error) {
        // An error the start-up does not trap ends the load with a report, as a run-time error would.
        nebra::Messages::show({QStringLiteral("Run-time error: %1").arg(QString::fromLocal8Bit(error.what())),
                               {},
                               nebra::MessageIcon::Critical,
                               nebra::MessageButton::Ok});
        return 1;
    }
}
