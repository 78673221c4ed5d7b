#pragma once

#include "tools/cvdctl.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

namespace cvd::tools {

// One in-process run of cvdctl with what it printed.
struct CtlRun
{
    int status = 0;
    QString out;
    QString err;
};

inline CtlRun cvdctl(const QStringList& arguments)
{
    CtlRun run;
    QTextStream out(&run.out);
    QTextStream err(&run.err);
    run.status = run_cvdctl(arguments, out, err);
    out.flush();
    err.flush();
    return run;
}

} // namespace cvd::tools
