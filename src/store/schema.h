#pragma once

#include "store/database.h"

#include <QList>
#include <QString>
#include <optional>
#include <utility>

namespace cvd::store {

// The one schema version this program runs on.
inline constexpr int kDatabaseVersion = 501;

// Create a new database file with all its tables, indexes and default rows. The file appears complete or
// not at all: it is built under a temporary name and then linked into place, never replacing a file that
// appeared meanwhile (in which case nothing is done). Throws Error.
void create_global_database(const QString& path);
void create_user_database(const QString& path);

// cv_intake_files: the drop files that the intake has entered as messages under a working name and not yet
// removed, one row per file, its path in cv_path. New global files have it; the intake creates it in an
// existing file where it is missing.
void create_intake_files_table(Database& db);

// Links the finished file temp_path to path unless path exists, and removes temp_path either way. True when
// the file got there, false when another file stood at path already (it is left alone). Throws Error when
// the link fails for another reason.
bool publish_new_file(const QString& temp_path, const QString& path);

// Pieces of the current layout, for the routines that bring older files up to date. Each throws Error for a
// name the current layout does not have.
void create_current_table(Database& db, const QString& table);
void create_current_index(Database& db, const QString& index);
// "cv_priority INTEGER", as the current layout declares the column (for ALTER TABLE ... ADD COLUMN).
QString column_definition(const QString& table, const QString& column);
// A text column of the given width that the current layout does not have (an older file's own column).
QString text_column_definition(const QString& column, int size);
// The presets 1 to 100 of a new global database, "Prog 1" to "Prog 5" first.
void insert_default_presets(Database& db);
// The switches of category level and their defaults, in the order a new global database lists them.
QList<std::pair<QString, QString>> level_switch_defaults();

// What an opened file turns out to be. Only reads.
enum class FileKind {
    Global,    // the tables of the global database
    User,      // the tables of the user database
    OldLayout, // a global database of the oldest layouts: cv_settings has a cv_dbversion column
    Foreign,   // an SQLite file that is not one of ours
};
// Throws Error (NotADb) for a file that is not SQLite at all.
FileKind classify(Database& db);

// True when cv_settings has the column cv_dbversion (exact name): the file is of the oldest layouts.
bool has_version_column(Database& db);
// cv_dbversion of the first settings row; nullopt when it is null or no number.
std::optional<int> version_column_value(Database& db);

// The version a database says it has: database/version in cv_settings, or cv_dbversion in the oldest
// layouts. nullopt when neither can be read as a number.
std::optional<int> stored_version(Database& db);

} // namespace cvd::store
