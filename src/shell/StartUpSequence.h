#pragma once

#include "MainWindow.h"

#include <QList>

#include <functional>

namespace nebra {

// The Organiser's start-up, in its fixed order. With logging on it writes
// one block line after opening the log and 28 trace lines, one or more after
// each major step; the steps it calls write their own.
class StartUpSequence
{
public:
    explicit StartUpSequence(MainWindow& window);

    MainWindow::LoadOutcome run();

    // The texts of the box shown when the file-system component is missing.
    static QString fileSystemMissingText();

private:
    bool activatePreviousInstance();
    void createSettingsAndPaths();
    void openDiagnosticLog();
    bool startSecurity();
    bool createFileSystemObject();

    // One step of the loading after the splash: its action (false ends the
    // start-up) and the number of trace lines written after it.
    struct Step
    {
        int traceLines;
        std::function<bool()> action;
    };
    QList<Step> loadingSteps();

    MainWindow& m_window;
    SuiteComponents& m_suite;
};

} // namespace nebra
