#include "tools/cvdctl.h"

#include <QStringList>
#include <QTextStream>
#include <cstdio>

// No application object: no command needs an event loop (waits and yields work without one, as they do
// under test), and scripts run cvdctl once per message, so its start-up is paid on every call.
int main(int argc, char** argv)
{
    QStringList arguments;
    for (int index = 1; index < argc; ++index) {
        arguments.append(QString::fromLocal8Bit(argv[index]));
    }
    QTextStream out(stdout);
    QTextStream err(stderr);
    const int status = cvd::tools::run_cvdctl(arguments, out, err);
    out.flush();
    err.flush();
    return status;
}
