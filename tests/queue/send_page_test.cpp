#include "core/app_state.h"
#include "core/databases.h"
#include "queue/send_page.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/test_environment.h"

#include <QDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::queue {
namespace {

TEST(SplitMessageLine, NeedsTwoSeparatingBlanksEachWithSomethingBehindIt)
{
    const struct
    {
        QString line;
        bool splits;
        QString recipient;
        QString sender;
        QString message;
    } cases[] = {
        {u"bob ops Disk full"_s, true, u"bob"_s, u"ops"_s, u"Disk full"_s},
        {u"bob  Disk full"_s, true, u"bob"_s, QString(), u"Disk full"_s}, // two blanks: empty sender
        {u"bob ops  two  blanks "_s, true, u"bob"_s, u"ops"_s, u" two  blanks "_s},
        {u"bob ops"_s, false, {}, {}, {}},  // two words
        {u"bob ops "_s, false, {}, {}, {}}, // second blank in last place
        {u"bob "_s, false, {}, {}, {}},
        {u"bob"_s, false, {}, {}, {}},
        {QString(), false, {}, {}, {}},
        {u" ops msg"_s, true, QString(), u"ops"_s, u"msg"_s},
    };
    for (const auto& c : cases) {
        QString reason;
        const std::optional<MessageLine> parts = split_message_line(c.line, &reason);
        ASSERT_EQ(parts.has_value(), c.splits) << c.line.toStdString();
        if (parts) {
            EXPECT_EQ(parts->recipient, c.recipient);
            EXPECT_EQ(parts->sender, c.sender);
            EXPECT_EQ(parts->message, c.message);
        } else {
            EXPECT_FALSE(reason.isEmpty());
        }
    }
}

class SendPageTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        state = env.make_state();
        state->global_db_folder = env.path(u"g/"_s);
        state->user_db_folder = env.path(u"u/"_s);
        QDir().mkpath(state->global_db_folder);
        QDir().mkpath(state->user_db_folder);
        store::create_global_database(global_db_path(*state));
        store::Database db = store::Database::open(global_db_path(*state));
        db.exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier, cv_group) VALUES ('Bob', 'tapnet', 0)"_s);
    }

    testing::TestEnvironment env;
    std::unique_ptr<AppState> state;
};

TEST_F(SendPageTest, AKnownRecipientGetsOneWaitingRowWithTheEntryValues)
{
    const SendPageResult result = SendPage(*state, u"bob ops Disk full on 'db1' | \"now\""_s);
    ASSERT_TRUE(result.inserted) << result.reason.toStdString();
    EXPECT_GT(result.message_id, 0);
    EXPECT_FALSE(state->global_db.is_open()); // it closes what it opened

    store::Database db = store::Database::open(global_db_path(*state), store::Database::OpenMode::ReadOnly);
    store::Statement row = db.prepare(
        u"SELECT cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, cv_from, cv_sent, cv_error, "
        "cv_scheduled, cv_repeat_interval, cv_repeat_stop, cv_retries, cv_last_try, cv_transaction, cv_priority, "
        "cv_date_time_sent FROM cv_messages"_s);
    ASSERT_TRUE(row.step());
    const QDateTime now = env.clock.now();
    EXPECT_EQ(row.text(0), u"bob"_s); // as typed in the line
    EXPECT_EQ(row.text(1), QString());
    EXPECT_EQ(row.text(2), u"Disk full on 'db1' | \"now\""_s);
    EXPECT_EQ(row.text(3), u"tapnet"_s);
    EXPECT_EQ(row.date(4), now);
    EXPECT_EQ(row.text(5), u"ops"_s);
    EXPECT_EQ(row.integer(6), 0);
    EXPECT_EQ(row.integer(7), 0);
    EXPECT_EQ(row.integer(8), 0);
    EXPECT_EQ(row.integer(9), 0);
    EXPECT_EQ(row.date(10), now);
    EXPECT_EQ(row.integer(11), 0);
    // The default retry interval of 15 seconds, read before the settings are loaded.
    EXPECT_EQ(row.date(12), now.addSecs(-15));
    EXPECT_GT(row.integer(13).value_or(0), 1);
    EXPECT_TRUE(row.is_null(14));
    EXPECT_TRUE(row.is_null(15));
    EXPECT_FALSE(row.step());
}

TEST_F(SendPageTest, EachLineDrawsItsOwnTransactionAndTheLoadedIntervalCounts)
{
    load_settings(*state);
    state->settings.put_setting(u"connector"_s, u"retry_interval"_s, 60);
    ASSERT_TRUE(SendPage(*state, u"bob ops one"_s).inserted);
    ASSERT_TRUE(SendPage(*state, u"bob  two"_s).inserted);
    store::Database db = store::Database::open(global_db_path(*state), store::Database::OpenMode::ReadOnly);
    store::Statement rows =
        db.prepare(u"SELECT cv_transaction, cv_last_try, cv_from FROM cv_messages ORDER BY cv_message_id"_s);
    ASSERT_TRUE(rows.step());
    const qint64 first = rows.integer(0).value_or(0);
    EXPECT_EQ(rows.date(1), env.clock.now().addSecs(-60));
    ASSERT_TRUE(rows.step());
    EXPECT_NE(rows.integer(0).value_or(0), first);
    EXPECT_EQ(rows.text(2), QString());
}

TEST_F(SendPageTest, AnUnknownRecipientOrABrokenLineAddsNothing)
{
    const SendPageResult unknown = SendPage(*state, u"nobody ops x"_s);
    EXPECT_FALSE(unknown.inserted);
    EXPECT_TRUE(unknown.reason.contains(u"nobody"_s));
    EXPECT_FALSE(SendPage(*state, u"bob ops"_s).inserted);
    store::Database db = store::Database::open(global_db_path(*state), store::Database::OpenMode::ReadOnly);
    store::Statement count = db.prepare(u"SELECT count(*) FROM cv_messages"_s);
    ASSERT_TRUE(count.step());
    EXPECT_EQ(count.integer(0), 0);
}

TEST_F(SendPageTest, ADatabaseOfAnotherVersionIsNotWrittenTo)
{
    {
        store::Database db = store::Database::open(global_db_path(*state));
        db.exec(u"UPDATE cv_settings SET cv_value = '502' WHERE cv_category = 'database' AND cv_name = 'version'"_s);
    }
    const SendPageResult result = SendPage(*state, u"bob ops x"_s);
    EXPECT_FALSE(result.inserted);
    store::Database db = store::Database::open(global_db_path(*state), store::Database::OpenMode::ReadOnly);
    store::Statement count = db.prepare(u"SELECT count(*) FROM cv_messages"_s);
    ASSERT_TRUE(count.step());
    EXPECT_EQ(count.integer(0), 0);
}

} // namespace
} // namespace cvd::queue
