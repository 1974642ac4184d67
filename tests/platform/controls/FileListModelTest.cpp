#include "FileListModel.h"
#include "TestFiles.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>
#include <QTest>

#include <sys/xattr.h>

using namespace nebra;
using nebra::test::writeFile;

class FileListModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void columnsShowNameCommentAndHiddenExtensions()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("Run 7.ars");
        writeFile(path);
        FileListModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
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
