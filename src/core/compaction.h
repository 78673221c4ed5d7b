#pragma once

#include <QString>
#include <QtGlobal>

namespace cvd {

struct AppState;

// What became of one database file in a compaction run.
enum class CompactionOutcome {
    Compacted,       // rewritten without its free pages
    ScratchInTheWay, // a scratch file cvdtmp.mdb from an earlier run could not be deleted: skipped
    Failed,          // the compaction failed; the run ended here
    NotReached,      // an earlier failure ended the run first
};

struct DatabaseCompaction
{
    QString path;
    CompactionOutcome outcome = CompactionOutcome::NotReached;
    qint64 size_before = 0;
    qint64 size_after = 0;
    QString reason; // why it was skipped or failed
};

struct CompactionReport
{
    DatabaseCompaction global;
    DatabaseCompaction user;
    bool nulls_repaired = false;
    QString failure; // the failure that ended the run, if any
};

// Compacts the global and then the user database, each through the scratch file cvdtmp.mdb in its own
// folder, and then repairs the null columns of both. A failure ends the run on the spot, silently and without
// a retry: what it closed stays closed until the next open_database or open_user_database. Only the report
// tells what happened.
CompactionReport compact_databases(AppState& state);

// The null repair of both databases, with the time of the clock for the missing dates. Opens both; the user
// database is closed again afterwards. Throws store::Error.
void repair_nulls(AppState& state);

} // namespace cvd
