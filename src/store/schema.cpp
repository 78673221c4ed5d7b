#include "store/schema.h"

#include <QFile>
#include <QStringList>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <span>
#include <sqlite3.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::store {

namespace {

// Column kinds of the old files and what each became here. Text compares without regard to case, as
// operators type keys in any case; booleans hold -1 and 0; dates are 'YYYY-MM-DD HH:MM:SS' text.
enum class Kind { Text, Memo, Boolean, Long, Integer, Date, Auto };

struct Column
{
    const char* name;
    Kind kind;
    int size = 0; // the width a text column declares; SQLite keeps it as part of the type and enforces nothing
};

struct Table
{
    const char* name;
    std::span<const Column> columns;
};

struct Index
{
    const char* name;
    const char* table;
    const char* columns;
    const char* where = nullptr;
};

constexpr Column kMessages[] = {
    {"cv_recipient", Kind::Text, 40},
    {"cv_pin", Kind::Text, 40},
    {"cv_message", Kind::Memo},
    {"cv_carrier", Kind::Text, 40},
    {"cv_date_time_requested", Kind::Date},
    {"cv_date_time_sent", Kind::Date},
    {"cv_from", Kind::Text, 80},
    {"cv_sent", Kind::Boolean},
    {"cv_error", Kind::Boolean},
    {"cv_scheduled", Kind::Boolean},
    {"cv_repeat_interval", Kind::Long},
    {"cv_repeat_stop", Kind::Date},
    {"cv_message_id", Kind::Auto},
    {"cv_retries", Kind::Integer},
    {"cv_last_try", Kind::Date},
    {"cv_transaction", Kind::Long},
    {"cv_priority", Kind::Long},
};

constexpr Column kRecipients[] = {
    {"cv_name", Kind::Text, 40},    {"cv_full_name", Kind::Text, 40},  {"cv_id", Kind::Text, 80},
    {"cv_carrier", Kind::Text, 40}, {"cv_maxchars", Kind::Integer},    {"cv_alpha", Kind::Boolean},
    {"cv_on_call", Kind::Boolean},  {"cv_ad_hoc", Kind::Boolean},      {"cv_drop_control", Kind::Boolean},
    {"cv_group", Kind::Boolean},    {"cv_SendSubject", Kind::Boolean}, {"cv_extra1", Kind::Text, 80},
    {"cv_extra2", Kind::Text, 80},  {"cv_remove_from", Kind::Boolean}, {"cv_priority", Kind::Long},
};

constexpr Column kCarriers[] = {
    {"cv_name", Kind::Text, 40},         {"cv_phone_number", Kind::Text, 80}, {"cv_modem_settings", Kind::Text, 15},
    {"cv_maxchars", Kind::Integer},      {"cv_init_string", Kind::Text, 80},  {"cv_retries", Kind::Integer},
    {"cv_message_limit", Kind::Integer}, {"cv_dial_type", Kind::Text, 40},    {"cv_auth_type", Kind::Integer},
    {"cv_auth_user", Kind::Text, 80},    {"cv_auth_pass", Kind::Text, 40},    {"cv_relay_mail", Kind::Boolean},
    {"cv_relay_server", Kind::Text, 80}, {"cv_priority", Kind::Long},
};

constexpr Column kSettings[] = {
    {"cv_id", Kind::Auto},
    {"cv_category", Kind::Text, 40},
    {"cv_name", Kind::Text, 40},
    {"cv_value", Kind::Text, 255},
};

constexpr Column kCounters[] = {
    {"cv_id", Kind::Auto},
    {"cv_unique", Kind::Long},
};

constexpr Column kGroups[] = {
    {"cv_group", Kind::Text, 40},
    {"cv_recipient", Kind::Text, 40},
};

constexpr Column kOnCallTable[] = {
    {"cv_group", Kind::Text, 40},  {"cv_recipient", Kind::Text, 40}, {"cv_start_day", Kind::Integer},
    {"cv_start_time", Kind::Date}, {"cv_stop_day", Kind::Integer},   {"cv_stop_time", Kind::Date},
};

constexpr Column kPresets[] = {
    {"cv_id", Kind::Auto},
    {"cv_index", Kind::Long},
    {"cv_description", Kind::Text, 100},
    {"cv_recipient", Kind::Text, 40},
    {"cv_message", Kind::Text, 255},
};

constexpr Table kGlobalTables[] = {
    {"cv_messages", kMessages},       {"cv_recipients", kRecipients}, {"cv_carriers", kCarriers},
    {"cv_settings", kSettings},       {"cv_counters", kCounters},     {"cv_groups", kGroups},
    {"cv_oncalltable", kOnCallTable}, {"cv_presets", kPresets},
};

// A table of this program's own, beside the old layout, so that classify and the conversions never ask for it.
constexpr Column kIntakeFiles[] = {
    {"cv_path", Kind::Memo},
};

constexpr Table kIntakeTables[] = {
    {"cv_intake_files", kIntakeFiles},
};

constexpr Table kUserTables[] = {
    {"cv_settings", kSettings},
    {"cv_presets", kPresets},
};

constexpr Index kSettingsIndexes[] = {
    {"cv_settings_id_index", "cv_settings", "cv_id"},
    {"cv_settings_category_index", "cv_settings", "cv_category"},
};

constexpr Index kPresetsIndexes[] = {
    {"cv_presets_id_index", "cv_presets", "cv_id"},
};

// Table by table in the order the old files made them. The flag indexes of cv_messages (sent, scheduled,
// error) are left out: the planner takes them for a flag's common value and walks nearly every row of a long
// history. An index on cv_transaction and a partial index for the due query stand in their place.
constexpr Index kGlobalIndexes[] = {
    {"cv_carrier_index", "cv_messages", "cv_carrier"},
    {"cv_message_id_index", "cv_messages", "cv_message_id"},
    {"cv_priority_index", "cv_messages", "cv_priority"},
    {"cv_transaction_index", "cv_messages", "cv_transaction"},
    {"cv_due_index", "cv_messages", "cv_scheduled, cv_date_time_requested", "cv_scheduled = 0"},
    // The history opens in the order of request time, then send time, read straight from this index.
    {"cv_requested_index", "cv_messages", "cv_date_time_requested, cv_date_time_sent"},
    // The old files named this one cv_carrier_index as well; in SQLite an index name belongs to the whole
    // file, so it needs a name of its own.
    {"cv_carriers_name_index", "cv_carriers", "cv_name"},
    {"cv_cpriority_index", "cv_carriers", "cv_priority"},
    kSettingsIndexes[0],
    kSettingsIndexes[1],
    {"cv_counters_id_index", "cv_counters", "cv_id"},
    {"cv_group_index", "cv_groups", "cv_group"},
    {"cv_name_index", "cv_recipients", "cv_name"},
    {"oncalltable_index", "cv_oncalltable", "cv_group"},
    kPresetsIndexes[0],
};

constexpr Index kUserIndexes[] = {kSettingsIndexes[0], kSettingsIndexes[1], kPresetsIndexes[0]};

struct SettingRow
{
    const char* category;
    const char* name;
    const char* value;
};

constexpr SettingRow kGlobalSettings[] = {
    {"database", "version", "501"},
    {"database", "purge_after", "30"},
    {"database", "rebuild_index", "0"},
    {"connector", "retries", "2"},
    {"connector", "retry_interval", "15"},
    {"connector", "dial_prefix", ""},
    {"connector", "port", "0"},
    {"connector", "dns1", "0.0.0.0"},
    {"connector", "dns2", "0.0.0.0"},
    {"connector", "sender", "%LoginName%"},
    {"connector", "sender_email", "%LoginName%@example.com"},
    {"connector", "subject_delimiter", ""},
    {"logging", "level", "2"},
    {"logging", "archive", "0"},
    {"logging", "length", "100000"},
    {"security", "admin_password", ""},
    {"security", "super_password", ""},
    {"security", "user_password", ""},
    {"display", "extra1_label", "Comment1"},
    {"display", "extra2_label", "Comment2"},
    {"display", "spell_check", "0"},
    {"display", "clear_on_send", "0"},
    {"display", "warning_popup", "0"},
    {"display", "small_font", "0"},
    {"display", "max_msg_length", "2000"},
    {"display", "remove_presets", "0"},
    {"display", "remove_options", "0"},
    {"display", "remove_logs", "0"},
    {"display", "remove_reports", "0"},
    {"display", "group_label_after", "0"},
    {"display", "minimize_to_taskbar", "-1"},
    {"display", "connection_monitor_visible", "-1"},
};

// Switches of settings kept globally unless set otherwise ("0").
constexpr const char* kGlobalLevelSwitches[] = {
    "user_presets",
    "user_sender",
    "user_sender_email",
    "user_spell_check",
    "user_clear_on_send",
    "user_warning_popup",
    "user_small_font",
    "user_group_label_after",
    "user_minimize_to_taskbar",
    "user_remove_presets",
    "user_remove_options",
    "user_remove_logs",
    "user_remove_reports",
};

// Switches of the window state, kept per user ("-1"); the folder windows follow in the loop below.
constexpr const char* kUserLevelSwitches[] = {
    "user_send_form_top",
    "user_send_form_left",
    "user_send_form_width",
    "user_send_form_height",
    "user_connection_monitor_scroll",
    "user_connection_monitor_top",
    "user_connection_monitor_left",
    "user_connection_monitor_width",
    "user_connection_monitor_height",
    "user_sched_sort_order",
    "user_pend_sort_order",
    "user_sent_sort_order",
    "user_bad_sort_order",
    "user_preset_sort_order",
};

constexpr const char* kFolderWindows[] = {"sched", "pend", "sent", "bad", "activity"};
constexpr const char* kWindowSides[] = {"_top", "_left", "_width", "_height"};

constexpr SettingRow kUserSettings[] = {
    // 500 on purpose: nothing consults the user file's version, and existing user files say 500.
    {"database", "version", "500"},
    {"display", "send_form_top", "0"},
    {"display", "send_form_left", "0"},
    {"display", "send_form_width", "0"},
    {"display", "send_form_height", "0"},
    {"display", "connection_monitor_scroll", "-1"},
    {"display", "connection_monitor_top", "0"},
    {"display", "connection_monitor_left", "0"},
    {"display", "connection_monitor_width", "0"},
    {"display", "connection_monitor_height", "0"},
};

QString column_type(Kind kind, int size)
{
    switch (kind) {
    case Kind::Text:
        return u"TEXT(%1) COLLATE NOCASE"_s.arg(size);
    case Kind::Memo:
        return u"TEXT COLLATE NOCASE"_s;
    case Kind::Date:
        return u"TEXT"_s;
    case Kind::Auto:
        return u"INTEGER PRIMARY KEY AUTOINCREMENT"_s;
    case Kind::Boolean:
    case Kind::Long:
    case Kind::Integer:
        break;
    }
    return u"INTEGER"_s;
}

void create_tables(Database& db, std::span<const Table> tables)
{
    for (const Table& table : tables) {
        QStringList columns;
        for (const Column& column : table.columns) {
            columns.append(QString::fromLatin1(column.name) + u' ' + column_type(column.kind, column.size));
        }
        db.exec(u"CREATE TABLE "_s + QString::fromLatin1(table.name) + u" ("_s + columns.join(u", "_s) + u')');
    }
}

void create_indexes(Database& db, std::span<const Index> indexes)
{
    for (const Index& index : indexes) {
        QString sql = u"CREATE INDEX "_s + QString::fromLatin1(index.name) + u" ON "_s +
                      QString::fromLatin1(index.table) + u" ("_s + QString::fromLatin1(index.columns) + u')';
        if (index.where) {
            sql += u" WHERE "_s + QString::fromLatin1(index.where);
        }
        db.exec(sql);
    }
}

void insert_presets(Database& db, bool with_program_names)
{
    Statement insert = db.prepare(
        u"INSERT INTO cv_presets (cv_index, cv_description, cv_recipient, cv_message) VALUES (?1, ?2, '', '')"_s);
    for (int index = 1; index <= 100; ++index) {
        const bool named = with_program_names && index <= 5;
        insert.bind(1, index).bind(2, named ? u"Prog %1"_s.arg(index) : QString());
        insert.exec();
    }
}

class SettingsWriter
{
public:
    explicit SettingsWriter(Database& db)
        : m_insert(db.prepare(u"INSERT INTO cv_settings (cv_category, cv_name, cv_value) VALUES (?1, ?2, ?3)"_s))
    {
    }

