#include "core/startup.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/compaction.h"
#include "core/conversions.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/file_ops.h"
#include "core/passwords.h"
#include "core/prompter.h"
#include "core/setting_keys.h"
#include "platform/folders.h"
#include "store/schema.h"
#include "store/unique.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace cvd {

CommandLine parse_command_line(const QString& text)
{
    CommandLine parsed;
    QString rest = text;
    const QString local_switch = u"/localdb"_s;
    const QString minimized_switch = u"/minimized"_s;
    if (rest.contains(local_switch)) {
        parsed.local_db = true;
        rest.remove(local_switch, Qt::CaseSensitive);
    }
    if (rest.contains(minimized_switch)) {
        parsed.minimized = true;
        rest.remove(minimized_switch, Qt::CaseSensitive);
    }
    parsed.line = rest.trimmed();
    return parsed;
}

void fix_folders(AppState& state)
{
    const QString common_root = platform::common_data_root();
    const QString user_root = platform::user_data_root();
    if (!state.local_db) {
        // The roots are asked for with "create" as well: a new account has no data folder yet.
        for (const QString& root : {common_root, user_root}) {
            if (!root.isEmpty()) {
                QDir().mkpath(root);
            }
        }
    }
    const platform::DataFolders folders =
        platform::resolve_data_folders(state.local_db, state.program_folder, common_root, user_root,
                                       state.app_version_folder, [](const QString& level) { makedir(level); });
    state.global_db_folder = folders.global_db_folder;
    state.user_db_folder = folders.user_db_folder;
}

namespace {

const QString kMainProcedure = u"Procedure: main"_s;
const QString kMismatchText =
    u"Corvane Desk cannot start. This version of Corvane Desk does not match the database version."_s;
const QString kMismatchTitle = u"Version Mismatch"_s;

StartupResult running()
{
    return {StartupOutcome::Running, kExitOk, {}};
}

StartupResult exit_with(int code, const QString& reason)
{
    return {StartupOutcome::Exit, code, reason};
}

// A database found beside the program is taken as the start of a new installation.
void copy_first_run_database(AppState& state)
{
    const QString target = global_db_path(state);
    if (isfile(target)) {
        return;
    }
    const QString source = state.program_folder + QLatin1StringView(kDatabaseFileName);
    if (isfile(source) && cancopy(source, target)) {
        state.prompter.show_box(
            {u"Corvane Desk database file copied from program folder to new data folder: "_s + state.global_db_folder,
             u"Database Copied"_s, BoxIcon::Information});
    }
}

StartupResult refuse_version(AppState& state)
{
    state.prompter.show_box({kMismatchText, kMismatchTitle, BoxIcon::Critical});
    close_database(state);
    return exit_with(kExitFailure, u"the database version does not match this program"_s);
}

// A file at 500 is converted; anything but the current version afterwards, older or newer, is refused
// before a byte of it is written.
std::optional<StartupResult> check_version(AppState& state, ConversionBackup& backup)
{
    const SettingKey version = setting_keys::database::version;
    if (state.settings.get_setting_long(version) < store::kDatabaseVersion &&
        upgrade_to_current(state, backup) == ConversionStatus::Failed) {
        return exit_with(kExitFailure, u"the conversion of the database failed; a copy is kept in "_s + backup.path());
    }
    if (state.settings.get_setting_long(version) != store::kDatabaseVersion) {
        return refuse_version(state);
    }
    return std::nullopt;
}

void count_start(AppState& state)
{
    const SettingKey starts = setting_keys::database::rebuild_index;
    state.settings.put_setting(starts, state.settings.get_setting_long(starts) + 1);
    if (state.settings.get_setting_long(starts) > 10) {
        // Every eleventh start is the time for maintenance of the database files. A compaction that fails
        // says nothing; the files stay as they were and the start goes on.
        state.settings.put_setting(starts, 0);
        compact_databases(state);
        open_database(state);
    }
}

// Every unsent row draws a transaction of this run, so that unfinished rows of an earlier run count in
// this one. One transaction: other processes see all rows renumbered or none.
void renumber_unsent_rows(AppState& state)
{
    with_retry(state, kMainProcedure, [&] {
        store::Database& db = state.global_db;
        store::Transaction transaction(db);
        state.first_transaction = store::get_unique(db);
        QList<qint64> ids;
        store::Statement select = db.prepare(u"SELECT cv_message_id FROM cv_messages WHERE (cv_sent = 0)"_s);
        while (select.step()) {
            ids.append(select.integer(0).value_or(0));
        }
        store::Statement update =
            db.prepare(u"UPDATE cv_messages SET cv_transaction = ?1 WHERE (cv_message_id = ?2)"_s);
        for (const qint64 id : ids) {
            update.reset();
            update.bind(1, static_cast<qint64>(store::get_unique(db))).bind(2, id);
            update.exec();
        }
        transaction.commit();
    });
    yield_to_event_loop();
    with_retry(state, kMainProcedure, [&] { state.global_db.exec(u"UPDATE cv_carriers SET cv_retries = 0"_s); });
    yield_to_event_loop();
}

} // namespace

StartupResult run_startup(AppState& state, const QString& command_line, const QString& program_folder,
                          const StartupHooks& hooks)
{
    state.clear_error_counters();
    get_reg_values(state);
    state.program_folder = program_folder;

    const CommandLine parsed = parse_command_line(command_line);
    state.local_db = parsed.local_db;
    fix_folders(state);
    state.start_minimized = parsed.minimized;
    if (!parsed.line.isEmpty()) {
        QString reason;
        if (!hooks.send_page || !hooks.send_page(state, parsed.line, &reason)) {
            return exit_with(kExitLineRefused, reason.isEmpty() ? u"the message line was refused"_s : reason);
        }
        state.start_minimized = true;
    }

    state.instance_lock = platform::FileLock::try_lock(
        state.runtime_dir + u'/' + QLatin1StringView(platform::kInstanceLockName), platform::FileLock::Mode::Exclusive);
    if (!state.instance_lock) {
        if (!state.start_minimized) {
            state.prompter.show_box({u"Another copy of Corvane Desk is already running.  Quitting..."_s,
                                     u"Duplicate Application"_s, BoxIcon::Information});
        }
        // A line handed in was enqueued for the running copy: that is a success.
        return parsed.line.isEmpty() ? exit_with(kExitFailure, u"another copy is already running"_s)
                                     : exit_with(kExitOk, {});
    }
    state.process_table.fill(QString(), kProcessTableSize);
    yield_to_event_loop();

    copy_first_run_database(state);
    open_database(state);
    open_user_database(state);
    ConversionBackup backup;
    switch (upgrade_old_layout(state, backup)) {
    case ConversionStatus::Done:
        break;
    case ConversionStatus::Refused:
        return refuse_version(state);
    case ConversionStatus::Failed:
        return exit_with(kExitFailure, u"the conversion of the database failed; a copy is kept in "_s + backup.path());
    }
    load_settings(state);
    if (const std::optional<StartupResult> refused = check_version(state, backup)) {
        return *refused;
    }

    decode_level_passwords(state);
    if (!pass_start_gate(state)) {
        return exit_with(kExitFailure, u"the start password was not given"_s);
    }
    count_start(state);
    renumber_unsent_rows(state);
    state.date_order_ok = true; // dates are never read in a regional format here
    save_settings(state);
    state.startup_complete = true;
    return running();
}

void orderly_shutdown(AppState& state)
{
    put_reg_values(state);
    save_settings(state);
    state.instance_lock.reset();
}

} // namespace cvd
