#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>

namespace nebra::test {

// Makes a folder with its parents.
inline void makeFolder(const QString& path)
{
    QVERIFY2(QDir().mkpath(path), qPrintable(path));
}

// The content of a file; empty when it cannot be read.
inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Writes a file (and its folder) and sets its modification time, seconds
// since the epoch and nanoseconds; a time of 0 keeps the current time.
inline void writeFile(const QString& path, const QByteArray& content = {}, qint64 seconds = 0,
                      long nanoseconds = 0)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    file.write(content);
    file.close();
    if (seconds != 0) {
        const struct timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
        QVERIFY(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0) == 0);
    }
}

} // namespace nebra::test
