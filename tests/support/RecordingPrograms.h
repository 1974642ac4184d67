#pragma once

#include <QByteArrayList>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace nebra::test {

// Copies of the argument recorder (ArgvRecorder.cpp) standing in for the
// suite's programs, in a folder whose path holds blanks, plus one named
// "xdg-open" in binFolder() for tests that put it on PATH. Each start of a
// copy leaves one record: the argv it received.
class RecordingPrograms
{
public:
    RecordingPrograms()
    {
        QDir root(m_dir.path());
        root.mkpath(QStringLiteral("Suite Programs"));
        root.mkpath(QStringLiteral("bin"));
        root.mkpath(QStringLiteral("records"));
        for (const QString& name : {QStringLiteral("Assay Application"), QStringLiteral("Layout Editor"),
                                    QStringLiteral("Read Configuration Editor")})
            QFile::copy(QStringLiteral(NEBRA_ARGV_RECORDER), program(name));
        QFile::copy(QStringLiteral(NEBRA_ARGV_RECORDER), binFolder() + QStringLiteral("/xdg-open"));
        qputenv("NEBRA_RECORDER_DIR", QFile::encodeName(recordsFolder()));
    }

    QString program(const QString& name) const
    {
        return m_dir.path() + QStringLiteral("/Suite Programs/") + name;
    }
    QString binFolder() const { return m_dir.path() + QStringLiteral("/bin"); }
    QString recordsFolder() const { return m_dir.path() + QStringLiteral("/records"); }

    // The argv of every finished start so far, in no particular order.
    QList<QByteArrayList> records() const
    {
        QList<QByteArrayList> result;
        const QStringList names = QDir(recordsFolder()).entryList({QStringLiteral("*.argv")}, QDir::Files);
        for (const QString& name : names) {
            QFile file(recordsFolder() + QLatin1Char('/') + name);
            if (!file.open(QIODevice::ReadOnly))
                continue;
            QByteArrayList argv = file.readAll().split('\0');
            argv.removeLast(); // after the last NUL
            result.append(argv);
        }
        return result;
    }

    // Waits, bounded, until count records exist.
    bool waitForRecords(int count, int timeoutMs = 10000) const
    {
        return QTest::qWaitFor([&] { return records().size() >= count; }, timeoutMs);
    }

    void clear() const
    {
        for (const QString& name : QDir(recordsFolder()).entryList(QDir::Files))
            QFile::remove(recordsFolder() + QLatin1Char('/') + name);
    }

private:
    QTemporaryDir m_dir;
};

} // namespace nebra::test
