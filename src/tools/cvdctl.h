#pragma once

#include <QStringList>
#include <QTextStream>

namespace cvd::tools {

// cvdctl's commands, run in-process: arguments without the program name; output and errors go to the
// streams. Returns the exit status: 0 on success, 1 with a one-line reason on failure, 2 for a usage error.
int run_cvdctl(const QStringList& arguments, QTextStream& out, QTextStream& err);

QString cvdctl_usage_text();

} // namespace cvd::tools
