#include "store/database.h"
#include "store/schema.h"
#include "store_test_support.h"

#include <QMap>
#include <gtest/gtest.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace cvd::store {
namespace {

using testing::query_rows;
using testing::query_value;
using testing::TempFolder;

// The column kinds of the old files.
enum class Kind { Text, Memo, Boolean, Long, Integer, Date, Auto };

struct ExpectedColumn
{
    QString name;
    Kind kind;
    int width = 0; // the declared width of a text column
};

struct ExpectedTable
{
    QString name;
    std::vector<ExpectedColumn> columns;
};

// Written out from the table layouts, column by column; not taken from the code under test.
const ExpectedTable kMessages{u"cv_messages"_s,
                              {{u"cv_recipient"_s, Kind::Text, 40},
                               {u"cv_pin"_s, Kind::Text, 40},
                               {u"cv_message"_s, Kind::Memo},
                               {u"cv_carrier"_s, Kind::Text, 40},
                               {u"cv_date_time_requested"_s, Kind::Date},
                               {u"cv_date_time_sent"_s, Kind::Date},
                               {u"cv_from"_s, Kind::Text, 80},
                               {u"cv_sent"_s, Kind::Boolean},
                               {u"cv_error"_s, Kind::Boolean},
                               {u"cv_scheduled"_s, Kind::Boolean},
                               {u"cv_repeat_interval"_s, Kind::Long},
                               {u"cv_repeat_stop"_s, Kind::Date},
                               {u"cv_message_id"_s, Kind::Auto},
                               {u"cv_retries"_s, Kind::Integer},
                               {u"cv_last_try"_s, Kind::Date},
                               {u"cv_transaction"_s, Kind::Long},
                               {u"cv_priority"_s, Kind::Long}}};
const ExpectedTable kRecipients{u"cv_recipients"_s,
                                {{u"cv_name"_s, Kind::Text, 40},
                                 {u"cv_full_name"_s, Kind::Text, 40},
                                 {u"cv_id"_s, Kind::Text, 80},
                                 {u"cv_carrier"_s, Kind::Text, 40},
                                 {u"cv_maxchars"_s, Kind::Integer},
                                 {u"cv_alpha"_s, Kind::Boolean},
                                 {u"cv_on_call"_s, Kind::Boolean},
                                 {u"cv_ad_hoc"_s, Kind::Boolean},
                                 {u"cv_drop_control"_s, Kind::Boolean},
                                 {u"cv_group"_s, Kind::Boolean},
                                 {u"cv_SendSubject"_s, Kind::Boolean},
                                 {u"cv_extra1"_s, Kind::Text, 80},
                                 {u"cv_extra2"_s, Kind::Text, 80},
                                 {u"cv_remove_from"_s, Kind::Boolean},
                                 {u"cv_priority"_s, Kind::Long}}};
const ExpectedTable kCarriers{u"cv_carriers"_s,
                              {{u"cv_name"_s, Kind::Text, 40},
                               {u"cv_phone_number"_s, Kind::Text, 80},
                               {u"cv_modem_settings"_s, Kind::Text, 15},
                               {u"cv_maxchars"_s, Kind::Integer},
                               {u"cv_init_string"_s, Kind::Text, 80},
                               {u"cv_retries"_s, Kind::Integer},
                               {u"cv_message_limit"_s, Kind::Integer},
                               {u"cv_dial_type"_s, Kind::Text, 40},
                               {u"cv_auth_type"_s, Kind::Integer},
                               {u"cv_auth_user"_s, Kind::Text, 80},
                               {u"cv_auth_pass"_s, Kind::Text, 40},
                               {u"cv_relay_mail"_s, Kind::Boolean},
                               {u"cv_relay_server"_s, Kind::Text, 80},
                               {u"cv_priority"_s, Kind::Long}}};
const ExpectedTable kSettings{u"cv_settings"_s,
                              {{u"cv_id"_s, Kind::Auto},
                               {u"cv_category"_s, Kind::Text, 40},
                               {u"cv_name"_s, Kind::Text, 40},
                               {u"cv_value"_s, Kind::Text, 255}}};
const ExpectedTable kCounters{u"cv_counters"_s, {{u"cv_id"_s, Kind::Auto}, {u"cv_unique"_s, Kind::Long}}};
const ExpectedTable kGroups{u"cv_groups"_s, {{u"cv_group"_s, Kind::Text, 40}, {u"cv_recipient"_s, Kind::Text, 40}}};
const ExpectedTable kOnCall{u"cv_oncalltable"_s,
                            {{u"cv_group"_s, Kind::Text, 40},
                             {u"cv_recipient"_s, Kind::Text, 40},
                             {u"cv_start_day"_s, Kind::Integer},
                             {u"cv_start_time"_s, Kind::Date},
                             {u"cv_stop_day"_s, Kind::Integer},
                             {u"cv_stop_time"_s, Kind::Date}}};
const ExpectedTable kPresets{u"cv_presets"_s,
                             {{u"cv_id"_s, Kind::Auto},
                              {u"cv_index"_s, Kind::Long},
                              {u"cv_description"_s, Kind::Text, 100},
                              {u"cv_recipient"_s, Kind::Text, 40},
                              {u"cv_message"_s, Kind::Text, 255}}};

// The intake's own record of the drop files it is taking, after the old layout.
const ExpectedTable kIntakeFiles{u"cv_intake_files"_s, {{u"cv_path"_s, Kind::Memo}}};

const std::vector<ExpectedTable> kGlobalTables = {kMessages, kRecipients, kCarriers, kSettings,   kCounters,
                                                  kGroups,   kOnCall,     kPresets,  kIntakeFiles};
const std::vector<ExpectedTable> kUserTables = {kSettings, kPresets};

QString declared_type(const ExpectedColumn& column)
{
    if (column.kind == Kind::Text) {
        return u"TEXT(%1)"_s.arg(column.width);
    }
    return column.kind == Kind::Memo || column.kind == Kind::Date ? u"TEXT"_s : u"INTEGER"_s;
}

class SchemaLayout : public ::testing::TestWithParam<bool>
{
protected:
    void SetUp() override
    {
        path = folder.path(u"cvd.mdb"_s);
        if (global()) {
            create_global_database(path);
        } else {
            create_user_database(path);
        }
        db = Database::open(path);
    }
    bool global() const { return GetParam(); }
    const std::vector<ExpectedTable>& tables() const { return global() ? kGlobalTables : kUserTables; }

