#include "store/database.h"
#include "store/error_codes.h"
#include "store/schema.h"
#include "store/unique.h"
#include "store_test_support.h"

#include <QSet>
#include <cstdio>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

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

TEST_F(UniqueTest, EachDrawAddsOneAndStoresIt)
{
    EXPECT_EQ(get_unique(db), 2); // a new file starts at 1
    EXPECT_EQ(get_unique(db), 3);
    EXPECT_EQ(get_unique(db), 4);
    Database other = Database::open(path);
    EXPECT_EQ(query_value(other, u"SELECT cv_unique FROM cv_counters"_s), u"4"_s);
    EXPECT_EQ(get_unique(other), 5);
    EXPECT_EQ(get_unique(db), 6);
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

TEST_F(UniqueTest, AnEmptyTableGetsItsRowAndOnlyTheFirstRowCounts)
{
    db.exec(u"DELETE FROM cv_counters"_s);
    EXPECT_EQ(get_unique(db), 1);
    EXPECT_EQ(query_rows(db, u"SELECT cv_unique FROM cv_counters"_s), (QList<QStringList>{{u"1"_s}}));
    EXPECT_EQ(get_unique(db), 2);
    EXPECT_FALSE(db.in_transaction());

    db.exec(u"INSERT INTO cv_counters (cv_unique) VALUES (500)"_s);
    EXPECT_EQ(get_unique(db), 3);
    EXPECT_EQ(query_rows(db, u"SELECT cv_unique FROM cv_counters ORDER BY cv_id"_s),
              (QList<QStringList>{{u"3"_s}, {u"500"_s}}));
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

// One child: waits at the gate, draws its numbers, writes them one a line. Uses only the store and _exit.
[[noreturn]] void draw_in_child(const QString& db_path, const QString& out_path, int gate, int count)
{
    int status = 1;
    try {
        Database db = Database::open(db_path);
        db.enable_wal();
        std::FILE* out = std::fopen(QFile::encodeName(out_path).constData(), "w");
        char go;
        if (out && ::read(gate, &go, 1) == 0) {
            for (int i = 0; i < count; ++i) {
                // As the program's error path does, run again what another process's lock held up.
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
            status = std::fclose(out) == 0 ? 0 : 4;
        }
    } catch (...) {
        status = 3;
    }
    ::_exit(status);
}

TEST_F(UniqueTest, TwoProcessesDrawingAtOnceNeverGetTheSameNumber)
{
    constexpr int kCount = 10000;
    // Both start from an empty table, so that they also race to add its row.
    db.exec(u"DELETE FROM cv_counters"_s);
    db.close();

    int gate[2];
    ASSERT_EQ(::pipe(gate), 0);
    const QString outputs[] = {folder.path(u"drawn-0.txt"_s), folder.path(u"drawn-1.txt"_s)};
    pid_t children[2];
    for (int i = 0; i < 2; ++i) {
        children[i] = ::fork();
        ASSERT_GE(children[i], 0);
        if (children[i] == 0) {
            ::close(gate[1]);
            draw_in_child(path, outputs[i], gate[0], kCount);
        }
    }
    ::close(gate[0]);
    ::close(gate[1]); // opens the gate for both
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }

    QSet<qint32> all;
    for (const QString& output : outputs) {
        const QList<QByteArray> lines = testing::read_bytes(output).split('\n');
        qint32 previous = 0;
        int drawn = 0;
        int not_rising = 0;
        for (const QByteArray& line : lines) {
            if (line.isEmpty()) {
                continue;
            }
            const qint32 number = line.toInt();
            not_rising += number <= previous ? 1 : 0;
            previous = number;
            all.insert(number);
            ++drawn;
        }
        EXPECT_EQ(drawn, kCount);
        EXPECT_EQ(not_rising, 0) << "the numbers one process draws must rise";
    }
    EXPECT_EQ(all.size(), 2 * kCount);
    QSet<qint32> expected;
    for (qint32 n = 1; n <= 2 * kCount; ++n) {
        expected.insert(n);
    }
    EXPECT_EQ(all, expected) << "a number was skipped or drawn twice";

    Database check = Database::open(path);
    EXPECT_EQ(query_rows(check, u"SELECT cv_unique FROM cv_counters"_s),
              (QList<QStringList>{{QString::number(2 * kCount)}}));
}

} // namespace
} // namespace cvd::store
