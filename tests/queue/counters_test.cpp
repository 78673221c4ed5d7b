#include "core/app_state.h"
#include "queue/counters.h"
#include "store/database.h"
#include "support/database_test.h"
#include "support/recording_view.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::queue {
namespace {

class CountersTest : public testing::DatabaseTest
{
protected:
    CountersTest() : DatabaseTest(Start::LoadSettings) {}
    void SetUp() override
    {
        DatabaseTest::SetUp();
        state->first_transaction = 100;
    }

    // scheduled, sent, error as -1/0; a transaction; a recipient.
    void add_row(int scheduled, int sent, int error, qint64 transaction, const QString& recipient = u"bob"_s)
    {
        store::Statement insert =
            db().prepare(u"INSERT INTO cv_messages (cv_recipient, cv_scheduled, cv_sent, cv_error, cv_transaction, "
                         "cv_repeat_interval, cv_date_time_requested) VALUES (?1, ?2, ?3, ?4, ?5, 0, ?6)"_s);
        insert.bind(1, recipient).bind(2, scheduled).bind(3, sent).bind(4, error).bind(5, transaction);
        insert.bind(6, env.clock.now().addSecs(-60));
        insert.exec();
    }

    testing::RecordingView view;
    CounterState counters;
};

TEST_F(CountersTest, CountsThisRunsRowsAndEveryWaitingRowButNeverThePseudoRecipient)
{
    add_row(0, 0, 0, 5);   // waiting from an earlier run: counts
    add_row(0, 0, 0, 101); // waiting
    add_row(0, 0, 0, 101, u"cvdscreen"_s);
    add_row(-1, 0, 0, 101);   // pending
    add_row(-1, 0, 0, 50);    // pending of an earlier run: not counted
    add_row(-1, -1, 0, 102);  // sent
    add_row(-1, -1, 0, 0);    // a closed group row
    add_row(-1, -1, -1, 103); // failed
    add_row(-1, -1, -1, 103, u"cvdscreen"_s);
    update_counters(*state, view, counters);
    EXPECT_EQ(view.panels.value(kSchedPanel), u"Sched: 2"_s);
    EXPECT_EQ(view.panels.value(kPendPanel), u"Pend: 1"_s);
    EXPECT_EQ(view.panels.value(kSentPanel), u"Sent: 1"_s);
    EXPECT_EQ(view.panels.value(kBadPanel), u"Bad: 1"_s);
    EXPECT_EQ(view.refreshes, 1);
    // Over every run, as `cvdctl status` counts: the earlier run's pending row too, never the closed group row.
    const qint64 every_run[] = {2, 2, 1, 1};
    for (const MessageCount count : kMessageCounts) {
        EXPECT_EQ(count_messages(db(), count, 0), every_run[static_cast<int>(count)]);
    }
}

TEST_F(CountersTest, AChangedFailedCountWarnsOnlyWhenAskedForAndNotRightAfterTheOperatorsOwnChange)
{
    add_row(-1, -1, -1, 101);
    update_counters(*state, view, counters);
    EXPECT_EQ(view.warnings, 0); // warning_popup is off by default
    EXPECT_EQ(view.panels.value(kBadPanel), u"Bad: 1"_s);

    state->settings.put_setting({u"display", u"warning_popup"}, true);
    add_row(-1, -1, -1, 101);
    add_row(-1, -1, -1, 102); // two failures in one tick give one warning
    update_counters(*state, view, counters);
    EXPECT_EQ(view.warnings, 1);
    EXPECT_EQ(view.panels.value(kBadPanel), u"Bad: 3"_s);
    EXPECT_FALSE(counters.counters_changed);

    update_counters(*state, view, counters);
    EXPECT_EQ(view.warnings, 1); // nothing changed

    db().exec(u"DELETE FROM cv_messages WHERE cv_transaction = 102"_s);
    counters.counters_changed = true;
    update_counters(*state, view, counters);
    EXPECT_EQ(view.warnings, 1);
    EXPECT_FALSE(counters.counters_changed);

    // A drop of the count from elsewhere warns as well.
    db().exec(u"DELETE FROM cv_messages WHERE cv_transaction = 101 AND cv_message_id = 1"_s);
    update_counters(*state, view, counters);
    EXPECT_EQ(view.warnings, 2);
}

TEST_F(CountersTest, CancelAllDeletesOnlyDueUnsentSingleRowsAfterAYes)
{
    add_row(0, 0, 0, 101);   // due waiting: deleted
    add_row(-1, 0, 0, 101);  // due pending: deleted
    add_row(-1, -1, 0, 101); // sent: kept
    db().exec(u"INSERT INTO cv_messages (cv_recipient, cv_scheduled, cv_sent, cv_error, cv_repeat_interval, "
              "cv_date_time_requested) VALUES ('later', 0, 0, 0, 0, '2099-01-01 00:00:00'), "
              "('repeat', 0, 0, 0, 60, '2000-01-01 00:00:00')"_s);

    env.prompter.answer_next(BoxAnswer::No);
    EXPECT_FALSE(cancel_all_messages(*state, view));
    env.prompter.answer_next(BoxAnswer::Yes);
    EXPECT_TRUE(cancel_all_messages(*state, view));
    EXPECT_EQ(env.prompter.boxes.back().title, u"Cancel Pending Messages"_s);
    EXPECT_EQ(view.panels.value(kPendPanel), u"Pend: 0"_s);

    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_messages"_s), 3);
}

} // namespace
} // namespace cvd::queue
