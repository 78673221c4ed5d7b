#include "store/database.h"
#include "store/schema.h"
#include "store/unique.h"
#include "store_test_support.h"

#include <QFileInfo>
#include <functional>
#include <gtest/gtest.h>
#include <random>

using namespace Qt::StringLiterals;

namespace cvd::store {
namespace {

using testing::query_value;
using testing::read_bytes;
using testing::TempFolder;
using testing::write_bytes;

// The primary code of the Error that action throws, or -1 when it throws none.
int error_code_of(const std::function<void()>& action)
{
    try {
        action();
    } catch (const Error& error) {
        return error.primary_code();
    }
    return -1;
}

TEST(DatabaseOpen, ModesDecideWhetherAFileIsMadeOrWrittenAndReadingLeavesOurFileAsItWas)
{
    TempFolder folder;
    const QString missing = folder.path(u"missing.db"_s);
    EXPECT_EQ(error_code_of([&] { Database::open(missing); }), 14);
    EXPECT_EQ(error_code_of([&] { Database::open(missing, Database::OpenMode::ReadOnly); }), 14);
    EXPECT_FALSE(QFile::exists(missing));

    const QString made = folder.path(u"made.db"_s);
    {
        Database db = Database::open(made, Database::OpenMode::CreateIfMissing);
        EXPECT_TRUE(db.is_open());
        EXPECT_EQ(db.path(), made);
        db.exec(u"CREATE TABLE t (x)"_s);
    }
    EXPECT_TRUE(QFile::exists(made));

    Database reader = Database::open(made, Database::OpenMode::ReadOnly);
    EXPECT_EQ(query_value(reader, u"SELECT count(*) FROM t"_s), u"0"_s);
    EXPECT_EQ(error_code_of([&] { reader.exec(u"INSERT INTO t VALUES (1)"_s); }), 8); // SQLITE_READONLY

    // Opening and reading leave our file as it was; the write-ahead files beside it may stay (a read-only
    // connection cannot remove them).
    const QString path = folder.path(u"cvd.mdb"_s);
    create_global_database(path);
    const QByteArray before = read_bytes(path);
    for (auto mode : {Database::OpenMode::Existing, Database::OpenMode::ReadOnly}) {
        Database db = Database::open(path, mode);
        EXPECT_EQ(classify(db), FileKind::Global);
        EXPECT_EQ(stored_version(db), 501);
        EXPECT_EQ(db.column_names(u"cv_counters"_s), (QStringList{u"cv_id"_s, u"cv_unique"_s}));
    }
    EXPECT_EQ(read_bytes(path), before);
}

TEST(DatabaseOpen, AFileThatIsNotSqliteIsRefusedAnEmptyOneIsForeignAndBothAreLeftByteForByte)
{
    QByteArray random(8192, '\0');
    std::mt19937 generator(2024);
    for (char& byte : random) {
        byte = static_cast<char>(generator() & 0xff);
    }
    QByteArray text;
    for (int line = 0; line < 200; ++line) {
        text += "To: bob\nMessage: call the office, line " + QByteArray::number(line) + "\n";
    }
    const QByteArray contents[] = {random, text, QByteArrayLiteral("short")};
    for (const QByteArray& content : contents) {
        for (auto mode : {Database::OpenMode::Existing, Database::OpenMode::ReadOnly}) {
            TempFolder folder;
            const QString path = folder.path(u"cvd.mdb"_s);
            write_bytes(path, content);
            SCOPED_TRACE(content.left(12).toHex().toStdString());
            const int code = error_code_of([&] {
                Database db = Database::open(path, mode);
                EXPECT_EQ(error_code_of([&] { stored_version(db); }), 26);
                classify(db);
            });
            EXPECT_EQ(code, 26);
            EXPECT_EQ(read_bytes(path), content);
            EXPECT_EQ(folder.entries(), QStringList{u"cvd.mdb"_s});
        }
    }
    // An empty file opens as a database that is not ours, and stays empty.
    TempFolder folder;
    const QString path = folder.path(u"cvd.mdb"_s);
    write_bytes(path, {});
    {
        Database db = Database::open(path);
        EXPECT_EQ(classify(db), FileKind::Foreign);
        EXPECT_EQ(stored_version(db), std::nullopt);
    }
    EXPECT_EQ(QFileInfo(path).size(), 0);
    EXPECT_EQ(folder.entries(), QStringList{u"cvd.mdb"_s});
}

TEST(DatabaseLocking, AWriterBlockedByAnotherFailsWithBusy)
{
    TempFolder folder;
    const QString path = folder.path(u"cvd.mdb"_s);
    create_global_database(path);
    Database holder = Database::open(path);
    holder.enable_wal();
    Database other = Database::open(path);
    other.enable_wal();
    other.set_busy_timeout(0);
    {
        Transaction transaction(holder);
        EXPECT_TRUE(holder.in_transaction());
        holder.exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('g', 'held')"_s);

        EXPECT_EQ(error_code_of([&] { other.exec(u"INSERT INTO cv_groups (cv_group) VALUES ('x')"_s); }), 5);
        EXPECT_EQ(error_code_of([&] {
                      Statement update = other.prepare(u"UPDATE cv_settings SET cv_value = ?1"_s);
                      update.bind(1, u"v"_s).exec();
                  }),
                  5);
        EXPECT_EQ(error_code_of([&] { get_unique(other); }), 5);
        EXPECT_EQ(error_code_of([&] { Transaction second(other); }), 5);
        // Readers go on in write-ahead mode and do not see the uncommitted row.
        EXPECT_EQ(query_value(other, u"SELECT count(*) FROM cv_groups"_s), u"0"_s);
    } // not committed: rolled back
    EXPECT_FALSE(holder.in_transaction());
    EXPECT_EQ(query_value(other, u"SELECT count(*) FROM cv_groups"_s), u"0"_s);
    EXPECT_NO_THROW(other.exec(u"INSERT INTO cv_groups (cv_group) VALUES ('x')"_s));
}

TEST(DatabaseTransaction, CommittedRowsAreSeenByOthersAndRolledBackOnesAreNot)
{
    TempFolder folder;
    const QString path = folder.path(u"t.db"_s);
    Database db = Database::open(path, Database::OpenMode::CreateIfMissing);
    db.exec(u"CREATE TABLE t (x)"_s);
    {
        Transaction transaction(db);
        db.exec(u"INSERT INTO t VALUES (1)"_s);
        transaction.commit();
        transaction.commit(); // a second commit does nothing
        EXPECT_FALSE(db.in_transaction());
    }
    {
        Transaction transaction(db);
        db.exec(u"INSERT INTO t VALUES (2)"_s);
    }
    {
        // SQLite may end the transaction itself; leaving the scope must not fail then.
        Transaction transaction(db);
        db.exec(u"ROLLBACK"_s);
    }
    Database other = Database::open(path);
    EXPECT_EQ(query_value(other, u"SELECT group_concat(x) FROM t"_s), u"1"_s);
}

TEST(DatabaseWal, SwitchingToWriteAheadLoggingLastsAndIsChecked)
{
    TempFolder folder;
    const QString path = folder.path(u"w.db"_s);
    {
        Database db = Database::open(path, Database::OpenMode::CreateIfMissing);
        db.exec(u"CREATE TABLE t (x)"_s);
        EXPECT_EQ(query_value(db, u"PRAGMA journal_mode"_s), u"delete"_s);
        db.enable_wal();
        // How durable a commit is stays as the connection was opened: FULL unless asked otherwise.
        EXPECT_EQ(query_value(db, u"PRAGMA synchronous"_s), u"2"_s);
    }
    Database again = Database::open(path, Database::OpenMode::Existing, Database::Durability::Normal);
    EXPECT_EQ(query_value(again, u"PRAGMA journal_mode"_s), u"wal"_s);
    EXPECT_EQ(query_value(again, u"PRAGMA synchronous"_s), u"1"_s);

    // A database that cannot log ahead says so instead of going on in another mode.
    Database memory = Database::open(u":memory:"_s, Database::OpenMode::CreateIfMissing);
    EXPECT_EQ(error_code_of([&] { memory.enable_wal(); }), 1);
}

TEST(DatabaseObject, MovingHandsOverTheConnectionAndClosingEndsIt)
{
    TempFolder folder;
    const QString path = folder.path(u"m.db"_s);
    Database first = Database::open(path, Database::OpenMode::CreateIfMissing);
    first.exec(u"CREATE TABLE t (x)"_s);
    Database second(std::move(first));
    EXPECT_FALSE(first.is_open()); // NOLINT(bugprone-use-after-move): checking what a move leaves
    EXPECT_TRUE(first.path().isEmpty());
    EXPECT_EQ(error_code_of([&] { first.prepare(u"SELECT 1"_s); }), 21);
    EXPECT_TRUE(second.is_open());
    EXPECT_EQ(second.path(), path);

    Database third;
    EXPECT_FALSE(third.is_open());
    third = std::move(second);
    EXPECT_FALSE(second.is_open()); // NOLINT(bugprone-use-after-move)
    third.exec(u"INSERT INTO t VALUES (1)"_s);
    EXPECT_EQ(third.last_insert_id(), 1);
    EXPECT_EQ(third.changes(), 1);

    // A statement may outlive its connection's close.
    Statement late = third.prepare(u"SELECT count(*) FROM t"_s);
    third.close();
    EXPECT_FALSE(third.is_open());
    EXPECT_EQ(error_code_of([&] { third.exec(u"SELECT 1"_s); }), 21);
    ASSERT_TRUE(late.step());
    EXPECT_EQ(late.integer(0), 1);
}

TEST(DatabaseSchemaQuestions, NamesIgnoreCaseAndColumnsKeepTheirOrder)
{
    TempFolder folder;
    Database db = Database::open(folder.path(u"s.db"_s), Database::OpenMode::CreateIfMissing);
    db.exec(u"CREATE TABLE Mixed (zeta TEXT, alpha INTEGER, Mid TEXT)"_s);
    db.exec(u"CREATE INDEX b_index ON Mixed (alpha)"_s);
    db.exec(u"CREATE INDEX a_index ON Mixed (zeta)"_s);
    db.exec(u"CREATE VIEW seen AS SELECT 1"_s);
    EXPECT_TRUE(db.table_exists(u"mixed"_s));
    EXPECT_TRUE(db.table_exists(u"MIXED"_s));
    EXPECT_FALSE(db.table_exists(u"seen"_s)); // a view is no table
    EXPECT_FALSE(db.table_exists(u"mixed'--"_s));
    EXPECT_EQ(db.column_names(u"mixed"_s), (QStringList{u"zeta"_s, u"alpha"_s, u"Mid"_s}));
    EXPECT_EQ(db.column_names(u"absent"_s), QStringList());
    EXPECT_EQ(db.index_names(u"MIXED"_s), (QStringList{u"a_index"_s, u"b_index"_s}));
}

} // namespace
} // namespace cvd::store
