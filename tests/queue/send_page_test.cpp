#include "core/app_state.h"
#include "core/databases.h"
#include "queue/send_page.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/database_test.h"

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

class SendPageTest : public testing::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier, cv_group) VALUES ('Bob', 'tapnet', 0)"_s);
        db().close(); // SendPage opens the database itself
    }

    qint64 message_count()
    {
        store::Database db = store::Database::open(global_db_path(*state), store::Database::OpenMode::ReadOnly);
        store::Statement count = db.prepare(u"SELECT count(*) FROM cv_messages"_s);
        return count.step() ? count.integer(0).value_or(-1) : -1;
    }
};

TEST_F(SendPageTest, AKnownRecipientGetsOneWaitingRowWithTheEntryValues)
{
    const SendPageResult result = SendPage(*state, u"bob ops Disk full on 'db1' | \"now\""_s);
    ASSERT_TRUE(result.inserted) << result.reason.toStdString();
    EXPECT_GT(result.message_id, 0);
    EXPECT_FALSE(state->global_db.is_open()); // it closes what it opened

    store::Database db = store::Database::open(global_db_path(*state), store::Database::OpenMode::ReadOnly);
    store::Statement row = db.prepare(
        u"SELECT cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, cv_from, cv_repeat_stop, "
        "cv_last_try, cv_transaction, cv_sent = 0 AND cv_error = 0 AND cv_scheduled = 0 AND cv_repeat_interval = 0 "
        "AND cv_retries = 0 AND cv_priority IS NULL AND cv_date_time_sent IS NULL FROM cv_messages"_s);
    ASSERT_TRUE(row.step());
    const QDateTime now = env.clock.now();
    EXPECT_EQ(row.text(0), u"bob"_s); // as typed in the line
    EXPECT_EQ(row.text(1), QString());
    EXPECT_EQ(row.text(2), u"Disk full on 'db1' | \"now\""_s);
    EXPECT_EQ(row.text(3), u"tapnet"_s);
    EXPECT_EQ(row.date(4), now);
    EXPECT_EQ(row.text(5), u"ops"_s);
    EXPECT_EQ(row.date(6), now);
    // The default retry interval of 15 seconds, read before the settings are loaded.
    EXPECT_EQ(row.date(7), now.addSecs(-15));
    EXPECT_GT(row.integer(8).value_or(0), 1);
    EXPECT_TRUE(row.flag(9)); // waiting: not sent, no error, not scheduled, no repeat, retry or priority
    EXPECT_FALSE(row.step());
}

TEST_F(SendPageTest, EachLineDrawsItsOwnTransactionAndTheLoadedIntervalCounts)
{
    load_settings(*state);
    state->settings.put_setting({u"connector", u"retry_interval"}, 60);
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

TEST_F(SendPageTest, AnUnknownRecipientABrokenLineOrADatabaseOfAnotherVersionAddsNothing)
{
    const SendPageResult unknown = SendPage(*state, u"nobody ops x"_s);
    EXPECT_FALSE(unknown.inserted);
    EXPECT_TRUE(unknown.reason.contains(u"nobody"_s));
    EXPECT_FALSE(SendPage(*state, u"bob ops"_s).inserted);

    open_database(*state);
    db().exec(u"UPDATE cv_settings SET cv_value = '502' WHERE cv_category = 'database' AND cv_name = 'version'"_s);
    EXPECT_FALSE(open_current_database(*state)); // open before: asked again, not taken from its opening
    db().close();
    EXPECT_FALSE(SendPage(*state, u"bob ops x"_s).inserted); // a good line, but not ours to write
    EXPECT_EQ(message_count(), 0);
}

} // namespace
} // namespace cvd::queue
