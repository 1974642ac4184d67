// A program that does nothing but claim the single instance named on its
// command line: "primary" and it waits to be asked to show itself, or
// "duplicate" when another copy was first.

#include "SingleInstance.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    nebra::SingleInstance instance(QCoreApplication::arguments().value(1, QStringLiteral("probe")));
    if (instance.IsAnotherInstanceRunning()) {
        instance.ActivatePreviousInstance();
        std::puts("duplicate");
        return 3;
    }
    std::puts("primary");
    std::fflush(stdout);
    QObject::connect(&instance, &nebra::SingleInstance::activationRequested, &app, [] {
        std::puts("activated");
        std::fflush(stdout);
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
