#include "store/compaction.h"
#include "store/maintenance.h"
#include "store/schema.h"
#include "store_test_support.h"
#include "support/thin_history.h"
#include "support/writer_process.h"

#include <QFileInfo>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::store {
namespace {

using testing::query_rows;
using testing::query_value;

// Every message, so that a compacted file can be compared with the original row by row.
QList<QStringList> all_messages(const QString& path)
{
    Database db = Database::open(path, Database::OpenMode::ReadOnly);
    return query_rows(db, u"SELECT * FROM cv_messages ORDER BY cv_message_id"_s);
}

class CompactFile : public ::testing::Test
{
protected:
    // A global database in shared mode, as the program keeps it, with `rows` messages of which all but every
    // fourth are deleted again: a file mostly of free pages.
    void fill_and_thin_out(int rows)
    {
        create_global_database(path);
        Database db = Database::open(path);
        db.enable_wal();
        cvd::testing::add_thin_history(db, rows, 4, 0);
    }

    testing::TempFolder folder;
    const QString path = folder.path(u"cvd.mdb"_s);
    const QString scratch = folder.path(u"cvdtmp.mdb"_s);
};

TEST_F(CompactFile, ShrinksAFileOfDeletedRowsAndKeepsEveryRow)
{
    fill_and_thin_out(20000);
    const QList<QStringList> before = all_messages(path);
    const qint64 size_before = QFileInfo(path).size();

    compact_file(path, scratch, 1000);

    EXPECT_LT(QFileInfo(path).size(), size_before / 2);
    EXPECT_EQ(all_messages(path), before);
    EXPECT_EQ(before.size(), 5000);
    Database db = Database::open(path);
    EXPECT_EQ(integrity_check(db), QStringList{u"ok"_s});
    EXPECT_EQ(classify(db), FileKind::Global);
    EXPECT_EQ(stored_version(db), kDatabaseVersion);
    // Still in shared mode, and the scratch file stays for the next run to delete.
    EXPECT_EQ(query_value(db, u"PRAGMA journal_mode"_s), u"wal"_s);
    EXPECT_TRUE(QFileInfo::exists(scratch));
}

TEST_F(CompactFile, LosesNoRowThatAnotherProcessCommitsMeanwhile)
{
    fill_and_thin_out(20000);
    cvd::testing::WriterProcess writer(path, 2);
    ASSERT_TRUE(writer.started());
    ASSERT_TRUE(writer.wait_for(5, 30000));
    // Several compactions, each while the writer goes on; between them it gets some rows in.
    for (int round = 0; round < 3; ++round) {
        const qsizetype reported = writer.commits().size();
        ASSERT_NO_THROW(compact_file(path, folder.path(u"cvdtmp-%1.mdb"_s.arg(round)), 30000));
        ASSERT_TRUE(writer.wait_for(reported + 5, 30000));
    }
    ASSERT_TRUE(writer.stop());

    QList<QStringList> committed;
    for (const cvd::testing::WriterProcess::Commit& commit : writer.commits()) {
        committed.append({QString::number(commit.number)});
    }
    ASSERT_GE(committed.size(), 20);
    Database db = Database::open(path);
    EXPECT_EQ(integrity_check(db), QStringList{u"ok"_s});
    EXPECT_EQ(
        query_rows(db,
                   u"SELECT cv_transaction FROM cv_messages WHERE cv_recipient = 'writer' ORDER BY cv_transaction"_s),
        committed);
    EXPECT_EQ(query_value(db, u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'bob'"_s), u"5000"_s);
}

TEST_F(CompactFile, GivesUpWithBusyAndChangesNothingWhileAnotherConnectionKeepsTheFileOpen)
{
    fill_and_thin_out(2000);
    Database holder = Database::open(path);
    ASSERT_EQ(query_value(holder, u"SELECT count(*) FROM cv_messages"_s), u"500"_s);
    const QByteArray bytes = testing::read_bytes(path);

    try {
        compact_file(path, scratch, 100);
        ADD_FAILURE() << "the compaction went ahead although the file was in use";
    } catch (const Error& error) {
        EXPECT_EQ(error.primary_code(), codes::Busy) << error.what();
    }
    EXPECT_EQ(testing::read_bytes(path), bytes);
    EXPECT_FALSE(QFileInfo::exists(scratch));
    // The other connection did not notice a thing.
    EXPECT_EQ(query_value(holder, u"SELECT count(*) FROM cv_messages"_s), u"500"_s);

    holder.close();
    EXPECT_NO_THROW(compact_file(path, scratch, 100));
}

TEST_F(CompactFile, AMissingFileOrAScratchFileInTheWayFailsWithoutTouchingAnything)
{
    EXPECT_THROW(compact_file(path, scratch, 100), Error);
    EXPECT_TRUE(folder.entries().isEmpty()) << folder.entries().join(u' ').toStdString();

    fill_and_thin_out(2000);
    testing::write_bytes(scratch, "left over from an earlier run");
    const QList<QStringList> before = all_messages(path);
    const qint64 size_before = QFileInfo(path).size();

    EXPECT_THROW(compact_file(path, scratch, 100), Error);
    EXPECT_EQ(QFileInfo(path).size(), size_before);
    EXPECT_EQ(all_messages(path), before);
    EXPECT_EQ(testing::read_bytes(scratch), QByteArray("left over from an earlier run"));
}

// ---- the null repair ----

const QDateTime kNow(QDate(2026, 11, 23), QTime(9, 30, 0));
const QString kNowText = u"2026-11-23 09:30:00"_s;
const QString kNull = u"<null>"_s;

class RepairNulls : public ::testing::Test
{
protected:
    void SetUp() override
    {
        create_global_database(folder.path(u"global.mdb"_s));
        create_user_database(folder.path(u"user.mdb"_s));
        global = Database::open(folder.path(u"global.mdb"_s));
        user = Database::open(folder.path(u"user.mdb"_s));
        // Which rows the repair writes, whether it changes them or not.
        for (Database* db : {&global, &user}) {
            db->exec(u"CREATE TEMP TABLE written (tbl TEXT, id INTEGER)"_s);
            for (const QString& table : {u"cv_messages"_s, u"cv_recipients"_s, u"cv_carriers"_s, u"cv_groups"_s,
                                         u"cv_oncalltable"_s, u"cv_settings"_s, u"cv_presets"_s}) {
                if (db->table_exists(table)) {
                    // Fixed table names of this test only.
                    db->exec(u"CREATE TEMP TRIGGER written_"_s + table + u" AFTER UPDATE ON main."_s + table +
                             u" BEGIN INSERT INTO written VALUES ('"_s + table + u"', old.rowid); END"_s);
                }
            }
        }
    }

    QStringList row(Database& db, const QString& sql) { return query_rows(db, sql).value(0); }
    QString written(Database& db, const QString& table)
    {
        Statement select = db.prepare(u"SELECT group_concat(id, ',') FROM (SELECT id FROM written WHERE tbl = ?1 "
                                      "ORDER BY id)"_s);
        select.bind(1, table);
        return select.step() ? select.text(0).value_or(QString()) : QString();
    }

    testing::TempFolder folder;
    Database global;
    Database user;
};

// A row of nulls in each table gets exactly the defaults, column by column.
TEST_F(RepairNulls, ARowOfNullsGetsTheDefaultOfEveryListedColumn)
{
    global.exec(u"INSERT INTO cv_messages (cv_sent) VALUES (0)"_s);
    global.exec(u"INSERT INTO cv_recipients (cv_priority) VALUES (NULL)"_s);
    global.exec(u"INSERT INTO cv_carriers (cv_priority) VALUES (NULL)"_s);
    global.exec(u"INSERT INTO cv_groups (cv_group) VALUES (NULL)"_s);
    global.exec(u"INSERT INTO cv_oncalltable (cv_group) VALUES (NULL)"_s);
    for (Database* db : {&global, &user}) {
        db->exec(u"INSERT INTO cv_settings (cv_category) VALUES (NULL)"_s);
        db->exec(u"INSERT INTO cv_presets (cv_index) VALUES (101)"_s);
    }

    repair_nulls(global, user, kNow);

    // Whole rows in the order of the columns; the repair leaves cv_date_time_sent, the flags after cv_sent,
    // cv_priority, the recipients' switches and cv_relay_mail null.
    const std::pair<const char*, QStringList> cases[] = {
        {"cv_messages",
         {u""_s, u""_s, u""_s, u""_s, kNowText, kNull, u""_s, u"0"_s, kNull, kNull, u"0"_s, kNowText, u"1"_s, u"0"_s,
          kNowText, u"0"_s, kNull}},
        {"cv_recipients",
         {u""_s, u""_s, u""_s, u""_s, u"240"_s, kNull, kNull, kNull, kNull, kNull, kNull, u""_s, kNull, kNull, kNull}},
        {"cv_carriers",
         {u""_s, u""_s, u"1200,e,7,1"_s, u"240"_s, u""_s, u"0"_s, u"0"_s, u"tap"_s, u"0"_s, u""_s, u""_s, kNull, u""_s,
          kNull}},
        {"cv_groups", {u""_s, u""_s}},
        {"cv_oncalltable", {u""_s, u""_s, u"0"_s, u"1899-12-30 08:00:00"_s, u"0"_s, u"1899-12-30 22:00:00"_s}},
    };
    for (const auto& [table, expected] : cases) {
        EXPECT_EQ(row(global, u"SELECT * FROM "_s + QString::fromLatin1(table)), expected) << table;
    }
    // The settings and presets of both files, the newest row of each.
    for (Database* db : {&global, &user}) {
        EXPECT_EQ(row(*db, u"SELECT cv_category, cv_name, cv_value FROM cv_settings ORDER BY rowid DESC"_s),
                  (QStringList{u""_s, u""_s, u""_s}));
        EXPECT_EQ(row(*db, u"SELECT cv_index, cv_description, cv_recipient, cv_message FROM cv_presets ORDER BY rowid "
                           "DESC"_s),
                  (QStringList{u"101"_s, u""_s, u""_s, u""_s}));
    }
}

TEST_F(RepairNulls, ANullExtra2EmptiesExtra1AndStaysNull)
{
    global.exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_id, cv_carrier, cv_maxchars, cv_extra1, "
                "cv_extra2) VALUES ('a', 'A', '1', 'tapnet', 80, 'kept?', NULL), ('b', 'B', '2', 'tapnet', 80, NULL, "
                "'second'), ('c', 'C', '3', 'tapnet', 80, 'first', 'second')"_s);

    repair_nulls(global, user, kNow);

    EXPECT_EQ(
        query_rows(global, u"SELECT cv_name, cv_extra1, cv_extra2 FROM cv_recipients ORDER BY rowid"_s),
        (QList<QStringList>{{u"a"_s, u""_s, kNull}, {u"b"_s, u""_s, u"second"_s}, {u"c"_s, u"first"_s, u"second"_s}}));
    EXPECT_EQ(written(global, u"cv_recipients"_s), u"1,2"_s);
}

TEST_F(RepairNulls, OnlyUnsentMessagesWithANullAreWrittenAndValuesAreKept)
{
    global.exec(u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, "
                "cv_from, cv_sent, cv_error, cv_scheduled, cv_repeat_interval, cv_repeat_stop, cv_retries, "
                "cv_last_try, cv_transaction, cv_priority) VALUES "
                "('bob', '5551', 'complete', 'tapnet', '2026-11-01 08:00:00', 'ops', 0, 0, 0, 0, "
                "'2026-11-01 08:00:00', 0, '2026-11-01 08:00:00', 7, 1), "
                "('bob', NULL, 'no pin', 'tapnet', NULL, 'ops', 0, NULL, -1, 5, NULL, 2, NULL, 8, NULL), "
                "(NULL, NULL, 'sent', NULL, NULL, NULL, -1, 0, -1, NULL, NULL, NULL, NULL, NULL, NULL), "
                "(NULL, NULL, 'sent unknown', NULL, NULL, NULL, NULL, 0, -1, NULL, NULL, NULL, NULL, NULL, NULL)"_s);
    const QList<QStringList> sent_before =
        query_rows(global, u"SELECT * FROM cv_messages WHERE rowid IN (1, 3, 4) ORDER BY rowid"_s);

    repair_nulls(global, user, kNow);

    EXPECT_EQ(written(global, u"cv_messages"_s), u"2"_s);
    EXPECT_EQ(query_rows(global, u"SELECT * FROM cv_messages WHERE rowid IN (1, 3, 4) ORDER BY rowid"_s), sent_before);
    EXPECT_EQ(row(global, u"SELECT cv_recipient, cv_pin, cv_message, cv_date_time_requested, cv_error, cv_scheduled, "
                          "cv_repeat_interval, cv_repeat_stop, cv_retries, cv_last_try, cv_transaction, cv_priority "
                          "FROM cv_messages WHERE rowid = 2"_s),
              (QStringList{u"bob"_s, u""_s, u"no pin"_s, kNowText, kNull, u"-1"_s, u"5"_s, kNowText, u"2"_s, kNowText,
                           u"8"_s, kNull}));
}

TEST_F(RepairNulls, RowsWithoutANullAreNotWrittenAndTheDefaultRowsStayAsTheyAre)
{
    global.exec(u"INSERT INTO cv_carriers (cv_name, cv_phone_number, cv_modem_settings, cv_maxchars, cv_init_string, "
                "cv_retries, cv_message_limit, cv_dial_type, cv_auth_type, cv_auth_user, cv_auth_pass, cv_relay_mail, "
                "cv_relay_server, cv_priority) VALUES ('tapnet', '555', '9600,n,8,1', 80, 'ATZ', 3, 2, 'wctp', 1, 'u', "
                "'p', NULL, 'relay', NULL), ('old', '555', '9600,n,8,1', 80, 'ATZ', 3, 2, NULL, 1, 'u', 'p', 0, "
                "'relay', 4)"_s);
    const QList<QStringList> settings_before = query_rows(user, u"SELECT * FROM cv_settings ORDER BY rowid"_s);

    repair_nulls(global, user, kNow);

    EXPECT_EQ(written(global, u"cv_carriers"_s), u"2"_s);
    EXPECT_EQ(query_rows(global, u"SELECT cv_name, cv_dial_type, cv_modem_settings, cv_relay_mail, cv_priority FROM "
                                 "cv_carriers ORDER BY rowid"_s),
              (QList<QStringList>{{u"tapnet"_s, u"wctp"_s, u"9600,n,8,1"_s, kNull, kNull},
                                  {u"old"_s, u"tap"_s, u"9600,n,8,1"_s, u"0"_s, u"4"_s}}));
    // The settings and presets of new files have no nulls: nothing there is written.
    for (Database* db : {&global, &user}) {
        EXPECT_EQ(written(*db, u"cv_settings"_s), QString());
        EXPECT_EQ(written(*db, u"cv_presets"_s), QString());
    }
    EXPECT_EQ(query_rows(user, u"SELECT * FROM cv_settings ORDER BY rowid"_s), settings_before);
}

TEST_F(RepairNulls, TablesAFileLacksArePassedOver)
{
    Database bare = Database::open(folder.path(u"bare.mdb"_s), Database::OpenMode::CreateIfMissing);
    bare.exec(u"CREATE TABLE cv_settings (cv_id INTEGER PRIMARY KEY, cv_category TEXT, cv_name TEXT, cv_value TEXT)"_s);
    bare.exec(u"INSERT INTO cv_settings (cv_category, cv_name) VALUES ('display', 'x')"_s);

    EXPECT_NO_THROW(repair_nulls(bare, user, kNow));
    EXPECT_EQ(query_rows(bare, u"SELECT cv_category, cv_name, cv_value FROM cv_settings"_s),
              (QList<QStringList>{{u"display"_s, u"x"_s, u""_s}}));
}

} // namespace
} // namespace cvd::store
