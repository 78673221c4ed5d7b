#include "store/database.h"
#include "store/error_codes.h"
#include "store/schema.h"
#include "store/unique.h"
#include "store_test_support.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <numeric>

using namespace Qt::StringLiterals;

namespace cvd::store {
namespace {

using testing::query_rows;
using testing::query_value;
using testing::TempFolder;

class UniqueTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        path = folder.path(u"cvd.mdb"_s);
        create_global_database(path);
        db = Database::open(path);
        db.enable_wal();
    }

    void set_counter(std::optional<qint64> value)
    {
        Statement update = db.prepare(u"UPDATE cv_counters SET cv_unique = ?1"_s);
        if (value) {
            update.bind(1, *value);
        } else {
            update.bind_null(1);
        }
        update.exec();
    }

    TempFolder folder;
    QString path;
    Database db;
};

TEST_F(UniqueTest, EachDrawAddsOneAndStoresItAndOnlyTheFirstRowCounts)
{
    EXPECT_EQ(get_unique(db), 2); // a new file starts at 1
    EXPECT_EQ(get_unique(db), 3);
    Database other = Database::open(path);
    EXPECT_EQ(query_value(other, u"SELECT cv_unique FROM cv_counters"_s), u"3"_s);
    EXPECT_EQ(get_unique(other), 4);
    EXPECT_EQ(get_unique(db), 5);
    EXPECT_FALSE(db.in_transaction());

    // An empty table gets its row; a second row is left alone.
    db.exec(u"DELETE FROM cv_counters"_s);
    EXPECT_EQ(get_unique(db), 1);
    db.exec(u"INSERT INTO cv_counters (cv_unique) VALUES (500)"_s);
    EXPECT_EQ(get_unique(db), 2);
    EXPECT_EQ(query_rows(db, u"SELECT cv_unique FROM cv_counters ORDER BY cv_id"_s),
              (QList<QStringList>{{u"2"_s}, {u"500"_s}}));
}

TEST_F(UniqueTest, TheNumberAfterTheLimitIsOneAndNullCountsAsZero)
{
    const struct
    {
        std::optional<qint64> stored;
        qint32 drawn;
    } cases[] = {
        {std::nullopt, 1},
        {0, 1},
        {41, 42},
        {1999999998, 1999999999},
        {1999999999, 2000000000},
        {2000000000, 1},
        {2000000005, 1},
        {qint64{1} << 40, 1},
        {-5, -4},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.stored.value_or(-999));
        set_counter(c.stored);
        EXPECT_EQ(get_unique(db), c.drawn);
        EXPECT_EQ(query_value(db, u"SELECT cv_unique FROM cv_counters"_s), QString::number(c.drawn));
    }
}

TEST_F(UniqueTest, AnotherWriterHoldingTheFileGivesBusyAndNoNumber)
{
    Database holder = Database::open(path);
    db.set_busy_timeout(0);
    {
        Transaction transaction(holder);
        try {
            get_unique(db);
            ADD_FAILURE() << "drew a number while another process held the file";
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), codes::Busy);
        }
    }
    EXPECT_EQ(get_unique(db), 2);
}

// One child's draws, one a line in out_path. As the program's error path does, it runs again what another
// process's lock held up. Returns the child's exit status.
int draw_in_child(const QString& db_path, const QString& out_path, int count)
{
    try {
        Database db = Database::open(db_path);
        db.enable_wal();
        std::FILE* out = std::fopen(QFile::encodeName(out_path).constData(), "w");
        for (int i = 0; out && i < count; ++i) {
            for (int attempt = 0;; ++attempt) {
                try {
                    std::fprintf(out, "%d\n", get_unique(db));
                    break;
                } catch (const Error& error) {
                    if (!is_transient_error(error.code()) || attempt > 100) {
                        throw;
                    }
                }
            }
        }
        return out && std::fclose(out) == 0 ? 0 : 4;
    } catch (...) {
        return 3;
    }
}

TEST_F(UniqueTest, TwoProcessesDrawingAtOnceNeverGetTheSameNumber)
{
    constexpr int kCount = 10000;
    // Both start from an empty table, so that they also race to add its row.
    db.exec(u"DELETE FROM cv_counters"_s);
    db.close();
    const QString outputs[] = {folder.path(u"drawn-0.txt"_s), folder.path(u"drawn-1.txt"_s)};
    ASSERT_TRUE(testing::run_racing_children(2, [&](int i) { return draw_in_child(path, outputs[i], kCount); }));

    QList<qint32> all;
    for (const QString& output : outputs) {
        QList<qint32> drawn;
        for (const QByteArray& line : testing::read_bytes(output).split('\n')) {
            if (!line.isEmpty()) {
                drawn.append(line.toInt());
            }
        }
        EXPECT_EQ(drawn.size(), kCount);
        EXPECT_TRUE(std::is_sorted(drawn.cbegin(), drawn.cend()) &&
                    std::adjacent_find(drawn.cbegin(), drawn.cend()) == drawn.cend())
            << "the numbers one process draws must rise";
        all += drawn;
    }
    std::sort(all.begin(), all.end());
    QList<qint32> expected(2 * kCount);
    std::iota(expected.begin(), expected.end(), 1);
    EXPECT_EQ(all, expected) << "a number was skipped or drawn twice";

    Database check = Database::open(path);
    EXPECT_EQ(query_value(check, u"SELECT count(*) || ':' || max(cv_unique) FROM cv_counters"_s),
              u"1:%1"_s.arg(2 * kCount));
}

} // namespace
} // namespace cvd::store
