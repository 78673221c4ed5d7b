#include "store/database.h"
#include "store_test_support.h"

#include <QTimeZone>
#include <algorithm>
#include <gtest/gtest.h>
#include <random>

using namespace Qt::StringLiterals;

namespace cvd::store {
namespace {

using testing::query_rows;
using testing::query_value;
using testing::TempFolder;

class StatementTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        db = Database::open(folder.path(u"values.db"_s), Database::OpenMode::CreateIfMissing);
        db.exec(u"CREATE TABLE t (id INTEGER PRIMARY KEY, txt TEXT COLLATE NOCASE, num INTEGER, "
                u"flt REAL, dt TEXT)"_s);
    }

    TempFolder folder;
    Database db;
};

TEST_F(StatementTest, BoundValuesComeBackWithTheirTypes)
{
    Statement insert = db.prepare(u"INSERT INTO t (id, txt, num, flt, dt) VALUES (?1, ?2, ?3, ?4, ?5)"_s);
    const QDateTime when(QDate(2001, 1, 2), QTime(13, 5, 9));
    insert.bind(1, 1)
        .bind(2, u"Grüße ✓ 'quoted' \"double\" |bar|"_s)
        .bind(3, qint64{1} << 40)
        .bind(4, 2.5)
        .bind(5, when);
    insert.exec();
    insert.bind(1, 2).bind(2, QString()).bind(3, -7).bind_null(4).bind(5, QDateTime());
    insert.exec();
    // Booleans are stored as -1 and 0.
    insert.bind(1, 3).bind_bool(3, true);
    insert.exec();
    insert.bind(1, 4).bind_bool(3, false);
    insert.exec();

    EXPECT_EQ(query_rows(db, u"SELECT typeof(txt), typeof(num), num, typeof(flt), typeof(dt), dt FROM t ORDER BY id"_s),
              (QList<QStringList>{
                  {u"text"_s, u"integer"_s, u"1099511627776"_s, u"real"_s, u"text"_s, u"2001-01-02 13:05:09"_s},
                  // A null QString is still text; an invalid date is null.
                  {u"text"_s, u"integer"_s, u"-7"_s, u"null"_s, u"null"_s, u"<null>"_s},
                  {u"text"_s, u"integer"_s, u"-1"_s, u"null"_s, u"null"_s, u"<null>"_s},
                  {u"text"_s, u"integer"_s, u"0"_s, u"null"_s, u"null"_s, u"<null>"_s}}));

    Statement read = db.prepare(u"SELECT txt, num, flt, dt FROM t ORDER BY id"_s);
    ASSERT_TRUE(read.step());
    EXPECT_EQ(read.column_count(), 4);
    EXPECT_EQ(read.column_name(2), u"flt"_s);
    EXPECT_EQ(read.text(0), u"Grüße ✓ 'quoted' \"double\" |bar|"_s);
    EXPECT_EQ(read.integer(1), qint64{1} << 40);
    EXPECT_EQ(read.real(2), 2.5);
    EXPECT_EQ(read.date(3), when);
    ASSERT_TRUE(read.step());
    EXPECT_EQ(read.text(0), QString());
    EXPECT_EQ(read.integer(1), -7);
    EXPECT_FALSE(read.date(3).has_value());
    ASSERT_TRUE(read.step());
    EXPECT_TRUE(read.flag(1));
    ASSERT_TRUE(read.step());
    EXPECT_FALSE(read.flag(1));
    EXPECT_FALSE(read.step());
}

TEST_F(StatementTest, NullIsToldApartFromEmptyTextAndZero)
{
    db.exec(u"INSERT INTO t (id, txt, num, flt, dt) VALUES (1, NULL, NULL, NULL, NULL), (2, '', 0, 0.0, ''), "
            u"(3, 'x', -1, 1.5, 'not a date'), (4, '0', 1, -0.5, '2020-02-30 10:00:00')"_s);
    struct Expected
    {
        bool null;
        std::optional<QString> text;
        std::optional<qint64> integer;
        std::optional<double> real;
        bool flag;
    };
    const Expected expected[] = {
        {true, std::nullopt, std::nullopt, std::nullopt, false},
        {false, u""_s, 0, 0.0, false},
        {false, u"x"_s, -1, 1.5, true},
        {false, u"0"_s, 1, -0.5, true},
    };
    Statement read = db.prepare(u"SELECT txt, num, flt, dt FROM t ORDER BY id"_s);
    for (const Expected& row : expected) {
        ASSERT_TRUE(read.step());
        SCOPED_TRACE(row.text.value_or(u"<null>"_s).toStdString());
        EXPECT_EQ(read.is_null(0), row.null);
        EXPECT_EQ(read.text(0), row.text);
        EXPECT_EQ(read.integer(1), row.integer);
        EXPECT_EQ(read.real(2), row.real);
        EXPECT_EQ(read.flag(1), row.flag);
        EXPECT_FALSE(read.date(3).has_value()); // null, empty, garbage and an impossible day alike
    }
}

