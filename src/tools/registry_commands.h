#pragma once

#include <QStringList>
#include <QTextStream>

namespace cvd::tools {

// `cvdctl reg get|set|delete|list ...` on the machine store.
int run_registry_command(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace cvd::tools
