#pragma once

#include "RecordingPrograms.h"
#include "SettingsStore.h"
#include "SuitePaths.h"
#include "UserFolders.h"

namespace nebra::test {

// Redirected user folders holding the suite's settings and paths, with the
// suite's programs (assay application, layout editor, read configuration
// editor) set to recording copies. One per test function; needs
// nebra_use_argv_recorder(test).
struct RecordedSuite
{
    UserFolders folders;
    RecordingPrograms programs;
    SettingsStore store{folders.settingsFile()};
    SuitePaths paths{store};

    RecordedSuite() { programs.configure(store); }
};

} // namespace nebra::test
