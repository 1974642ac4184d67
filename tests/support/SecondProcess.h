#pragma once

#include <QProcess>
#include <QString>
#include <QTest>

namespace nebra::test {

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