    void add(const QString& category, const QString& name, const QString& value)
    {
        m_insert.bind(1, category).bind(2, name).bind(3, value);
        m_insert.exec();
    }

    void add(std::span<const SettingRow> rows)
    {
        for (const SettingRow& row : rows) {
            add(QString::fromLatin1(row.category), QString::fromLatin1(row.name), QString::fromLatin1(row.value));
        }
    }

private:
    Statement m_insert;
};

void insert_global_rows(Database& db)
{
    db.exec(u"INSERT INTO cv_counters (cv_unique) VALUES (1)"_s);
    insert_presets(db, true);
    SettingsWriter settings(db);
    settings.add(kGlobalSettings);
    for (const auto& [name, value] : level_switch_defaults()) {
        settings.add(u"level"_s, name, value);
    }
}

void insert_user_rows(Database& db)
{
    insert_presets(db, false);
    SettingsWriter(db).add(kUserSettings);
}

void remove_file_set(const QString& path)
{
    for (const QString& suffix : {QString(), u"-journal"_s, u"-wal"_s, u"-shm"_s}) {
        QFile::remove(path + suffix);
    }
}

// Builds the file under a name of this process, then publishes it. Any failure leaves no file behind.
void create_database(const QString& path, std::span<const Table> tables, std::span<const Index> indexes,
                     void (*insert_rows)(Database&))
{
    if (QFile::exists(path)) {
        return;
    }
    const QString temp_path = path + u".creating-"_s + QString::number(::getpid());
    remove_file_set(temp_path); // left by a crashed run that had the same process id
    try {
        Database db = Database::open(temp_path, Database::OpenMode::CreateIfMissing);
        Transaction transaction(db);
        create_tables(db, tables);
        create_indexes(db, indexes);
        insert_rows(db);
        transaction.commit();
        db.enable_wal();
        db.close();
    } catch (...) {
        remove_file_set(temp_path);
        throw;
    }
    publish_new_file(temp_path, path);
}

bool table_present(const QStringList& tables, const char* name)
{
    return tables.contains(QString::fromLatin1(name), Qt::CaseInsensitive);
}

std::optional<int> version_value(const Statement& row)
{
    if (row.is_null(0)) {
        return std::nullopt;
    }
    bool ok = false;
    const int value = row.text(0).value_or(QString()).trimmed().toInt(&ok);
    return ok ? std::optional<int>(value) : std::nullopt;
}

} // namespace

