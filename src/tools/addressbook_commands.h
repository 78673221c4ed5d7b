#pragma once

#include <QStringList>
#include <QTextStream>

namespace cvd::tools {

// `cvdctl list carriers|recipients|groups|members`: the address book as tab-separated lines with a heading.
int run_list_command(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace cvd::tools