    TempFolder folder;
    QString path;
    Database db;
};

TEST_P(SchemaLayout, TablesAndColumnsAreExactlyTheOldLayoutInItsOrder)
{
    QStringList expected_tables;
    for (const ExpectedTable& table : tables()) {
        expected_tables.append(table.name);
    }
    QStringList actual_tables;
    for (const QStringList& row : query_rows(
             db, u"SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%' ORDER BY rowid"_s)) {
        actual_tables.append(row.front());
    }
    EXPECT_EQ(actual_tables, expected_tables);

    for (const ExpectedTable& table : tables()) {
        SCOPED_TRACE(table.name.toStdString());
        Statement info = db.prepare(u"SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info(?1)"_s);
        info.bind(1, table.name);
        for (const ExpectedColumn& column : table.columns) {
            ASSERT_TRUE(info.step()) << "missing " << column.name.toStdString();
            EXPECT_EQ(info.text(0), column.name);
            EXPECT_EQ(info.text(1), declared_type(column)) << column.name.toStdString();
            EXPECT_EQ(info.integer(2), 0) << column.name.toStdString() << " must allow null";
            EXPECT_TRUE(info.is_null(3)) << column.name.toStdString() << " must have no default";
            EXPECT_EQ(info.integer(4), column.kind == Kind::Auto ? 1 : 0) << column.name.toStdString();
        }
        EXPECT_FALSE(info.step()) << "extra column " << info.text(0).value_or(QString()).toStdString();
    }
}

// Each kind stores what it should: text that compares without case, booleans as -1/0 integers, dates as
// text, numbers as integers, and auto numbers that are never used twice.
TEST_P(SchemaLayout, EachColumnStoresItsKindAsTheOldFilesDid)
{
    Transaction transaction(db);
    for (const ExpectedTable& table : tables()) {
        for (const ExpectedColumn& column : table.columns) {
            SCOPED_TRACE(QString(table.name + u'.' + column.name).toStdString());
            const QString where = u" FROM "_s + table.name + u" WHERE rowid = ?1"_s;
            if (column.kind == Kind::Auto) {
                db.exec(u"INSERT INTO "_s + table.name + u" DEFAULT VALUES"_s);
                const qint64 first = db.last_insert_id();
                db.exec(u"DELETE FROM "_s + table.name + u" WHERE rowid = "_s + QString::number(first));
                db.exec(u"INSERT INTO "_s + table.name + u" DEFAULT VALUES"_s);
                EXPECT_EQ(db.last_insert_id(), first + 1) << "a freed number was handed out again";
                continue;
            }
            Statement insert = db.prepare(u"INSERT INTO "_s + table.name + u" ("_s + column.name + u") VALUES (?1)"_s);
            switch (column.kind) {
            case Kind::Text:
            case Kind::Memo:
                insert.bind(1, u"bob"_s);
                break;
            case Kind::Boolean:
                insert.bind_bool(1, true);
                break;
            case Kind::Long:
            case Kind::Integer:
                insert.bind(1, u"0012"_s); // integer affinity turns numeric text into a number
                break;
            case Kind::Date:
                insert.bind(1, QDateTime(QDate(2003, 4, 5), QTime(6, 7, 8)));
                break;
            case Kind::Auto:
                break;
            }
            insert.exec();
            const qint64 row = db.last_insert_id();
            Statement check = db.prepare(u"SELECT typeof("_s + column.name + u"), "_s + column.name + u", "_s +
                                         column.name + u" = 'BOB'"_s + where);
            check.bind(1, row);
            ASSERT_TRUE(check.step());
            const QString type = check.text(0).value_or(QString());
            const QString value = check.text(1).value_or(QString());
            switch (column.kind) {
            case Kind::Text:
            case Kind::Memo:
                EXPECT_EQ(check.integer(2), 1) << "text must compare without regard to case";
                break;
            case Kind::Boolean:
                EXPECT_EQ(type, u"integer"_s);
                EXPECT_EQ(value, u"-1"_s);
                break;
            case Kind::Long:
            case Kind::Integer:
                EXPECT_EQ(type, u"integer"_s);
                EXPECT_EQ(value, u"12"_s);
                break;
            case Kind::Date:
                EXPECT_EQ(type, u"text"_s);
                EXPECT_EQ(value, u"2003-04-05 06:07:08"_s);
                break;
            case Kind::Auto:
                break;
            }
        }
    }
}

struct ExpectedIndex
{
    QString table;
    QString columns;
    bool partial;
};

TEST_P(SchemaLayout, IndexesServeTheQueriesAndNoneIsUnique)
{
    QMap<QString, ExpectedIndex> expected = {
        {u"cv_settings_id_index"_s, {u"cv_settings"_s, u"cv_id"_s, false}},
        {u"cv_settings_category_index"_s, {u"cv_settings"_s, u"cv_category"_s, false}},
        {u"cv_presets_id_index"_s, {u"cv_presets"_s, u"cv_id"_s, false}},
    };
    if (global()) {
        expected.insert({
            {u"cv_carrier_index"_s, {u"cv_messages"_s, u"cv_carrier"_s, false}},
            {u"cv_message_id_index"_s, {u"cv_messages"_s, u"cv_message_id"_s, false}},
            {u"cv_priority_index"_s, {u"cv_messages"_s, u"cv_priority"_s, false}},
            {u"cv_transaction_index"_s, {u"cv_messages"_s, u"cv_transaction"_s, false}},
            {u"cv_due_index"_s, {u"cv_messages"_s, u"cv_scheduled,cv_date_time_requested"_s, true}},
            {u"cv_name_index"_s, {u"cv_recipients"_s, u"cv_name"_s, false}},
            {u"cv_carriers_name_index"_s, {u"cv_carriers"_s, u"cv_name"_s, false}},
            {u"cv_cpriority_index"_s, {u"cv_carriers"_s, u"cv_priority"_s, false}},
            {u"cv_counters_id_index"_s, {u"cv_counters"_s, u"cv_id"_s, false}},
            {u"cv_group_index"_s, {u"cv_groups"_s, u"cv_group"_s, false}},
            {u"oncalltable_index"_s, {u"cv_oncalltable"_s, u"cv_group"_s, false}},
        });
    }
    QMap<QString, ExpectedIndex> actual;
    for (const QStringList& row : query_rows(db, u"SELECT name, tbl_name FROM sqlite_master WHERE type = 'index'"_s)) {
        const QString& name = row[0];
        Statement columns = db.prepare(u"SELECT group_concat(name) FROM "
                                       u"(SELECT name FROM pragma_index_info(?1) ORDER BY seqno)"_s);
        columns.bind(1, name);
        ASSERT_TRUE(columns.step());
        Statement flags = db.prepare(u"SELECT \"unique\", partial FROM pragma_index_list(?1) WHERE name = ?2"_s);
        flags.bind(1, row[1]).bind(2, name);
        ASSERT_TRUE(flags.step());
        EXPECT_EQ(flags.integer(0), 0) << name.toStdString() << " must not be unique";
        actual.insert(name, {row[1], columns.text(0).value_or(QString()), flags.flag(1)});
    }
    EXPECT_EQ(actual.keys(), expected.keys());
    for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
        SCOPED_TRACE(it.key().toStdString());
        const ExpectedIndex found = actual.value(it.key());
        EXPECT_EQ(found.table, it->table);
        EXPECT_EQ(found.columns, it->columns);
        EXPECT_EQ(found.partial, it->partial);
    }
    for (const QString& flag_index : {u"sent_index"_s, u"cv_scheduled_index"_s, u"cv_error_index"_s}) {
        EXPECT_FALSE(actual.contains(flag_index)) << flag_index.toStdString();
    }
    if (!global()) {
        return;
    }
    // The due query, with its condition written as a literal, reaches the partial index; the lookup by
    // transaction number reaches its own.
    const QString due_plan =
        query_rows(db, u"EXPLAIN QUERY PLAN SELECT cv_message_id FROM cv_messages "
                       u"WHERE cv_scheduled = 0 AND cv_date_time_requested <= '2030-01-01 00:00:00' "
                       u"ORDER BY cv_date_time_requested"_s)
            .front()
            .back();
    EXPECT_TRUE(due_plan.contains(u"cv_due_index"_s)) << due_plan.toStdString();
    const QString transaction_plan =
        query_rows(db, u"EXPLAIN QUERY PLAN SELECT count(*) FROM cv_messages WHERE cv_transaction = 5"_s)
            .front()
            .back();
    EXPECT_TRUE(transaction_plan.contains(u"cv_transaction_index"_s)) << transaction_plan.toStdString();
}

INSTANTIATE_TEST_SUITE_P(BothDatabases, SchemaLayout, ::testing::Values(true, false),
                         [](const ::testing::TestParamInfo<bool>& info) { return info.param ? "Global" : "User"; });

} // namespace
} // namespace cvd::store