bool publish_new_file(const QString& temp_path, const QString& path)
{
    const QByteArray from = QFile::encodeName(temp_path);
    const QByteArray to = QFile::encodeName(path);
    int rc = ::link(from.constData(), to.constData());
    if (rc != 0 && (errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS)) {
        // File systems without hard links: a rename that refuses to replace does the same.
        rc = ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE);
    }
    const int link_errno = errno;
    remove_file_set(temp_path);
    if (rc == 0) {
        return true;
    }
    if (link_errno == EEXIST) {
        return false; // another process created it meanwhile; theirs stands
    }
    throw Error(SQLITE_CANTOPEN, QString::fromLocal8Bit(std::strerror(link_errno)) + u" (publishing "_s + path + u')');
}

QList<std::pair<QString, QString>> level_switch_defaults()
{
    QList<std::pair<QString, QString>> switches;
    for (const char* name : kGlobalLevelSwitches) {
        switches.append({QString::fromLatin1(name), u"0"_s});
    }
    for (const char* name : kUserLevelSwitches) {
        switches.append({QString::fromLatin1(name), u"-1"_s});
    }
    for (const char* window : kFolderWindows) {
        for (const char* side : kWindowSides) {
            switches.append({u"user_"_s + QString::fromLatin1(window) + QString::fromLatin1(side), u"-1"_s});
        }
    }
    return switches;
}

