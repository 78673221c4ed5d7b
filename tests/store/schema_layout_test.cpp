#include "store/database.h"
#include "store/schema.h"
#include "store_test_support.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::store {
namespace {

using testing::query_rows;
using testing::query_value;
using testing::TempFolder;

struct ExpectedColumn
{
    QString name;
    QChar kind; // T text of a width, M memo, B boolean, L long, I integer, D date, A auto number
    QString declared_type;
};

struct ExpectedTable
{
    QString name;
    QList<ExpectedColumn> columns;
};

// A table's columns as "name:kind[width] ...", written out from the table layouts column by column; not taken
// from the code under test.
ExpectedTable table(const QString& name, const QString& layout)
{
    ExpectedTable table{name, {}};
    for (const QString& column : layout.split(u' ', Qt::SkipEmptyParts)) {
        const QString kind = column.section(u':', 1);
        const QString type = kind == u"M"_s || kind == u"D"_s ? u"TEXT"_s : u"INTEGER"_s;
        table.columns.append(
            {column.section(u':', 0, 0), kind.front(), kind.front() == u'T' ? u"TEXT(%1)"_s.arg(kind.mid(1)) : type});
    }
    return table;
}

const ExpectedTable kSettings = table(u"cv_settings"_s, u"cv_id:A cv_category:T40 cv_name:T40 cv_value:T255"_s);
const ExpectedTable kPresets =
    table(u"cv_presets"_s, u"cv_id:A cv_index:L cv_description:T100 cv_recipient:T40 cv_message:T255"_s);
const QList<ExpectedTable> kGlobalTables = {
    table(u"cv_messages"_s,
          u"cv_recipient:T40 cv_pin:T40 cv_message:M cv_carrier:T40 cv_date_time_requested:D cv_date_time_sent:D "
          "cv_from:T80 cv_sent:B cv_error:B cv_scheduled:B cv_repeat_interval:L cv_repeat_stop:D cv_message_id:A "
          "cv_retries:I cv_last_try:D cv_transaction:L cv_priority:L"_s),
    table(u"cv_recipients"_s,
          u"cv_name:T40 cv_full_name:T40 cv_id:T80 cv_carrier:T40 cv_maxchars:I cv_alpha:B cv_on_call:B cv_ad_hoc:B "
          "cv_drop_control:B cv_group:B cv_SendSubject:B cv_extra1:T80 cv_extra2:T80 cv_remove_from:B cv_priority:L"_s),
    table(u"cv_carriers"_s,
          u"cv_name:T40 cv_phone_number:T80 cv_modem_settings:T15 cv_maxchars:I cv_init_string:T80 cv_retries:I "
          "cv_message_limit:I cv_dial_type:T40 cv_auth_type:I cv_auth_user:T80 cv_auth_pass:T40 cv_relay_mail:B "
          "cv_relay_server:T80 cv_priority:L"_s),
    kSettings,
    table(u"cv_counters"_s, u"cv_id:A cv_unique:L"_s),
    table(u"cv_groups"_s, u"cv_group:T40 cv_recipient:T40"_s),
    table(u"cv_oncalltable"_s,
          u"cv_group:T40 cv_recipient:T40 cv_start_day:I cv_start_time:D cv_stop_day:I cv_stop_time:D"_s),
    kPresets,
    // The intake's own record of the drop files it is taking, after the old layout.
    table(u"cv_intake_files"_s, u"cv_path:M"_s),
};
const QList<ExpectedTable> kUserTables = {kSettings, kPresets};

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
    const QList<ExpectedTable>& tables() const { return global() ? kGlobalTables : kUserTables; }

    TempFolder folder;
    QString path;
    Database db;
};

// Each column as "name type", marked when it is the key, not null or has a default.
TEST_P(SchemaLayout, TablesAndColumnsAreExactlyTheOldLayoutInItsOrder)
{
    QStringList expected_tables;
    for (const ExpectedTable& table : tables()) {
        expected_tables.append(table.name);
        QStringList expected;
        for (const ExpectedColumn& column : table.columns) {
            expected.append(column.name + u' ' + column.declared_type + (column.kind == u'A' ? u" key"_s : QString()));
        }
        QStringList actual;
        for (const QStringList& row : query_rows(
                 db, u"SELECT name || ' ' || type || iif(pk, ' key', '') || iif(\"notnull\", ' not null', '') || "
                     "iif(dflt_value IS NULL, '', ' default') FROM pragma_table_info('%1')"_s.arg(table.name))) {
            actual.append(row.front());
        }
        EXPECT_EQ(actual, expected) << table.name.toStdString();
    }
    QStringList actual_tables;
    for (const QStringList& row : query_rows(
             db, u"SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%' ORDER BY rowid"_s)) {
        actual_tables.append(row.front());
    }
    EXPECT_EQ(actual_tables, expected_tables);
}

