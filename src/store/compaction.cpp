#include "store/compaction.h"

#include <QStringList>
#include <span>
#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace cvd::store {

namespace {

// Copies every page of `source` into `target` in one step. The target's pager writes them as one
// transaction through its journal, so a crash leaves the old content or the new, never a mix.
void copy_pages(Database& source, Database& target)
{
    sqlite3_backup* backup = sqlite3_backup_init(target.native_handle(), "main", source.native_handle(), "main");
    if (backup == nullptr) {
        throw Error(sqlite3_extended_errcode(target.native_handle()),
                    QString::fromUtf8(sqlite3_errmsg(target.native_handle())) + u" (copy back into "_s + target.path() +
                        u')');
    }
    const int rc = sqlite3_backup_step(backup, -1);
    const int finished = sqlite3_backup_finish(backup);
    if (rc != SQLITE_DONE || finished != SQLITE_OK) {
        const int code = rc != SQLITE_DONE ? rc : finished;
        throw Error(code, QString::fromUtf8(sqlite3_errstr(code)) + u" (copy back into "_s + target.path() + u')');
    }
}

} // namespace

void compact_file(const QString& path, const QString& scratch_path, int lock_wait_ms)
{
    Database db = Database::open(path, Database::OpenMode::Existing);
    db.set_busy_timeout(lock_wait_ms);
    // In exclusive locking mode the first transaction takes the file for good: it waits until every other
    // connection has closed it, and from then on nobody else gets in until this connection closes. Rows
    // committed elsewhere are therefore all in the file before the copy starts, and none can come after.
    db.exec(u"PRAGMA locking_mode = EXCLUSIVE"_s);
    db.exec(u"BEGIN EXCLUSIVE"_s);
    db.exec(u"COMMIT"_s);
    {
        Statement vacuum = db.prepare(u"VACUUM INTO ?1"_s);
        vacuum.bind(1, scratch_path);
        vacuum.exec();
    }
    Database compacted = Database::open(scratch_path, Database::OpenMode::ReadOnly);
    copy_pages(compacted, db);
    compacted.close();
    // Closing the last connection writes the new pages into the file and cuts it to its new length.
    db.close();
}

namespace {

// One repaired column: when `column` is null, `value` (an SQL literal, or ?1 for the time of the run) is
// stored into `target`, which is `column` itself unless given.
struct Fill
{
    const char* column;
    const char* value;
    const char* target = nullptr;

