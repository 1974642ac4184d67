// Lists the folder given as argument through FolderReaders, as the Organiser
// would, and ends its program as soon as the read is reported waiting (or
// has answered): the test that starts it checks that a read stuck on a
// server that does not answer never holds the process up at its end.

#include "DirectoryReader.h"
#include "FolderReaders.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QString folder = QCoreApplication::arguments().value(1);
    nebra::FolderReaders readers;
    readers.read(
        folder, nebra::FolderReaders::Lane::User, nullptr,
        [raw = QFile::encodeName(folder)] { return nebra::DirectoryReader::subfolders(raw).error; },
        [](int error) {
            std::printf("answered %d\n", error);
            QCoreApplication::quit();
        },
        [] {
            std::printf("waiting\n");
            QCoreApplication::quit();
        });
    const int code = app.exec();
    std::fflush(stdout);
    return code;
}
