#include "core/compaction.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/file_ops.h"
#include "store/compaction.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace cvd {

namespace {

// How long a compaction waits for other connections to let go of the file. At start-up nobody else should
// hold it; a leftover engine that does is not waited out.
constexpr int kLockWaitMs = 2000;
constexpr const char* kScratchName = "cvdtmp.mdb";

qint64 file_size(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() ? info.size() : 0;
}

// One database: the scratch file of the last run out of the way, the file closed, compacted and opened again.
// False when the compaction failed and the run must end.
bool compact_one(AppState& state, DatabaseCompaction& result, const QString& folder, void (*close)(AppState&),
                 void (*open)(AppState&))
{
    const QString scratch = folder + QLatin1StringView(kScratchName);
    if (isfile(scratch) && !cankill(scratch)) {
        result.outcome = CompactionOutcome::ScratchInTheWay;
        result.reason = u"the scratch file "_s + scratch + u" could not be deleted"_s;
        result.size_before = file_size(result.path);
        return true;
    }
    close(state);
    // Measured once closed: the last connection to close folds the write-ahead log into the file.
    result.size_before = file_size(result.path);
    try {
        store::compact_file(result.path, scratch, kLockWaitMs);
    } catch (const store::Error& error) {
        // No box and no retry: the file stays closed, and the next open routine opens it again.
        result.outcome = CompactionOutcome::Failed;
        result.reason = error.message();
        return false;
    }
    yield_to_event_loop();
    result.outcome = CompactionOutcome::Compacted;
    result.size_after = file_size(result.path);
    open(state);
    return true;
}

} // namespace

CompactionReport compact_databases(AppState& state)
{
    CompactionReport report;
    report.global.path = global_db_path(state);
    report.user.path = user_db_path(state);
    if (!compact_one(state, report.global, state.global_db_folder, close_database, open_database)) {
        report.failure = u"global database: "_s + report.global.reason;
        return report;
    }
    if (!compact_one(state, report.user, state.user_db_folder, close_user_database, open_user_database)) {
        report.failure = u"user database: "_s + report.user.reason;
        return report;
    }
    try {
        repair_nulls(state);
        report.nulls_repaired = true;
    } catch (const store::Error& error) {
        report.failure = u"null repair: "_s + error.message();
    }
    yield_to_event_loop();
    return report;
}

void repair_nulls(AppState& state)
{
    open_database(state);
    open_user_database(state);
    store::repair_nulls(state.global_db, state.user_db, state.clock.now());
    close_user_database(state);
}

} // namespace cvd