    QString written() const { return QString::fromLatin1(target ? target : column); }
};

struct Repair
{
    const char* table;
    std::span<const Fill> fills;
    const char* rows = nullptr; // a further condition on the rows, if any
    bool dated = false;         // whether a value is the time of the run, bound as ?1
};

constexpr Fill kMessageFills[] = {
    {"cv_recipient", "''"},
    {"cv_pin", "''"},
    {"cv_message", "''"},
    {"cv_carrier", "''"},
    {"cv_date_time_requested", "?1"},
    {"cv_from", "''"},
    {"cv_repeat_interval", "0"},
    {"cv_repeat_stop", "?1"},
    {"cv_retries", "0"},
    {"cv_last_try", "?1"},
    {"cv_transaction", "0"},
};

// A null cv_extra2 empties cv_extra1 and stays null itself; older versions did so and it is kept.
constexpr Fill kRecipientFills[] = {
    {"cv_name", "''"},
    {"cv_full_name", "''"},
    {"cv_id", "''"},
    {"cv_carrier", "''"},
    {"cv_maxchars", "240"},
    {"cv_extra1", "''"},
    {"cv_extra2", "''", "cv_extra1"},
};

constexpr Fill kCarrierFills[] = {
    {"cv_name", "''"},         {"cv_phone_number", "''"}, {"cv_modem_settings", "'1200,e,7,1'"},
    {"cv_maxchars", "240"},    {"cv_init_string", "''"},  {"cv_retries", "0"},
    {"cv_message_limit", "0"}, {"cv_dial_type", "'tap'"}, {"cv_auth_type", "0"},
    {"cv_auth_user", "''"},    {"cv_auth_pass", "''"},    {"cv_relay_server", "''"},
};

constexpr Fill kGroupFills[] = {
    {"cv_group", "''"},
    {"cv_recipient", "''"},
};

// A time of day is stored as a date on the zero day of the date system of the older files.
constexpr Fill kOnCallFills[] = {
    {"cv_group", "''"},    {"cv_recipient", "''"},
    {"cv_start_day", "0"}, {"cv_start_time", "'1899-12-30 08:00:00'"},
    {"cv_stop_day", "0"},  {"cv_stop_time", "'1899-12-30 22:00:00'"},
};

constexpr Fill kSettingFills[] = {
    {"cv_category", "''"},
    {"cv_name", "''"},
    {"cv_value", "''"},
};

constexpr Fill kPresetFills[] = {
    {"cv_description", "''"},
    {"cv_recipient", "''"},
    {"cv_message", "''"},
};

constexpr Repair kMessages{"cv_messages", kMessageFills, "cv_sent = 0", true};
constexpr Repair kRecipients{"cv_recipients", kRecipientFills};
constexpr Repair kCarriers{"cv_carriers", kCarrierFills};
constexpr Repair kGroups{"cv_groups", kGroupFills};
constexpr Repair kOnCall{"cv_oncalltable", kOnCallFills};
constexpr Repair kSettings{"cv_settings", kSettingFills};
constexpr Repair kPresets{"cv_presets", kPresetFills};

// "target = coalesce(target, value)", or, when other columns' nulls write into the same target, a CASE over
// all of them.
QString assignment(const Repair& repair, const QString& target)
{
    QStringList nulls;
    QString value;
    for (const Fill& fill : repair.fills) {
        if (fill.written() == target) {
            nulls.append(QString::fromLatin1(fill.column) + u" IS NULL"_s);
            value = QString::fromLatin1(fill.value);
        }
    }
    if (nulls.size() == 1) {
        return target + u" = coalesce("_s + target + u", "_s + value + u')';
    }
    return target + u" = CASE WHEN "_s + nulls.join(u" OR "_s) + u" THEN "_s + value + u" ELSE "_s + target + u" END"_s;
}

// The statement is put together from the fixed lists above only; no outside text ever gets into it.
QString repair_sql(const Repair& repair)
{
    QStringList targets;
    QStringList nulls;
    for (const Fill& fill : repair.fills) {
        if (!targets.contains(fill.written())) {
            targets.append(fill.written());
        }
        nulls.append(QString::fromLatin1(fill.column) + u" IS NULL"_s);
    }
    QStringList assignments;
    for (const QString& target : targets) {
        assignments.append(assignment(repair, target));
    }
    QString where = u'(' + nulls.join(u" OR "_s) + u')';
    if (repair.rows) {
        where = u'(' + QString::fromLatin1(repair.rows) + u") AND "_s + where;
    }
    return u"UPDATE "_s + QString::fromLatin1(repair.table) + u" SET "_s + assignments.join(u", "_s) + u" WHERE "_s +
           where;
}

void run_repair(Database& db, const Repair& repair, const QDateTime& now)
{
    if (!db.table_exists(QString::fromLatin1(repair.table))) {
        return;
    }
    Transaction transaction(db);
    Statement update = db.prepare(repair_sql(repair));
    if (repair.dated) {
        update.bind(1, now);
    }
    update.exec();
    transaction.commit();
}

} // namespace

void repair_nulls(Database& global_db, Database& user_db, const QDateTime& now)
{
    for (const Repair* repair : {&kMessages, &kRecipients, &kCarriers, &kGroups, &kOnCall}) {
        run_repair(global_db, *repair, now);
    }
    for (const Repair* repair : {&kSettings, &kPresets}) {
        run_repair(global_db, *repair, now);
        run_repair(user_db, *repair, now);
    }
}

} // namespace cvd::store
