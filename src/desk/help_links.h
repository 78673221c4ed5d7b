#pragma once

#include "core/prompter.h"

#include <QString>
#include <QStringList>

namespace cvd::desk {

// The maker's web site, opened by Help -> Website.
inline constexpr char16_t kWebsiteAddress[] = u"https://halvern.example/corvane-desk/";

// Where the bundled help's start page may be, in the order looked at: beside the program (a build, or a
// folder install) and in the shared data of an installed program (prefix/bin -> prefix/share).
QStringList help_index_candidates(const QString& program_folder);
// The first of them that exists, or empty text.
QString find_help_index(const QString& program_folder);

Notice help_not_available();
Notice browser_not_found();

} // namespace cvd::desk
