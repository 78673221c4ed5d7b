#pragma once

#include "store/database.h"

#include <QDateTime>
#include <QString>

namespace cvd::store {

// Rewrites the database file at `path` without its free pages, rebuilding every index on the way. The
// compacted copy is first written to `scratch_path` (which must not exist yet) and then copied back into
// `path` as one transaction, so `path` holds either the old or the new content, never a mix. The routine
// waits up to `lock_wait_ms` until no other connection has the file open and keeps every other connection
// out until it is done, so no row another process commits can fall between the copy and its return; when
// the wait runs out it fails with Busy and nothing was changed. The scratch file stays behind. Throws Error.
void compact_file(const QString& path, const QString& scratch_path, int lock_wait_ms);

// Fills the null columns of the rows older versions and other tools left behind with their defaults: the
// unsent messages and the address book of `global_db`, then the settings and presets of both files. One
// statement and one transaction per table; only rows with a null among the repaired columns are written.
// Flags and priorities are never touched. A table a file lacks is passed over. Throws Error.
void repair_nulls(Database& global_db, Database& user_db, const QDateTime& now);

} // namespace cvd::store
