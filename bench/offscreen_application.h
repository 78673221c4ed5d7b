#pragma once

#include <QApplication>

// The one QApplication of the benchmark program, made by whichever window benchmark runs first: Qt allows
// only one per process.
inline QApplication& offscreen_application()
{
    static int argc = 1;
    static char name[] = "cvd_bench";
    static char* argv[] = {name, nullptr};
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    static QApplication application(argc, argv);
    return application;
}
