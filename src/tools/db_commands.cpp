#include "tools/db_commands.h"

#include "core/compaction.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/file_ops.h"
#include "core/setting_keys.h"
#include "platform/runtime.h"
#include "store/maintenance.h"
#include "store/schema.h"
#include "tools/direct_access.h"

#include <QFileInfo>
#include <QThread>
#include <utility>

using namespace Qt::StringLiterals;

namespace cvd::tools {

namespace {

constexpr int kOk = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

// Between steps of a long job the connection lets go, so that the console and the engine are served.
void breathe()
{
    QThread::msleep(5);
}

int check(AppState& state, QTextStream& out)
{
    store::Database& db = state.global_db;
    const QStringList findings = store::integrity_check(db);
    out << "integrity: " << findings.join(u"; "_s) << '\n';
    const std::optional<int> version = store::stored_version(db);
    out << "version: " << (version ? QString::number(*version) : u"unknown"_s) << '\n';
    for (const auto& [table, count] : store::table_row_counts(db)) {
        out << table << ": " << count << '\n';
    }
    return findings == QStringList{u"ok"_s} ? kOk : kFailed;
}

int backup(AppState& state, const QString& target, QTextStream& out, QTextStream& err)
{
    if (target.isEmpty()) {
        err << "cvdctl db backup: usage: db backup FILE\n";
        return kUsage;
    }
    if (QFileInfo(target).absoluteFilePath() == QFileInfo(global_db_path(state)).absoluteFilePath()) {
        err << "cvdctl db backup: the backup cannot replace the database itself\n";
        return kUsage;
    }
    store::backup_to(state.global_db, target, breathe);
    out << "backed up " << global_db_path(state) << " to " << target << '\n';
    // Noted beside the database, so that the box of a damaged database can name the copy to go back to.
    if (!note_backup(global_db_path(state), target)) {
        err << "cvdctl db backup: the backup is made, but where it went could not be noted beside the database\n";
        return kFailed;
    }
    return kOk;
}

int purge(AppState& state, const QStringList& options, QTextStream& out, QTextStream& err)
{
    load_settings(state);
    int days = state.settings.get_setting_long(setting_keys::database::purge_after);
    if (!read_count_option(options, u"--days"_s, days)) {
        err << "cvdctl db purge: usage: db purge [--days N]\n";
        return kUsage;
    }
    const QDateTime cutoff = state.clock.now().addDays(-days);
    const qint64 deleted = store::purge_finished_messages(state.global_db, cutoff, 2000, breathe);
    out << "deleted " << deleted << " finished messages older than " << days << " days\n";
    return kOk;
}

QString compaction_line(const QString& label, const DatabaseCompaction& result)
{
    QString line = label + u' ' + result.path + u": "_s;
    switch (result.outcome) {
    case CompactionOutcome::Compacted:
        return line + u"compacted, "_s + QString::number(result.size_before) + u" -> "_s +
               QString::number(result.size_after) + u" bytes"_s;
    case CompactionOutcome::ScratchInTheWay:
        return line + u"skipped, "_s + result.reason;
    case CompactionOutcome::Failed:
        return line + u"failed, "_s + result.reason;
    case CompactionOutcome::NotReached:
        break;
    }
    return line + u"not reached"_s;
}

// The first reason why the run did not do all it should, or empty text when it did.
QString compaction_shortfall(const CompactionReport& report)
{
    if (!report.failure.isEmpty()) {
        return report.failure;
    }
    for (const auto& [label, result] :
         {std::pair{u"global database"_s, &report.global}, std::pair{u"user database"_s, &report.user}}) {
        if (result->outcome != CompactionOutcome::Compacted) {
            return label + u" not compacted: "_s + result->reason;
        }
    }
    return {};
}

// Only while the program does not run: the files must be free of its connections. The program's own
// single-instance lock is held meanwhile, so that no copy of it starts in the middle.
int compact(AppState& state, QTextStream& out, QTextStream& err)
{
    state.instance_lock = platform::FileLock::try_lock(
        state.runtime_dir + u'/' + QLatin1StringView(platform::kInstanceLockName), platform::FileLock::Mode::Exclusive);
    if (!state.instance_lock) {
        err << "cvdctl db compact: Corvane Desk is running; stop it first (cvdctl stop)\n";
        return kFailed;
    }
    if (!open_current_database(state)) {
        err << "cvdctl db compact: the database is not at this program's version; it is left as it is\n";
        return kFailed;
    }
    open_user_database(state);
    const CompactionReport report = compact_databases(state);
    out << compaction_line(u"global database"_s, report.global) << '\n';
    out << compaction_line(u"user database"_s, report.user) << '\n';
    out << "null repair: " << (report.nulls_repaired ? "done" : "not done") << '\n';
    state.instance_lock.reset();
    const QString shortfall = compaction_shortfall(report);
    if (!shortfall.isEmpty()) {
        err << "cvdctl db compact: " << shortfall << '\n';
        return kFailed;
    }
    return kOk;
}

} // namespace

int run_db_command(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QStringList rest = arguments;
    const bool local_db = take_local_switch(rest);
    const QString command = rest.value(0);
    if (command != u"check" && command != u"backup" && command != u"purge" && command != u"compact") {
        err << "cvdctl db: usage: db check | db backup FILE | db purge [--days N] | db compact\n";
        return kUsage;
    }
    DirectAccess direct(local_db);
    AppState& state = direct.state;
    if (!isfile(global_db_path(state))) {
        err << "cvdctl db " << command << ": no database at " << global_db_path(state) << '\n';
        return kFailed;
    }
    try {
        if (command == u"compact") {
            if (rest.size() > 1) {
                err << "cvdctl db compact: usage: db compact\n";
                return kUsage;
            }
            return compact(state, out, err);
        }
        open_database(state);
        if (command == u"check") {
            return check(state, out);
        }
        if (command == u"backup") {
            return backup(state, rest.value(1), out, err);
        }
        return purge(state, rest.mid(1), out, err);
    } catch (const store::Error& error) {
        err << "cvdctl db " << command << ": " << error.message() << '\n';
    } catch (const ProgramHalted& halted) {
        err << "cvdctl db " << command << ": " << halted.text() << '\n';
    }
    return kFailed;
}

} // namespace cvd::tools
