#pragma once

#include "FolderKind.h"

#include <QString>

#include <optional>

namespace nebra {

// What follows from the kind of document folder selected: the file list's
// filter, the type's caption, the help topic and the enabled state of New,
// Open and Run. Read configurations "*.daq", layouts "*.mlo", protocols
// "*.apr", results "*.ars", reports "*.*".
class DocumentTypes
{
public:
    struct CommandStates
    {
        bool newEnabled = false;
        bool openEnabled = false;
        bool runEnabled = false;
        bool operator==(const CommandStates&) const = default;
    };

    // The file list's filter for the type; empty for a type that leaves the filter alone.
    static QString filter(FolderKind type);
    // The type's caption; empty for a type that leaves the caption alone.
    static QString caption(FolderKind type);
    // The help topic of the folder; 0 for none.
    static int helpContextId(FolderKind type);
    // New, Open and Run for the type, given whether exactly one file (not a
    // folder) is selected; none for a type that leaves them as they are
    // (6 and above). A negative value counts as read configurations.
    static std::optional<CommandStates> commandStates(FolderKind type, bool singleFile);
};

} // namespace nebra
