#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTest>

namespace nebra::test {

// What a program run to its end said and how it ended; exitCode -1 when it
// did not start or did not end in time.
struct ProcessRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

// Runs program with the arguments, writing input to its standard input; a
// prefix (such as setpriv and its options) runs it through another program.
inline ProcessRun runProgram(const QString& program, const QStringList& arguments,
                             const QByteArray& input = {}, const QStringList& prefix = {})
{
    QProcess process;
    if (prefix.isEmpty())
        process.start(program, arguments);
    else
        process.start(prefix.first(), prefix.mid(1) + QStringList{program} + arguments);
    if (!process.waitForStarted(10000))
        return {};
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000))
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

// Whether the program refused (exit code 1) saying words on either output;
// what it did say is logged when it did not.
inline bool refusedSaying(const ProcessRun& run, const QString& words)
{
    if (run.exitCode == 1 && (run.out.contains(words) || run.err.contains(words)))
        return true;
    qWarning("Exit code %d, not 1 with \"%s\":\n%s%s", run.exitCode, qPrintable(words), qPrintable(run.out),
             qPrintable(run.err));
    return false;
}

// Runs a shell script in folder as a separate process, to its end: the
// changes it makes reach the program as another program's would.
inline void runScript(const QString& folder, const QString& script)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(QStringLiteral("/bin/bash"), {QStringLiteral("-c"), script});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 0);
}

} // namespace nebra::test
