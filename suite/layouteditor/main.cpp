// nebra-layout-editor: draws and edits the suite's microplate layouts.

#include "Dialogs.h"
#include "EditorCommandLine.h"
#include "LayoutDocument.h"
#include "LayoutEditorWindow.h"
#include "Messages.h"
#include "SettingsStore.h"
#include "StartupReport.h"
#include "SuitePaths.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>

using namespace nebra;

namespace {

// Carries out what the command line asked for on the new document; returns
// what the user must be told, if anything.
QString prepare(const EditorCommandLine& line, LayoutDocument& document)
{
    QString error;
    switch (line.action) {
    case EditorCommandLine::Action::OpenLayout:
        if (!document.open(line.path, error))
            return QStringLiteral("The layout \"%1\" could not be opened.\n\n%2").arg(line.path, error);
        return {};
    case EditorCommandLine::Action::NewLayoutInFolder:
        document.setFolderRestriction(line.path);
        return line.message;
    default:
        return line.message;
    }
}

} // namespace

int main(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const EditorCommandLine information = EditorCommandLine::Parse(arguments);
    // Answered before any window system is needed, so both work without a display.
    if (information.action == EditorCommandLine::Action::ShowHelp) {
        std::fputs(qPrintable(EditorCommandLine::usage()), stdout);
        return 0;
    }
    if (information.action == EditorCommandLine::Action::ShowVersion) {
        std::printf("nebra-layout-editor %s\n", NEBRA_VERSION);
        return 0;
    }
    QApplication app(argc, argv);
    // Read again without the options Qt took for itself (-platform, -style, ...).
    const EditorCommandLine line = EditorCommandLine::Parse(QCoreApplication::arguments().mid(1));
    QCoreApplication::setApplicationName(QStringLiteral("nebra-layout-editor"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NEBRA_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("nebra-layout-editor"));
    Dialogs::installMessageBoxes();
    Messages::setApplicationTitle(QStringLiteral("Layout Editor"));
    StartupReport report(qEnvironmentVariable("NEBRA_LAYOUT_EDITOR_REPORT"));

    LayoutDocument document;
    const QString message = prepare(line, document);
    LayoutEditorWindow window(document);
    {
        // The Organiser lists layouts from the suite's layouts folder only, and
        // starts a new layout without naming it outside a security session.
        SettingsStore store;
        SuitePaths paths(store);
        paths.Initialise();
        window.setStartFolder(paths.LayoutsFolder());
    }
    window.show();
    if (!message.isEmpty())
        QTimer::singleShot(0, &window, [message, &window] {
            Messages::show(
                {message, QString(), MessageIcon::Warning, MessageButton::Ok, MessageButton::Ok, &window});
        });
    if (report.isActive())
        QTimer::singleShot(0, &window, [&] { report.write(window, document); });
    return app.exec();
}
