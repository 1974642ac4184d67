#pragma once

#include <QString>
#include <QStringList>

namespace nebra {

// The command line that starts one of the suite's programs, as text and as
// the program and arguments a process is started with.
//
// The text is the program path, one blank and the arguments, joined without
// further quoting. The suite's programs take the rest of their command line
// as one path, so on Linux everything after that one blank, when not empty,
// is passed as a single argument, exactly as written; the program is the
// program path without the double quotes at its ends.
struct CommandLine
{
    QString text;
    QString program;
    QStringList arguments;

    // Encloses the path in double quotes unless it begins or ends with one (a
    // path with a quote at one end only is used as it is).
    static void QuoteProgramPath(QString& programPath);

    // The usual form: quotes programPath in place (QuoteProgramPath), then
    // program path + " " + arguments. With empty arguments the text ends in the blank.
    static CommandLine Build(QString& programPath, const QString& arguments);

    // Program path + " " + arguments with neither part quoted.
    static CommandLine Unquoted(const QString& programPath, const QString& arguments);

    // A program started with one argument, for a program the Organiser names itself.
    static CommandLine Opener(const QString& program, const QString& argument);
};

} // namespace nebra
