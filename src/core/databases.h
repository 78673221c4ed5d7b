#pragma once

#include <QString>

namespace cvd {

struct AppState;

inline constexpr const char* kDatabaseFileName = "cvd.mdb";
// The registry key and value of the database password.
inline constexpr const char* kProgramKey = "SOFTWARE\\Halvern\\CorvaneDesk";
inline constexpr const char* kDbPasswordValue = "DB_Password";

QString global_db_path(const AppState& state);
QString user_db_path(const AppState& state);

// Open the database if it is not open yet, creating the file with its tables and default rows when it is
// missing. A file that is not one of our databases is refused through the common error path, which halts
// the program; nothing is ever written to it. Only a file at the current version or older is switched to
// shared (write-ahead) mode; a newer one is left byte for byte as it is.
void open_database(AppState& state);
void open_user_database(AppState& state);
void close_database(AppState& state);
void close_user_database(AppState& state);

// The database password, in the machine store: read (trimmed) at start, written back at the end.
// Writing does not create the key.
void get_reg_values(AppState& state);
void put_reg_values(AppState& state);

// The settings store to and from both databases. load reads every category; save rewrites each
// database's settings table in one transaction.
void load_settings(AppState& state);
void save_settings(AppState& state);

} // namespace cvd

namespace cvd {

// Backups of a database file. Where the last copy made while the program runs went is noted in a small file
// beside the database, since a damaged database cannot be asked for it. False when the note was not written.
bool note_backup(const QString& database_path, const QString& backup_path);
// The most recent backup known of a database file: the noted copy, or a copy a conversion kept beside it
// ("cvd.mdb.v300.bak"), whichever was written last. Empty when none of them exists.
QString latest_backup(const QString& database_path);

// Closes every connection of `state` to the damaged file `file` (every connection when `file` is empty)
// without another statement, and refuses to open that file again in this process, so that nothing more is
// written to it. Returns the path of the damaged database as the program names it.
QString abandon_damaged_database(AppState& state, const QString& file);

// True when the open global database is of the current layout and version, so that rows may be added to it.
// A file that still needs a conversion, or one from a newer program, is not written to by the intake paths.
bool global_db_is_current(AppState& state);

// open_database, then global_db_is_current, with the schema read once when the file is opened here.
bool open_current_database(AppState& state);

} // namespace cvd
