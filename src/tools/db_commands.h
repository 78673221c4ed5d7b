#pragma once

#include <QStringList>
#include <QTextStream>

namespace cvd::tools {

// `cvdctl db check|backup FILE|purge [--days N]`, for administrators, while everything keeps running, and
// `cvdctl db compact`, only while the program does not run.
int run_db_command(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace cvd::tools