TEST_F(StatementTest, DatesRoundTripAsTextAndSortAsTime)
{
    const QList<QDateTime> chronological = {
        QDateTime(QDate(1999, 12, 31), QTime(23, 59, 59)), QDateTime(QDate(2000, 1, 1), QTime(0, 0, 0)),
        QDateTime(QDate(2000, 1, 1), QTime(9, 0, 0)),      QDateTime(QDate(2000, 1, 1), QTime(10, 0, 0)),
        QDateTime(QDate(2000, 1, 1), QTime(21, 0, 0)),     QDateTime(QDate(2000, 2, 1), QTime(8, 5, 3)),
        QDateTime(QDate(2000, 10, 1), QTime(8, 5, 3)),     QDateTime(QDate(2010, 1, 9), QTime(12, 0, 0)),
    };
    QList<QDateTime> shuffled = chronological;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(7));
    Statement insert = db.prepare(u"INSERT INTO t (dt) VALUES (?1)"_s);
    for (const QDateTime& when : shuffled) {
        insert.bind(1, when);
        insert.exec();
    }
    Statement read = db.prepare(u"SELECT dt FROM t ORDER BY dt"_s);
    QList<QDateTime> sorted;
    while (read.step()) {
        sorted.append(read.date(0).value_or(QDateTime()));
    }
    EXPECT_EQ(sorted, chronological);

    EXPECT_EQ(format_date(QDateTime(QDate(2001, 1, 2), QTime(3, 4, 5))), u"2001-01-02 03:04:05"_s);
    EXPECT_EQ(parse_date(u"2001-01-02 03:04:05"_s), QDateTime(QDate(2001, 1, 2), QTime(3, 4, 5)));
    // A time given in another zone is stored as local time and still names the same instant.
    const QDateTime utc(QDate(2015, 7, 1), QTime(12, 30, 0), QTimeZone::utc());
    EXPECT_EQ(parse_date(format_date(utc)), utc);
    EXPECT_EQ(format_date(QDateTime()), QString());
    for (const QString& bad : {u""_s, u"2001-13-01 00:00:00"_s, u"01/02/2001 03:04:05"_s, u"yesterday"_s}) {
        EXPECT_FALSE(parse_date(bad).has_value()) << bad.toStdString();
    }
}

TEST_F(StatementTest, ResetRunsAgainAndClearedBindingsAreNull)
{
    Statement insert = db.prepare(u"INSERT INTO t (txt, num) VALUES (?1, ?2)"_s);
    insert.bind(1, u"a"_s).bind(2, 1);
    insert.exec();
    insert.exec(); // bindings stay
    insert.clear_bindings();
    insert.exec();
    EXPECT_EQ(query_rows(db, u"SELECT txt, num FROM t ORDER BY id"_s),
              (QList<QStringList>{{u"a"_s, u"1"_s}, {u"a"_s, u"1"_s}, {u"<null>"_s, u"<null>"_s}}));

    Statement count = db.prepare(u"SELECT count(*) FROM t"_s);
    ASSERT_TRUE(count.step());
    count.reset();
    db.exec(u"DELETE FROM t WHERE num IS NULL"_s);
    ASSERT_TRUE(count.step());
    EXPECT_EQ(count.integer(0), 2);
}

TEST_F(StatementTest, MovingLeavesTheSourceEmpty)
{
    Statement first = db.prepare(u"SELECT 42"_s);
    Statement second(std::move(first));
    ASSERT_TRUE(second.step());
    EXPECT_EQ(second.integer(0), 42);
    EXPECT_EQ(first.column_count(), 0); // NOLINT(bugprone-use-after-move): checking what a move leaves
    try {
        first.step(); // NOLINT(bugprone-use-after-move)
        ADD_FAILURE() << "a moved-from statement ran";
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), 21);
    }

    Statement third = db.prepare(u"SELECT 7"_s);
    third = std::move(second);
    second = db.prepare(u"SELECT 8"_s); // a moved-from statement takes a new one
    ASSERT_TRUE(second.step());
    EXPECT_EQ(second.integer(0), 8);
    third.reset();
    ASSERT_TRUE(third.step());
    EXPECT_EQ(third.integer(0), 42);
}

TEST_F(StatementTest, FailuresCarryTheExtendedCodeAndTheStatement)
{
    struct Case
    {
        QString sql;
        int code;
        QString in_message;
    };
    db.exec(u"CREATE TABLE u (k TEXT UNIQUE)"_s);
    db.exec(u"INSERT INTO u VALUES ('one')"_s);
    const Case cases[] = {
        {u"SELECT * FROM nope"_s, 1, u"no such table: nope"_s},
        {u"INSERT INTO u VALUES ('one')"_s, 2067, u"UNIQUE constraint failed: u.k"_s}, // SQLITE_CONSTRAINT_UNIQUE
        {u"SELECT 1; SELECT 2"_s, 21, u"SELECT 1; SELECT 2"_s},                        // would drop the second
        {u"   "_s, 21, u"exactly one statement"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sql.toStdString());
        try {
            db.prepare(c.sql).exec();
            ADD_FAILURE() << "no error";
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), c.code);
            EXPECT_TRUE(error.message().contains(c.in_message)) << error.message().toStdString();
            EXPECT_TRUE(QString::fromUtf8(error.what()).contains(QString::number(c.code)));
        }
    }
    try {
        db.exec(u"INSERT INTO u VALUES ('one')"_s);
        ADD_FAILURE() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), 2067);
        EXPECT_EQ(error.primary_code(), 19);
        EXPECT_TRUE(error.message().contains(u"INSERT INTO u"_s)) << error.message().toStdString();
    }
    // A statement that failed can run again once the cause is gone.
    Statement insert = db.prepare(u"INSERT INTO u VALUES (?1)"_s);
    insert.bind(1, u"one"_s);
    EXPECT_THROW(insert.exec(), Error);
    insert.bind(1, u"two"_s);
    EXPECT_NO_THROW(insert.exec());
    EXPECT_EQ(query_value(db, u"SELECT count(*) FROM u"_s), u"2"_s);
}

} // namespace
} // namespace cvd::store
