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

// True when the open global database is of the current layout and version, so that rows may be added to it.
// A file that still needs a conversion, or one from a newer program, is not written to by the intake paths.
bool global_db_is_current(AppState& state);

} // namespace cvd
