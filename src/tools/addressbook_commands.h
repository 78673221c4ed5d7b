#pragma once

#include <QStringList>
#include <QTextStream>

namespace cvd::tools {

// `cvdctl list carriers|recipients|groups|members`: the address book as tab-separated lines with a heading.
int run_list_command(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace cvd::tools

namespace cvd::tools {

// `cvdctl export KIND FILE` and `cvdctl import KIND FILE [--overwrite]` in the text exchange format; an import
// of recipients or groups publishes the machine store's lists of names again.
int run_export_command(const QStringList& arguments, QTextStream& out, QTextStream& err);
int run_import_command(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace cvd::tools