void create_current_table(Database& db, const QString& table)
{
    for (const Table& known : kGlobalTables) {
        if (table == QLatin1StringView(known.name)) {
            create_tables(db, std::span<const Table>(&known, 1));
            return;
        }
    }
    throw Error(SQLITE_ERROR, u"no such table in the current layout: "_s + table);
}

void create_current_index(Database& db, const QString& index)
{
    for (const Index& known : kGlobalIndexes) {
        if (index == QLatin1StringView(known.name)) {
            create_indexes(db, std::span<const Index>(&known, 1));
            return;
        }
    }
    throw Error(SQLITE_ERROR, u"no such index in the current layout: "_s + index);
}

QString column_definition(const QString& table, const QString& column)
{
    for (const Table& known : kGlobalTables) {
        if (table != QLatin1StringView(known.name)) {
            continue;
        }
        for (const Column& field : known.columns) {
            if (column == QLatin1StringView(field.name)) {
                return column + u' ' + column_type(field.kind, field.size);
            }
        }
    }
    throw Error(SQLITE_ERROR, u"no such column in the current layout: "_s + table + u'.' + column);
}

QString text_column_definition(const QString& column, int size)
{
    return column + u' ' + column_type(Kind::Text, size);
}

void insert_default_presets(Database& db)
{
    insert_presets(db, true);
}

