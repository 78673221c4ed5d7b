#include "core/databases.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/error_path.h"
#include "core/file_ops.h"
#include "store/schema.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <optional>

using namespace Qt::StringLiterals;

namespace cvd {

namespace {

const QString kGlobalProcedure = u"Procedure: open_database"_s;
const QString kUserProcedure = u"Procedure: open_user_database"_s;
const QString kBackupNoteSuffix = u".last-backup"_s;

// Files found damaged in this run, by canonical path. They are never opened again, whoever asks.
QSet<QString>& damaged_files()
{
    static QSet<QString> files;
    return files;
}

bool known_damaged(const QString& path)
{
    // Nearly every run finds none; the canonical path would cost a walk up the whole folder chain.
    if (damaged_files().isEmpty()) {
        return false;
    }
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return !canonical.isEmpty() && damaged_files().contains(canonical);
}

void remember_damaged(const QString& path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    if (!canonical.isEmpty()) {
        damaged_files().insert(canonical);
    }
}

// A connection freshly opened and checked, with what the check found.
struct CheckedDatabase
{
    store::Database db;
    bool current = false; // of the current layout and version, so that rows may be added to it
};

// Opens and checks one database file. Throws store::Error for a file that is not ours.
CheckedDatabase open_checked(const QString& path, bool global)
{
    // What the global database acknowledges must survive a power cut: the queue's rows are promises to other
    // programs. The user database holds only settings, and may lose its last commits.
    CheckedDatabase checked{
        store::Database::open(path, store::Database::OpenMode::Existing,
                              global ? store::Database::Durability::Full : store::Database::Durability::Normal)};
    store::Database& db = checked.db;
    std::optional<int> version;
    store::FileKind kind = store::FileKind::Foreign;
    {
        // One snapshot for all the questions, rather than one per statement; it writes nothing.
        store::ReadTransaction snapshot(db);
        kind = store::classify(db);
        if (kind == store::FileKind::Global || kind == store::FileKind::OldLayout) {
            version = store::stored_version(db);
        }
    }
    const bool ours = global ? (kind == store::FileKind::Global || kind == store::FileKind::OldLayout)
                             : kind == store::FileKind::User;
    if (!ours) {
        throw store::Error(store::codes::NotADb, global ? u"file is not a Corvane Desk global database"_s
                                                        : u"file is not a Corvane Desk user database"_s);
    }
    // Shared mode writes to the file; a file from a newer program or of the oldest layout waits for the
    // version steps of start-up, which may refuse it.
    const bool current_or_older = kind == store::FileKind::User || version.value_or(0) <= store::kDatabaseVersion;
    if (kind != store::FileKind::OldLayout && current_or_older) {
        db.enable_wal();
    }
    checked.current = kind == store::FileKind::Global && version == store::kDatabaseVersion;
    return checked;
}

// Opens the database into `slot` unless it is open already. Returns what the check of a freshly opened file
// found, and nullopt when the connection was open before.
std::optional<bool> open_one(AppState& state, store::Database& slot, const QString& path, bool global)
{
    state.clear_error_counters();
    if (slot.is_open()) {
        return std::nullopt;
    }
    if (known_damaged(path)) {
        with_retry(state, global ? kGlobalProcedure : kUserProcedure, [&] {
            throw store::Error(store::codes::Corrupt, u"the file was found damaged in this run"_s, path);
        });
    }
    if (!isfile(path)) {
        with_retry(state, global ? u"Procedure: CreateNewGlobalDatabase "_s : u"Procedure: CreateNewUserDatabase "_s,
                   [&] { global ? store::create_global_database(path) : store::create_user_database(path); });
    }
    CheckedDatabase checked =
        with_retry(state, global ? kGlobalProcedure : kUserProcedure, [&] { return open_checked(path, global); });
    slot = std::move(checked.db);
    yield_to_event_loop();
    return checked.current;
}

} // namespace

QString global_db_path(const AppState& state)
{
    return state.global_db_folder + QLatin1StringView(kDatabaseFileName);
}

QString user_db_path(const AppState& state)
{
    return state.user_db_folder + QLatin1StringView(kDatabaseFileName);
}

void open_database(AppState& state)
{
    open_one(state, state.global_db, global_db_path(state), true);
}

bool open_current_database(AppState& state)
{
    // A file just opened was checked as it was opened; asking again would read the schema twice.
    const std::optional<bool> current = open_one(state, state.global_db, global_db_path(state), true);
    return current ? *current : global_db_is_current(state);
}

void open_user_database(AppState& state)
{
    open_one(state, state.user_db, user_db_path(state), false);
}

void close_database(AppState& state)
{
    state.global_db.close();
    yield_to_event_loop();
}

void close_user_database(AppState& state)
{
    state.user_db.close();
    yield_to_event_loop();
}

bool note_backup(const QString& database_path, const QString& backup_path)
{
    QSaveFile note(database_path + kBackupNoteSuffix);
    if (!note.open(QIODevice::WriteOnly)) {
        return false;
    }
    note.write(QFileInfo(backup_path).absoluteFilePath().toUtf8() + '\n');
    return note.commit();
}

QString latest_backup(const QString& database_path)
{
    const QFileInfo database(database_path);
    QFileInfoList candidates = database.dir().entryInfoList({database.fileName() + u".v*.bak"_s}, QDir::Files);
    QFile note(database_path + kBackupNoteSuffix);
    if (note.open(QIODevice::ReadOnly)) {
        const QFileInfo noted(QString::fromUtf8(note.readAll()).trimmed());
        if (noted.isFile()) {
            candidates.append(noted);
        }
    }
    QString latest;
    QDateTime latest_time;
    for (const QFileInfo& candidate : std::as_const(candidates)) {
        if (latest.isEmpty() || candidate.lastModified() > latest_time) {
            latest = candidate.absoluteFilePath();
            latest_time = candidate.lastModified();
        }
    }
    return latest;
}

QString abandon_damaged_database(AppState& state, const QString& file)
{
    QString damaged;
    for (store::Database* db : {&state.global_db, &state.user_db}) {
        if (!db->is_open() || (!file.isEmpty() && db->file_name() != file)) {
            continue;
        }
        if (damaged.isEmpty()) {
            damaged = db->path();
        }
        remember_damaged(db->path());
        db->abandon();
    }
    if (damaged.isEmpty()) {
        damaged = file.isEmpty() ? global_db_path(state) : file;
        remember_damaged(damaged);
    }
    return damaged;
}

void get_reg_values(AppState& state)
{
    state.clear_error_counters();
    state.db_password = state.registry
                            .read_text(platform::Hive::LocalMachine, QLatin1StringView(kProgramKey),
                                       QLatin1StringView(kDbPasswordValue))
                            .value_or(QString())
                            .trimmed();
}

void put_reg_values(AppState& state)
{
    state.clear_error_counters();
    state.registry.write_text(platform::Hive::LocalMachine, QLatin1StringView(kProgramKey),
                              QLatin1StringView(kDbPasswordValue), state.db_password);
}

void load_settings(AppState& state)
{
    open_database(state);
    with_retry(state, u"Procedure: load_settings"_s, [&] { state.settings.load_global(state.global_db); });
    open_user_database(state);
    with_retry(state, u"Procedure: load_settings"_s, [&] { state.settings.load_user(state.user_db); });
    close_user_database(state);
}

void save_settings(AppState& state)
{
    open_database(state);
    with_retry(state, u"Procedure: save_settings"_s, [&] { state.settings.save_global(state.global_db); });
    open_user_database(state);
    with_retry(state, u"Procedure: save_settings"_s, [&] { state.settings.save_user(state.user_db); });
    close_user_database(state);
}

} // namespace cvd

namespace cvd {

bool global_db_is_current(AppState& state)
{
    return with_retry(state, u"Procedure: open_database"_s, [&] {
        return store::classify(state.global_db) == store::FileKind::Global &&
               store::stored_version(state.global_db) == store::kDatabaseVersion;
    });
}

} // namespace cvd
