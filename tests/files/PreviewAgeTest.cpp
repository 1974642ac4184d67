#include "PreviewAge.h"

#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

using namespace nebra;

class PreviewAgeTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString write(const QString& name, const QDateTime& modified)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write("x") != 1)
            return {};
        file.flush();
        file.setFileTime(modified, QFileDevice::FileModificationTime);
        return path;
    }

private Q_SLOTS:
    void comparesWithAMinuteOfTolerance_data()
    {
        QTest::addColumn<int>("previewOffsetSeconds");
        QTest::addColumn<int>("expected");
        QTest::newRow("newer") << 3600 << int(PreviewUsable);
        QTest::newRow("same time") << 0 << int(PreviewUsable);
        QTest::newRow("59 s older") << -59 << int(PreviewUsable);
        QTest::newRow("60 s older") << -60 << int(PreviewOutOfDate);
        QTest::newRow("a day older") << -86400 << int(PreviewOutOfDate);
    }

    void comparesWithAMinuteOfTolerance()
    {
        QFETCH(int, previewOffsetSeconds);
        QFETCH(int, expected);
        const QDateTime document = QDateTime::currentDateTimeUtc().addDays(-2);
        const QString documentPath = write(QStringLiteral("Assay.apr"), document);
        const QString previewPath =
            write(QStringLiteral("Assay.mht"), document.addSecs(previewOffsetSeconds));
        QCOMPARE(int(ComparePreviewAge(documentPath, previewPath)), expected);
    }

    void unreadableTimesGiveTwo()
    {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        const QString document = write(QStringLiteral("Run.ars"), now);
        QString failure;
        QCOMPARE(ComparePreviewAge(document, m_dir.filePath(QStringLiteral("missing.mht")), &failure),
                 PreviewTimesUnknown);
        QVERIFY(failure.startsWith(QLatin1String("Could not open the file successfully")));
        QCOMPARE(ComparePreviewAge(m_dir.filePath(QStringLiteral("missing.ars")), document),
                 PreviewTimesUnknown);

        if (geteuid() == 0)
            QSKIP("The super-user may open any file");
        const QString locked = write(QStringLiteral("Run.mht"), now);
        QFile::setPermissions(locked, QFileDevice::WriteOwner);
        QCOMPARE(ComparePreviewAge(document, locked), PreviewTimesUnknown);
    }
};

QTEST_GUILESS_MAIN(PreviewAgeTest)
#include "PreviewAgeTest.moc"
