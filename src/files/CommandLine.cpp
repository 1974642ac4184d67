#include "CommandLine.h"

namespace nebra {

namespace {
const QChar Quote(QLatin1Char('"'));

QString withoutEndQuotes(QString path)
{
    if (path.startsWith(Quote))
        path.remove(0, 1);
    if (path.endsWith(Quote))
        path.chop(1);
    return path;
}

CommandLine make(const QString& programPath, const QString& arguments)
{
    CommandLine line;
    line.text = programPath + QLatin1Char(' ') + arguments;
    line.program = withoutEndQuotes(programPath);
    if (!arguments.isEmpty())
        line.arguments = QStringList{arguments};
    return line;
}
} // namespace

void CommandLine::QuoteProgramPath(QString& programPath)
{
    if (!programPath.startsWith(Quote) && !programPath.endsWith(Quote))
        programPath = Quote + programPath + Quote;
}

CommandLine CommandLine::Build(QString& programPath, const QString& arguments)
{
    QuoteProgramPath(programPath);
    return make(programPath, arguments);
}

CommandLine CommandLine::Unquoted(const QString& programPath, const QString& arguments)
{
    return make(programPath, arguments);
}

CommandLine CommandLine::Opener(const QString& program, const QString& argument)
{
    return make(program, argument);
}

} // namespace nebra
