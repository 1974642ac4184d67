// nebra-secadmin: administration of the suite's security database.

#include "AdminTool.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("nebra-secadmin"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NEBRA_VERSION));
    QCoreApplication::setOrganizationName(QStringLiteral("Nebra"));
    QFile out;
    QFile err;
    out.open(stdout, QIODevice::WriteOnly | QIODevice::Unbuffered);
    err.open(stderr, QIODevice::WriteOnly | QIODevice::Unbuffered);
    nebra::AdminTool tool(out, err);
    return tool.run(QCoreApplication::arguments());
}
