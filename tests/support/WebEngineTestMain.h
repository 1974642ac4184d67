#pragma once

#include "BrowserControl.h"

#include <QApplication>
#include <QTest>

// The main() of a test that uses the browser control: the web engine needs
// the program's link scheme and shared GL contexts before the application exists.
#define NEBRA_WEBENGINE_TEST_MAIN(TestClass)                                                                 \
    int main(int argc, char** argv)                                                                          \
    {                                                                                                        \
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);                                          \
        nebra::BrowserControl::RegisterOrganiserScheme();                                                    \
        QApplication app(argc, argv);                                                                        \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