// Each kind stores what it should: text that compares without case, booleans as -1/0 integers, dates as
// text, numbers as integers (integer affinity turns numeric text into a number), and auto numbers that are
// never used twice.
TEST_P(SchemaLayout, EachColumnStoresItsKindAsTheOldFilesDid)
{
    Transaction transaction(db);
    for (const ExpectedTable& table : tables()) {
        for (const ExpectedColumn& column : table.columns) {
            SCOPED_TRACE(QString(table.name + u'.' + column.name).toStdString());
            if (column.kind == u'A') {
                db.exec(u"INSERT INTO "_s + table.name + u" DEFAULT VALUES"_s);
                const qint64 first = db.last_insert_id();
                db.exec(u"DELETE FROM "_s + table.name + u" WHERE rowid = "_s + QString::number(first));
                db.exec(u"INSERT INTO "_s + table.name + u" DEFAULT VALUES"_s);
                EXPECT_EQ(db.last_insert_id(), first + 1) << "a freed number was handed out again";
                continue;
            }
            const bool text = column.kind == u'T' || column.kind == u'M';
            Statement insert = db.prepare(u"INSERT INTO "_s + table.name + u" ("_s + column.name + u") VALUES (?1)"_s);
            if (column.kind == u'B') {
                insert.bind_bool(1, true);
            } else if (column.kind == u'D') {
                insert.bind(1, QDateTime(QDate(2003, 4, 5), QTime(6, 7, 8)));
            } else {
                insert.bind(1, text ? u"bob"_s : u"0012"_s);
            }
            insert.exec();
            const QString stored = query_value(db, u"SELECT typeof(%1) || '|' || %1 || '|' || (%1 = 'BOB') FROM %2 "
                                                   "WHERE rowid = %3"_s.arg(column.name, table.name)
                                                       .arg(db.last_insert_id()));
            const QString expected = text                  ? u"text|bob|1"_s
                                     : column.kind == u'B' ? u"integer|-1|0"_s
                                     : column.kind == u'D' ? u"text|2003-04-05 06:07:08|0"_s
                                                           : u"integer|12|0"_s;
            EXPECT_EQ(stored, expected);
        }
    }
}

// Each index as "name table(columns)", marked when partial or unique; none may be unique.
TEST_P(SchemaLayout, IndexesServeTheQueriesAndNoneIsUnique)
{
    QStringList expected =
        u"cv_settings_id_index cv_settings(cv_id);cv_settings_category_index cv_settings(cv_category);"
        "cv_presets_id_index cv_presets(cv_id)"_s.split(u';');
    if (global()) {
        expected += u"cv_carrier_index cv_messages(cv_carrier);cv_message_id_index cv_messages(cv_message_id);"
                    "cv_priority_index cv_messages(cv_priority);cv_transaction_index cv_messages(cv_transaction);"
                    "cv_due_index cv_messages(cv_scheduled,cv_date_time_requested) partial;"
                    "cv_requested_index cv_messages(cv_date_time_requested,cv_date_time_sent);"
                    "cv_name_index cv_recipients(cv_name);cv_carriers_name_index cv_carriers(cv_name);"
                    "cv_cpriority_index cv_carriers(cv_priority);cv_counters_id_index cv_counters(cv_id);"
                    "cv_group_index cv_groups(cv_group);oncalltable_index cv_oncalltable(cv_group)"_s.split(u';');
    }
    expected.sort();
    QStringList actual;
    for (const QStringList& row : query_rows(
             db, u"SELECT m.name || ' ' || m.tbl_name || '(' || (SELECT group_concat(name) FROM (SELECT name FROM "
                 "pragma_index_info(m.name) ORDER BY seqno)) || ')' || iif(l.partial, ' partial', '') || "
                 "iif(l.\"unique\", ' unique', '') FROM sqlite_master m JOIN pragma_index_list(m.tbl_name) l ON "
                 "l.name = m.name WHERE m.type = 'index' ORDER BY 1"_s)) {
        actual.append(row.front());
    }
    EXPECT_EQ(actual, expected);
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
