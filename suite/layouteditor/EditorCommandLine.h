#pragma once

#include <QString>
#include <QStringList>

namespace nebra {

// What the layout editor was asked to do by its command line. The Organiser
// starts it with nothing (a new layout), with a layout's path (which may hold
// blanks and arrives unquoted, so every argument together is one path), or,
// inside a security session, with "\"layoutsfolder:<folder>\"", the double
// quotes included: a new layout that may only be saved into that folder.
struct EditorCommandLine
{
    enum class Action
    {
        NewLayout,
        OpenLayout,
        NewLayoutInFolder,
        ShowHelp,
        ShowVersion,
        Unusable, // a new, empty layout, with message saying why
    };

    Action action = Action::NewLayout;
    QString path;    // OpenLayout: the layout; NewLayoutInFolder: the folder
    QString message; // what was wrong, for the user (always for Unusable)

    // arguments without the program's name.
    static EditorCommandLine Parse(const QStringList& arguments);
    static QString usage();
};

} // namespace nebra
