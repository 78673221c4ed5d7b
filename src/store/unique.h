#pragma once

#include "store/database.h"

namespace cvd::store {

// The highest number get_unique hands out; the one after it is 1.
inline constexpr qint64 kUniqueLimit = 2000000000;

// Draws the next number from cv_counters in one atomic statement, so that any number of processes may draw
// at the same time and never get the same number. Throws Error (Busy when another writer holds the file
// for longer than the busy timeout).
qint32 get_unique(Database& db);

} // namespace cvd::store
