#pragma once

#include <QString>

#include <optional>

namespace nebra {

// The kinds of document folder (the DocumentType kept in a tree node's
// Data) and what follows from each: the file list's filter, the type's
// caption, the help topic and the enabled state of New, Open and Run.
//
//   0 none (root)   1 read configurations "*.daq"   2 microplate layouts "*.mlo"
//   3 protocols "*.apr"   4 results "*.ars"   5 reports "*.*"
class DocumentTypes
{
public:
    enum Command
    {
        NewCommand = 605,
        OpenCommand = 606,
        RunCommand = 607,
        HelpCommand = 608
    };

    struct CommandStates
    {
        bool newEnabled = false;
        bool openEnabled = false;
        bool runEnabled = false;
        bool operator==(const CommandStates&) const = default;
    };

    // The file list's filter for the type; empty for a type that leaves the filter alone.
    static QString filter(int type);
    // The type's caption; empty for a type that leaves the caption alone.
    static QString caption(int type);
    // The help topic of the folder; 0 for none.
    static int helpContextId(int type);
    // New, Open and Run for the type, given whether exactly one file (not a
    // folder) is selected; none for a type that leaves them as they are
    // (6 and above). A negative type counts as type 1.
    static std::optional<CommandStates> commandStates(int type, bool singleFile);
};

} // namespace nebra
