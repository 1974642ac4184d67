#include "FileListModel.h"
#include "TestFiles.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>
#include <QTest>

#include <sys/xattr.h>

using namespace nebra;
using nebra::test::makeFolder;
using nebra::test::writeFile;

namespace {

QStringList rowNames(const FileListModel& model)
{
    QStringList names;
    for (int row = 0; row < model.rowCount(); ++row)
        names.append(model.fileName(row));
    return names;
}

} // namespace

class FileListModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sortsFoldersFirstThenByRawTime()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath(QStringLiteral("late.apr")), {}, 1700000000, 900);
        writeFile(dir.filePath(QStringLiteral("early.apr")), {}, 1600000000, 0);
        writeFile(dir.filePath(QStringLiteral("same second.apr")), {}, 1700000000, 100);
        writeFile(dir.filePath(QStringLiteral("other.txt")), {}, 1800000000, 0);
        makeFolder(dir.filePath(QStringLiteral("Sub")));
        FileListModel model;
        model.addColumn(FileListModel::CommentColumn);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(model.load(dir.path(), QStringLiteral("*.apr")));
        const int date = model.columnOf(FileListModel::DateModifiedColumn);
        model.sort(date, Qt::AscendingOrder);
        QCOMPARE(rowNames(model), (QStringList{"Sub", "early.apr", "same second.apr", "late.apr"}));
        model.sort(date, Qt::DescendingOrder);
        QCOMPARE(rowNames(model), (QStringList{"Sub", "late.apr", "same second.apr", "early.apr"}));
        // A new load keeps the sort order.
        QVERIFY(model.load(dir.path(), QStringLiteral("*.*")));
        QCOMPARE(rowNames(model).at(1), QStringLiteral("other.txt"));
    }

    void columnsShowNameCommentAndHiddenExtensions()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Run 7.ars"));
        writeFile(path);
        FileListModel model;
        model.addColumn(FileListModel::CommentColumn);
        model.load(dir.path(), QStringLiteral("*.ars"));
        const QByteArray comment = QStringLiteral("Plate 3, repeated").toUtf8();
        if (::setxattr(QFile::encodeName(path).constData(), "user.xdg.comment", comment.constData(),
                       size_t(comment.size()), 0) != 0)
            QSKIP("this file system keeps no user extended attributes");
        QCOMPARE(model.index(0, model.columnOf(FileListModel::CommentColumn)).data().toString(),
                 QStringLiteral("Plate 3, repeated"));
        QCOMPARE(model.fullPath(0), path);
        model.setShowExtensions(false);
        QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("Run 7"));
        QCOMPARE(model.fileName(0), QStringLiteral("Run 7.ars"));
    }
};

QTEST_GUILESS_MAIN(FileListModelTest)
#include "FileListModelTest.moc"
