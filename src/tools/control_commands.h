#pragma once

#include <QStringList>
#include <QTextStream>

namespace cvd::tools {

// `cvdctl send`, `notify`, `stop` and `status`: talking to the running program from another program.
int run_send_command(const QStringList& arguments, QTextStream& out, QTextStream& err);
int run_notify_command(const QStringList& arguments, QTextStream& out, QTextStream& err);
int run_stop_command(const QStringList& arguments, QTextStream& out, QTextStream& err);
int run_status_command(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace cvd::tools
