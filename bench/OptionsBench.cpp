// From the Options command to the Options dialog on the screen, first and
// later showings, beside a bare QDialog with the same tabs and controls.

#include "BenchStats.h"
#include "DataFolders.h"
#include "Dialogs.h"
#include "HLDCollection.h"
#include "OptionsDialog.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "SuiteSettings.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QWindow>

#include <cstdlib>
#include <memory>

using namespace nebra;

namespace {

// Shows the dialog and lets it be laid out, painted and exposed.
void showAndSettle(QDialog& dialog)
{
    dialog.show();
    while (!dialog.windowHandle() || !dialog.windowHandle()->isExposed())
        QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

std::unique_ptr<QDialog> bareDialog()
{
    auto dialog = std::make_unique<QDialog>();
    auto* tabs = new QTabWidget;
    auto* view = new QWidget;
    auto* v = new QVBoxLayout(view);
    v->addWidget(new QCheckBox(QStringLiteral("Show shortcuts:")));
    v->addWidget(new QCheckBox(QStringLiteral("Show preview pane:")));
    auto* data = new QWidget;
    auto* d = new QVBoxLayout(data);
    d->addWidget(new QLabel(QStringLiteral("Parent directory for data files:")));
    d->addWidget(new QLineEdit);
    d->addWidget(new QPushButton(QStringLiteral("Browse...")));
    auto* drivers = new QWidget;
    auto* r = new QVBoxLayout(drivers);
    r->addWidget(new QLabel(QStringLiteral("Installed drivers:")));
    r->addWidget(new QListWidget);
    tabs->addTab(view, QStringLiteral("View"));
    tabs->addTab(data, QStringLiteral("Data"));
    tabs->addTab(drivers, QStringLiteral("Drivers"));
    auto* layout = new QVBoxLayout(dialog.get());
    layout->addWidget(tabs);
    for (const char* caption : {"OK", "Cancel", "Help"})
        layout->addWidget(new QPushButton(QLatin1String(caption)));
    return dialog;
}

struct World
{
    QTemporaryDir dir;
    SettingsStore store{dir.filePath("Suite.ini")};
    SuiteSettings settings{store};
    SuitePaths paths{store};
    HLDCollection drivers;
    DataFolders folders{paths, settings, [this]() -> const HLDCollection& { return drivers; }};

    World()
    {
        paths.Initialise();
        paths.SetParentDirectory(dir.filePath("Parent"));
        folders.CreateAnyMissingNebraDirectories();
    }

    std::unique_ptr<OptionsDialog> dialog()
    {
        OptionsDialogHooks hooks;
        hooks.isAllowed = [](const QString&, const QString&) { return true; };
        return std::make_unique<OptionsDialog>(settings, paths, folders, hooks);
    }
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
    World world;
    // The command shows the dialog through the dialog seam; here the seam
    // shows it without a modal loop and closes it once it is on the screen.
    Dialogs::setHandler([](QDialog& dialog) {
        showAndSettle(dialog);
        dialog.hide();
        return int(QDialog::Rejected);
    });
    bench::Samples firstOurs, firstBare, laterOurs, laterBare;
    QElapsedTimer timer;
    for (int i = 0; i < runs; ++i) {
        timer.start();
        std::unique_ptr<OptionsDialog> ours = world.dialog();
        ours->run();
        firstOurs.ms.append(timer.nsecsElapsed() / 1e6);
        timer.start();
        ours->run();
        laterOurs.ms.append(timer.nsecsElapsed() / 1e6);

        timer.start();
        std::unique_ptr<QDialog> bare = bareDialog();
        showAndSettle(*bare);
        firstBare.ms.append(timer.nsecsElapsed() / 1e6);
        bare->hide();
        timer.start();
        showAndSettle(*bare);
        laterBare.ms.append(timer.nsecsElapsed() / 1e6);
        bare->hide();
    }
    std::printf("Options command to dialog shown, %d runs each\n", runs);
    bench::report("first showing (made, activated, shown)", firstOurs, firstBare);
    bench::report("later showing (activated, shown)", laterOurs, laterBare);
    return 0;
}