void create_global_database(const QString& path)
{
    create_database(path, kGlobalTables, kGlobalIndexes, [](Database& db) {
        create_intake_files_table(db);
        insert_global_rows(db);
    });
}

void create_intake_files_table(Database& db)
{
    if (!db.table_exists(QString::fromLatin1(kIntakeTables[0].name))) {
        create_tables(db, kIntakeTables);
    }
}

void create_user_database(const QString& path)
{
    create_database(path, kUserTables, kUserIndexes, insert_user_rows);
}

bool has_version_column(Database& db)
{
    return db.table_exists(u"cv_settings"_s) && db.column_names(u"cv_settings"_s).contains(u"cv_dbversion"_s);
}

std::optional<int> version_column_value(Database& db)
{
    Statement query = db.prepare(u"SELECT cv_dbversion FROM cv_settings ORDER BY rowid LIMIT 1"_s);
    return query.step() ? version_value(query) : std::nullopt;
}

FileKind classify(Database& db)
{
    // The first real read: a file that is not SQLite fails here with NotADb.
    Statement query = db.prepare(u"SELECT name FROM sqlite_master WHERE type = 'table'"_s);
    QStringList tables;
    while (query.step()) {
        tables.append(query.text(0).value_or(QString()));
    }
    if (has_version_column(db)) {
        return FileKind::OldLayout;
    }
    bool all_global = true;
    for (const Table& table : kGlobalTables) {
        all_global = all_global && table_present(tables, table.name);
    }
    if (all_global) {
        return FileKind::Global;
    }
    if (table_present(tables, "cv_settings") && table_present(tables, "cv_presets") &&
        !table_present(tables, "cv_messages")) {
        return FileKind::User;
    }
    return FileKind::Foreign;
}

std::optional<int> stored_version(Database& db)
{
    if (!db.table_exists(u"cv_settings"_s)) {
        return std::nullopt;
    }
    const QStringList columns = db.column_names(u"cv_settings"_s);
    if (columns.contains(u"cv_dbversion"_s)) {
        return version_column_value(db);
    }
    for (const char* needed : {"cv_category", "cv_name", "cv_value"}) {
        if (!columns.contains(QString::fromLatin1(needed), Qt::CaseInsensitive)) {
            return std::nullopt;
        }
    }
    Statement query = db.prepare(u"SELECT cv_value FROM cv_settings WHERE cv_category = ?1 AND cv_name = ?2 "
                                 u"ORDER BY rowid"_s);
    query.bind(1, u"database"_s).bind(2, u"version"_s);
    // Duplicate rows are harmless: the last one wins, as when the settings are loaded.
    std::optional<int> version;
    bool found = false;
    while (query.step()) {
        version = version_value(query);
        found = true;
    }
    return found ? version : std::nullopt;
}

} // namespace cvd::store
