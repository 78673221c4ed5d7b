#include "support/legacy_databases.h"

#include "store/database.h"
#include "store/schema.h"

#include <span>

using namespace Qt::StringLiterals;

namespace cvd::testing {

namespace {

const char* const kVersion300Tables[] = {
    ("CREATE TABLE cv_messages (cv_recipient TEXT(40) COLLATE NOCASE, cv_pin TEXT(40) COLLATE NOCASE, "
     "cv_message TEXT COLLATE NOCASE, cv_carrier TEXT(40) COLLATE NOCASE, cv_date_time_requested TEXT, "
     "cv_date_time_sent TEXT, cv_from TEXT(80) COLLATE NOCASE, cv_sent INTEGER, cv_error INTEGER, "
     "cv_scheduled INTEGER, cv_repeat_interval INTEGER, cv_repeat_stop TEXT, "
     "cv_message_id INTEGER PRIMARY KEY AUTOINCREMENT, cv_retries INTEGER, cv_last_try TEXT, "
     "cv_transaction INTEGER, cv_trustline_index INTEGER)"),
    ("CREATE TABLE cv_recipients (cv_name TEXT(40) COLLATE NOCASE, cv_full_name TEXT(40) COLLATE NOCASE, "
     "cv_id TEXT(80) COLLATE NOCASE, cv_carrier TEXT(40) COLLATE NOCASE, cv_maxchars INTEGER, cv_alpha INTEGER, "
     "cv_on_call INTEGER, cv_ad_hoc INTEGER, cv_drop_control INTEGER, cv_group INTEGER, cv_SendSubject INTEGER, "
     "cv_trustline INTEGER, cv_trustline_index INTEGER, cv_notify_only INTEGER, "
     "cv_notify_code TEXT(20) COLLATE NOCASE, cv_remove_from INTEGER)"),
    ("CREATE TABLE cv_carriers (cv_name TEXT(40) COLLATE NOCASE, cv_phone_number TEXT(80) COLLATE NOCASE, "
     "cv_modem_settings TEXT(15) COLLATE NOCASE, cv_maxchars INTEGER, cv_init_string TEXT(80) COLLATE NOCASE, "
     "cv_retries INTEGER, cv_message_limit INTEGER, cv_dial_type TEXT(40) COLLATE NOCASE, "
     "cv_password TEXT(20) COLLATE NOCASE, cv_pulse INTEGER)"),
    ("CREATE TABLE cv_settings (cv_dbversion INTEGER, cv_retries INTEGER, cv_retry_interval INTEGER, "
     "cv_log_to_disk INTEGER, cv_log_detail INTEGER, cv_purge_after INTEGER, cv_archive_logs INTEGER, "
     "cv_log_length INTEGER, cv_dial_prefix TEXT(20) COLLATE NOCASE, cv_unique INTEGER, cv_port INTEGER, "
     "cv_domain TEXT(80) COLLATE NOCASE, cv_dns1 TEXT(15) COLLATE NOCASE, cv_dns2 TEXT(15) COLLATE NOCASE, "
     "cv_relay_mail INTEGER, cv_smtp_relay TEXT(80) COLLATE NOCASE, cv_remove_from INTEGER, "
     "cv_admin_password TEXT(40) COLLATE NOCASE, cv_super_password TEXT(40) COLLATE NOCASE, "
     "cv_user_password TEXT(40) COLLATE NOCASE)"),
    "CREATE TABLE cv_groups (cv_group TEXT(40) COLLATE NOCASE, cv_recipient TEXT(40) COLLATE NOCASE)",
    ("CREATE TABLE cv_oncalltable (cv_group TEXT(40) COLLATE NOCASE, cv_recipient TEXT(40) COLLATE NOCASE, "
     "cv_start_day INTEGER, cv_start_time TEXT, cv_stop_day INTEGER, cv_stop_time TEXT)"),
    "CREATE INDEX cv_carrier_index ON cv_messages (cv_carrier)",
    "CREATE INDEX cv_message_id_index ON cv_messages (cv_message_id)",
    "CREATE INDEX sent_index ON cv_messages (cv_sent)",
    "CREATE INDEX cv_scheduled_index ON cv_messages (cv_scheduled)",
    "CREATE INDEX cv_error_index ON cv_messages (cv_error)",
    "CREATE INDEX cv_carriers_name_index ON cv_carriers (cv_name)",
    "CREATE INDEX cv_group_index ON cv_groups (cv_group)",
    "CREATE INDEX cv_name_index ON cv_recipients (cv_name)",
    "CREATE INDEX oncalltable_index ON cv_oncalltable (cv_group)",
};

// From the current layout back to 500: the priorities go, cv_pulse and the flag indexes come back.
const char* const kBackTo500[] = {
    "DROP INDEX cv_priority_index",
    "DROP INDEX cv_cpriority_index",
    "DROP INDEX cv_transaction_index",
    "DROP INDEX cv_due_index",
    "ALTER TABLE cv_messages DROP COLUMN cv_priority",
    "ALTER TABLE cv_recipients DROP COLUMN cv_priority",
    "ALTER TABLE cv_carriers DROP COLUMN cv_priority",
    "ALTER TABLE cv_carriers ADD COLUMN cv_pulse INTEGER",
    "CREATE INDEX sent_index ON cv_messages (cv_sent)",
    "CREATE INDEX cv_scheduled_index ON cv_messages (cv_scheduled)",
    "CREATE INDEX cv_error_index ON cv_messages (cv_error)",
    "UPDATE cv_settings SET cv_value = '500' WHERE cv_category = 'database' AND cv_name = 'version'",
};

void run_all(store::Database& db, std::span<const char* const> statements)
{
    store::Transaction transaction(db);
    for (const char* sql : statements) {
        db.exec(QString::fromLatin1(sql));
    }
    transaction.commit();
}

} // namespace

void make_version300_database(const QString& path, int version)
{
    store::Database db = store::Database::open(path, store::Database::OpenMode::CreateIfMissing);
    run_all(db, kVersion300Tables);
    store::Statement insert = db.prepare(u"INSERT INTO cv_settings (cv_dbversion, cv_unique) VALUES (?1, 1)"_s);
    insert.bind(1, version);
    insert.exec();
}

void make_version500_database(const QString& path)
{
    store::create_global_database(path);
    store::Database db = store::Database::open(path);
    run_all(db, kBackTo500);
    db.exec(u"PRAGMA journal_mode=DELETE"_s);
}

QStringList dump_database(const QString& path)
{
    store::Database db = store::Database::open(path, store::Database::OpenMode::ReadOnly);
    QStringList lines;
    QStringList tables;
    store::Statement schema =
        db.prepare(u"SELECT type, name, sql FROM sqlite_master WHERE name NOT LIKE 'sqlite%' ORDER BY type, name"_s);
    while (schema.step()) {
        lines.append(schema.text(0).value_or(QString()) + u' ' + schema.text(2).value_or(QString()));
        if (schema.text(0) == u"table"_s) {
            tables.append(schema.text(1).value_or(QString()));
        }
    }
    for (const QString& table : tables) {
        // The names come from the file's own catalogue.
        store::Statement rows = db.prepare(u"SELECT * FROM \""_s + table + u"\" ORDER BY rowid"_s);
        while (rows.step()) {
            QStringList values;
            for (int column = 0; column < rows.column_count(); ++column) {
                values.append(rows.text(column).value_or(u"<null>"_s));
            }
            lines.append(table + u": "_s + values.join(u" | "_s));
        }
    }
    return lines;
}

} // namespace cvd::testing
