#include "core/app_state.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "queue/scheduler.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/database_test.h"

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace cvd::queue {
namespace {

enum Day { sunday = 1, monday, tuesday, wednesday, thursday, friday, saturday };

// A week of March clear of any change of daylight saving time: the 3rd is a Sunday, the 9th a Saturday.
QDateTime at(int day_of_month, int hour, int minute = 0, int second = 0)
{
    return QDateTime(QDate(2024, 3, day_of_month), QTime(hour, minute, second));
}

QString stored(const QDateTime& moment)
{
    return store::format_date(moment);
}

struct MessageRow
{
    qint64 id = 0;
    QString recipient;
    QString pin;
    QString message;
    QString carrier;
    QString requested;
    std::optional<QString> sent_at;
    QString from;
    qint64 sent = 0;
    qint64 error = 0;
    qint64 scheduled = 0;
    qint64 repeat_interval = 0;
    QString repeat_stop;
    QString last_try;
    qint64 transaction = 0;

    bool waiting() const { return scheduled == 0 && sent == 0 && error == 0; }
    bool pending() const { return scheduled != 0 && sent == 0 && error == 0; }
    bool done_well() const { return scheduled != 0 && sent != 0 && error == 0; }
    bool failed() const { return scheduled != 0 && sent != 0 && error != 0; }
};

// A Waiting row to put in the queue. An invalid request time is now; an invalid stop is the request time.
struct Message
{
    QString recipient{};
    qint64 transaction = 1;
    QDateTime requested{};
    qint64 repeat_interval = 0; // minutes
    QDateTime repeat_stop{};
    QString pin{}; // the typed number of an ad hoc recipient
    QString text = u"Pump 3 pressure low"_s;
    QString from = u"plant"_s;
};

QStringList recipients_of(const std::vector<MessageRow>& rows)
{
    QStringList names;
    for (const MessageRow& row : rows) {
        names << row.recipient;
    }
    return names;
}

class SchedulerTest : public testing::DatabaseTest
{
protected:
    void SetUp() override
    {
        env.clock.set(at(9, 12)); // Saturday noon
        DatabaseTest::SetUp();
        db().exec(u"UPDATE cv_settings SET cv_value = '30' WHERE cv_category = 'connector' "
                  "AND cv_name = 'retry_interval'"_s);
    }

    void add_recipient(const QString& name, const QString& pin, const QString& carrier, bool group = false,
                       bool on_call = false, bool ad_hoc = false)
    {
        store::Statement insert = db().prepare(u"INSERT INTO cv_recipients (cv_name, cv_id, cv_carrier, cv_group, "
                                               "cv_on_call, cv_ad_hoc) VALUES (?1, ?2, ?3, ?4, ?5, ?6)"_s);
        insert.bind(1, name).bind(2, pin).bind(3, carrier).bind_bool(4, group).bind_bool(5, on_call);
        insert.bind_bool(6, ad_hoc).exec();
    }

    // A group has a pin and a carrier of its own, which its members' rows carry until they are taken up.
    void add_group(const QString& name, const QStringList& members, bool on_call = false)
    {
        add_recipient(name, u"G-"_s + name, u"groupnet"_s, true, on_call);
        for (const QString& member : members) {
            store::Statement insert = db().prepare(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES (?1, ?2)"_s);
            insert.bind(1, name).bind(2, member).exec();
        }
    }

    // Roster times are stored as date values of which only the time of day counts.
    void add_span(const QString& group, const QString& person, int start_day, QTime start, int stop_day, QTime stop)
    {
        store::Statement insert =
            db().prepare(u"INSERT INTO cv_oncalltable (cv_group, cv_recipient, cv_start_day, cv_start_time, "
                         "cv_stop_day, cv_stop_time) VALUES (?1, ?2, ?3, ?4, ?5, ?6)"_s);
        const QDate base(1899, 12, 30);
        insert.bind(1, group).bind(2, person).bind(3, start_day).bind(4, QDateTime(base, start));
        insert.bind(5, stop_day).bind(6, QDateTime(base, stop)).exec();
    }

    qint64 add_message(const Message& message)
    {
        const QDateTime requested = message.requested.isValid() ? message.requested : env.clock.now();
        const QDateTime stop = message.repeat_stop.isValid() ? message.repeat_stop : requested;
        store::Statement insert = db().prepare(
            u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, "
            "cv_from, cv_sent, cv_error, cv_scheduled, cv_repeat_interval, cv_repeat_stop, cv_retries, cv_last_try, "
            "cv_transaction) VALUES (?1, ?2, ?3, '', ?4, ?5, 0, 0, 0, ?6, ?7, 0, ?4, ?8)"_s);
        insert.bind(1, message.recipient).bind(2, message.pin).bind(3, message.text).bind(4, requested);
        insert.bind(5, message.from).bind(6, message.repeat_interval).bind(7, stop).bind(8, message.transaction);
        insert.exec();
        return db().last_insert_id();
    }

    // Every row with an id above `after`, in id order.
    std::vector<MessageRow> rows(qint64 after = 0)
    {
        store::Statement select = db().prepare(
            u"SELECT cv_message_id, cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, "
            "cv_date_time_sent, cv_from, cv_sent, cv_error, cv_scheduled, cv_repeat_interval, cv_repeat_stop, "
            "cv_last_try, cv_transaction FROM cv_messages WHERE cv_message_id > ?1 ORDER BY cv_message_id"_s);
        select.bind(1, after);
        std::vector<MessageRow> result;
        while (select.step()) {
            auto text = [&](int column) { return select.text(column).value_or(QString()); };
            auto number = [&](int column) { return select.integer(column).value_or(0); };
            result.push_back(MessageRow{number(0), text(1), text(2), text(3), text(4), text(5), select.text(6), text(7),
                                        number(8), number(9), number(10), number(11), text(12), text(13), number(14)});
        }
        return result;
    }

    std::optional<MessageRow> row(qint64 id)
    {
        const std::vector<MessageRow> found = rows(id - 1);
        return found.empty() || found.front().id != id ? std::nullopt : std::optional(found.front());
    }

    void run() { schedule_messages(*state, scheduler); }

    SchedulerState scheduler;
};

TEST_F(SchedulerTest, DueRowsAreResolvedAndRowsForLaterWaitButNotWhileAnotherCallIsActive)
{
    add_recipient(u"Bob"_s, u"5551234"_s, u"tapnet"_s);
    add_recipient(u"O'Neil \"Ed\""_s, u"777"_s, u"mailnet"_s);
    const QDateTime now = env.clock.now();
    const qint64 due_now = add_message({u"bob"_s, 10, now});
    const qint64 unknown = add_message({u"ghost"_s, 11, now.addSecs(-60)});
    const qint64 later = add_message({u"bob"_s, 12, now.addSecs(1)});
    const qint64 quoted = add_message({u"o'neil \"ed\""_s, 13});
    scheduler.scheduling_active = true;
    state->error_count = 3;
    run();
    EXPECT_TRUE(row(due_now)->waiting());
    EXPECT_TRUE(scheduler.scheduling_active);
    EXPECT_EQ(state->error_count, 0);

    state->error_count = 3;
    scheduler.scheduling_active = false;
    run();

    const MessageRow pending = *row(due_now);
    EXPECT_TRUE(pending.pending());
    EXPECT_EQ(pending.carrier, u"tapnet"_s);
    EXPECT_EQ(pending.pin, u"5551234"_s);
    EXPECT_EQ(pending.transaction, 10);
    EXPECT_EQ(pending.sent_at, std::nullopt);

    const MessageRow failed = *row(unknown);
    EXPECT_TRUE(failed.failed());
    EXPECT_EQ(failed.sent_at, stored(now));
    EXPECT_EQ(failed.transaction, 11); // so that it counts as a failure of this run

    const MessageRow waiting = *row(later);
    EXPECT_TRUE(waiting.waiting());
    EXPECT_EQ(waiting.pin, QString());
    EXPECT_EQ(waiting.carrier, QString());

    const MessageRow with_quotes = *row(quoted);
    EXPECT_TRUE(with_quotes.pending());
    EXPECT_EQ(with_quotes.pin, u"777"_s);

    EXPECT_EQ(rows().size(), 4u);
    EXPECT_EQ(state->error_count, 0);
    EXPECT_FALSE(scheduler.scheduling_active);
    EXPECT_FALSE(scheduler.fast_tick_requested); // no group, no member rows
    EXPECT_TRUE(env.prompter.boxes.isEmpty());

    env.clock.advance_seconds(1);
    run();
    EXPECT_TRUE(row(later)->pending());
}

TEST_F(SchedulerTest, AGroupExpandsAndItsMembersArePendingInTheSameCallAGroupWithinItInTheNextPass)
{
    add_recipient(u"ann"_s, u"101"_s, u"tapnet"_s);
    add_recipient(u"ben"_s, u"102"_s, u"mailnet"_s);
    add_recipient(u"cy"_s, u"103"_s, u"tapnet"_s);
    add_recipient(u"dee"_s, u"104"_s, u"tapnet"_s);
    add_group(u"inner"_s, {u"dee"_s});
    add_group(u"ops"_s, {u"ann"_s, u"ben"_s, u"gone"_s, u"cy"_s, u"inner"_s}); // "gone" has no recipient row
    const QDateTime now = env.clock.now();
    const QDateTime requested = now.addSecs(-600);
    const qint64 group_row =
        add_message({u"ops"_s, 77, requested, 0, requested.addSecs(5), {}, u"Boiler 2 tripped"_s, u"control room"_s});

    run();

    const MessageRow group = *row(group_row);
    EXPECT_TRUE(group.done_well());
    EXPECT_EQ(group.transaction, 0); // kept out of every counter and folder
    EXPECT_EQ(group.sent_at, stored(now));

    const std::vector<MessageRow> members = rows(group_row);
    ASSERT_EQ(recipients_of(members), (QStringList{u"ann"_s, u"ben"_s, u"cy"_s, u"inner"_s, u"dee"_s}));
    EXPECT_TRUE(members[3].done_well());
    EXPECT_EQ(members[3].transaction, 0);
    const QStringList pins{u"101"_s, u"102"_s, u"103"_s, u"G-inner"_s, u"104"_s};
    const QStringList carriers{u"tapnet"_s, u"mailnet"_s, u"tapnet"_s, u"groupnet"_s, u"tapnet"_s};
    for (std::size_t i = 0; i < members.size(); ++i) {
        const MessageRow& member = members[i];
        SCOPED_TRACE(member.recipient.toStdString());
        if (i == 3) {
            continue; // the inner group's own row, closed above
        }
        EXPECT_TRUE(member.pending());
        EXPECT_EQ(member.pin, pins[i]);
        EXPECT_EQ(member.carrier, carriers[i]);
        EXPECT_EQ(member.transaction, 77);
        EXPECT_EQ(member.message, u"Boiler 2 tripped"_s);
        EXPECT_EQ(member.from, u"control room"_s);
        EXPECT_EQ(member.requested, stored(requested));
        EXPECT_EQ(member.repeat_interval, 0);
        EXPECT_EQ(member.repeat_stop, stored(requested.addSecs(5)));
        EXPECT_EQ(member.last_try, stored(now.addSecs(-30)));
    }
    EXPECT_TRUE(scheduler.fast_tick_requested);
    EXPECT_FALSE(scheduler.scheduling_active);
}

TEST_F(SchedulerTest, AnOnCallGroupTakesWhoIsOnCallNow)
{
    for (const QString& person : {u"alice"_s, u"bob"_s, u"carol"_s, u"duty"_s}) {
        add_recipient(person, u"P-"_s + person, u"net-"_s + person);
    }
    add_group(u"night"_s, {u"duty"_s}, true); // the member row lets the roster be looked at; it gets nothing
    add_span(u"night"_s, u"alice"_s, friday, QTime(17, 0), monday, QTime(8, 0));
    add_span(u"night"_s, u"bob"_s, wednesday, QTime(9, 0), wednesday, QTime(17, 0));
    add_span(u"night"_s, u"carol"_s, monday, QTime(17, 0), monday, QTime(8, 0)); // every night, both ends in
    add_span(u"night"_s, u"left"_s, sunday, QTime(10, 0), sunday, QTime(11, 0)); // no recipient row any more

    const struct
    {
        QDateTime now;
        QStringList on_call;
        bool failed;
    } cases[] = {
        {at(9, 12), {u"alice"_s}, false},                // Saturday
        {at(9, 23), {u"alice"_s, u"carol"_s}, false},    // Saturday night
        {at(6, 12), {u"bob"_s}, false},                  // Wednesday
        {at(6, 20), {u"carol"_s}, false},                // Wednesday evening
        {at(8, 16, 59), {}, true},                       // Friday, just before the weekend span
        {at(8, 17, 0), {u"carol"_s}, false},             // the weekend span's start is outside it
        {at(4, 8, 0), {u"carol"_s}, false},              // Monday 08:00: the weekend span is over
        {at(4, 7, 59), {u"alice"_s, u"carol"_s}, false}, // Monday just before
        {at(3, 10, 30), {u"alice"_s}, false},            // Sunday: "left" is on call too, and gets nothing
    };
    qint64 transaction = 100;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.now.toString(Qt::ISODate).toStdString());
        env.clock.set(c.now);
        scheduler = SchedulerState{};
        const qint64 group_row = add_message({u"night"_s, ++transaction});

        run();

        const MessageRow group = *row(group_row);
        EXPECT_EQ(group.failed(), c.failed);
        EXPECT_TRUE(group.done_well() || group.failed());
        EXPECT_EQ(group.transaction, 0);
        const std::vector<MessageRow> members = rows(group_row);
        EXPECT_EQ(recipients_of(members), c.on_call);
        for (const MessageRow& member : members) {
            EXPECT_TRUE(member.pending());
            EXPECT_EQ(member.pin, u"P-"_s + member.recipient);
            EXPECT_EQ(member.carrier, u"net-"_s + member.recipient);
            EXPECT_EQ(member.transaction, transaction);
        }
        EXPECT_EQ(scheduler.fast_tick_requested, !c.on_call.isEmpty());
    }
}

TEST_F(SchedulerTest, AGroupWithNobodyToTakeItEndsFailedWithTransactionZero)
{
    add_recipient(u"ann"_s, u"101"_s, u"tapnet"_s);
    add_group(u"empty"_s, {});
    add_group(u"ghosts"_s, {u"gone"_s, u"left"_s});
    add_group(u"rosteronly"_s, {}, true); // an on-call group needs a member row, or its roster is not read
    add_span(u"rosteronly"_s, u"ann"_s, sunday, QTime(0, 0), sunday, QTime(0, 0));
    const QDateTime now = env.clock.now();

    for (const QString& group : {u"empty"_s, u"ghosts"_s, u"rosteronly"_s}) {
        SCOPED_TRACE(group.toStdString());
        const qint64 id = add_message({group, 40});
        run();
        const MessageRow closed = *row(id);
        EXPECT_TRUE(closed.failed());
        EXPECT_EQ(closed.transaction, 0);
        EXPECT_EQ(closed.sent_at, stored(now));
        EXPECT_TRUE(rows(id).empty());
    }
    EXPECT_FALSE(scheduler.fast_tick_requested);
}

TEST_F(SchedulerTest, ARepeatingRowLeavesItsNextOccurrenceInPhase)
{
    add_recipient(u"Bob"_s, u"5551234"_s, u"tapnet"_s);
    const struct
    {
        QDateTime requested;
        qint64 interval;
        QDateTime stop;
        QDateTime now;
        std::optional<QDateTime> next;
    } cases[] = {
        {at(5, 10), 60, at(5, 23), at(5, 13, 30), at(5, 14)},             // missed occurrences are skipped
        {at(5, 10, 7), 60, at(5, 23), at(5, 13, 30), at(5, 14, 7)},       // the phase is kept
        {at(5, 10), 60, at(5, 14), at(5, 13, 30), at(5, 14)},             // exactly at the stop
        {at(5, 10), 60, at(5, 13, 59), at(5, 13, 30), std::nullopt},      // after the stop
        {at(5, 10), 60, at(5, 23), at(5, 10), at(5, 11)},                 // due this very moment
        {at(5, 10), 60, at(5, 23), at(5, 11), at(5, 11)},                 // an occurrence falls on now
        {at(4, 10), 1440 * 2 + 90, at(20, 0), at(9, 12), at(10, 14, 30)}, // days, hours and minutes
        {at(5, 10), 0, at(5, 23), at(5, 13, 30), std::nullopt},           // a single message
    };
    qint64 transaction = 20;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.requested.toString(Qt::ISODate).toStdString() + " every " + std::to_string(c.interval));
        env.clock.set(c.now);
        const qint64 id =
            add_message({u"bob"_s, ++transaction, c.requested, c.interval, c.stop, {}, u"Round"_s, u"timer"_s});

        run();

        EXPECT_TRUE(row(id)->pending());
        const std::vector<MessageRow> added = rows(id);
        if (!c.next) {
            EXPECT_TRUE(added.empty());
            continue;
        }
        ASSERT_EQ(added.size(), 1u);
        const MessageRow& next = added.front();
        EXPECT_TRUE(next.waiting());
        EXPECT_EQ(next.requested, stored(*c.next));
        EXPECT_EQ(next.recipient, u"Bob"_s); // the recipient row's name
        EXPECT_EQ(next.pin, u"5551234"_s);
        EXPECT_EQ(next.carrier, u"tapnet"_s);
        EXPECT_EQ(next.repeat_interval, c.interval);
        EXPECT_EQ(next.repeat_stop, stored(c.stop));
        EXPECT_EQ(next.transaction, transaction);
        EXPECT_EQ(next.message, u"Round"_s);
        EXPECT_EQ(next.from, u"timer"_s);
        EXPECT_EQ(next.last_try, stored(c.now.addSecs(-30)));
        db().exec(u"DELETE FROM cv_messages WHERE cv_scheduled = 0"_s); // the next case starts clean
    }
}

TEST_F(SchedulerTest, ASeriesRunsUpToItsStopAndNoFurther)
{
    add_recipient(u"bob"_s, u"1"_s, u"tapnet"_s);
    env.clock.set(at(5, 10, 30));
    add_message({u"bob"_s, 9, at(5, 10), 60, at(5, 12)});
    for (const QDateTime& tick : {at(5, 10, 30), at(5, 11), at(5, 12), at(5, 13)}) {
        env.clock.set(tick);
        for (int age = 0; age < 4; ++age) {
            scheduler.trans_list.inc_trans_life(); // the ticks between two calls far apart
        }
        run();
    }
    const std::vector<MessageRow> series = rows();
    ASSERT_EQ(series.size(), 3u);
    QStringList requested;
    for (const MessageRow& occurrence : series) {
        EXPECT_TRUE(occurrence.pending());
        requested << occurrence.requested;
    }
    EXPECT_EQ(requested, (QStringList{stored(at(5, 10)), stored(at(5, 11)), stored(at(5, 12))}));
}

TEST_F(SchedulerTest, SeriesOfGroupsDuplicatesAndUnknownRecipients)
{
    add_recipient(u"ann"_s, u"101"_s, u"tapnet"_s);
    add_group(u"ops"_s, {u"ann"_s});
    env.clock.set(at(5, 13, 30));
    const auto repeating = [](const QString& recipient, qint64 transaction) {
        return Message{recipient, transaction, at(5, 10), 60, at(5, 23)};
    };

    // A group's series is carried by the group's row: the next occurrence names the group.
    const qint64 group_row = add_message(repeating(u"ops"_s, 30));
    run();
    std::vector<MessageRow> added = rows(group_row);
    ASSERT_EQ(recipients_of(added), (QStringList{u"ops"_s, u"ann"_s}));
    EXPECT_TRUE(added[0].waiting());
    EXPECT_EQ(added[0].requested, stored(at(5, 14)));
    EXPECT_EQ(added[0].pin, u"G-ops"_s);
    EXPECT_EQ(added[0].carrier, u"groupnet"_s);
    EXPECT_EQ(added[0].repeat_interval, 60);
    EXPECT_EQ(added[0].transaction, 30);
    EXPECT_TRUE(added[1].pending());
    EXPECT_EQ(added[1].repeat_interval, 0); // members do not repeat

    // A row dropped as a duplicate keeps its series alive.
    const qint64 duplicate = add_message(repeating(u"ann"_s, 30));
    run();
    EXPECT_FALSE(row(duplicate).has_value());
    added = rows(duplicate);
    ASSERT_EQ(added.size(), 1u);
    EXPECT_EQ(added[0].recipient, u"ann"_s);
    EXPECT_EQ(added[0].requested, stored(at(5, 14)));

    // A row whose recipient is gone ends its series.
    const qint64 unknown = add_message(repeating(u"nobody"_s, 31));
    run();
    EXPECT_TRUE(row(unknown)->failed());
    EXPECT_TRUE(rows(unknown).empty());
}

TEST_F(SchedulerTest, AMemberOfTwoGroupsOfOneSendIsDeliveredOnce)
{
    add_recipient(u"ann"_s, u"101"_s, u"tapnet"_s);
    add_recipient(u"ben"_s, u"102"_s, u"tapnet"_s);
    add_recipient(u"cy"_s, u"103"_s, u"tapnet"_s);
    add_group(u"day"_s, {u"ann"_s, u"ben"_s});
    add_group(u"night"_s, {u"ben"_s, u"cy"_s});
    const qint64 first = add_message({u"day"_s, 50});
    add_message({u"night"_s, 50});

    run();

    std::vector<MessageRow> members = rows(first + 1);
    EXPECT_EQ(recipients_of(members), (QStringList{u"ann"_s, u"ben"_s, u"cy"_s}));
    for (const MessageRow& member : members) {
        EXPECT_TRUE(member.pending());
    }

    // Another send is another transaction: ben gets it again.
    const qint64 second = add_message({u"night"_s, 51});
    run();
    members = rows(second);
    EXPECT_EQ(recipients_of(members), (QStringList{u"ben"_s, u"cy"_s}));
}

TEST_F(SchedulerTest, OnlyTheRunOfATransactionsFirstPairsIsLookedAt)
{
    add_recipient(u"ann"_s, u"101"_s, u"tapnet"_s);
    add_recipient(u"ben"_s, u"102"_s, u"tapnet"_s);
    // Pairs of earlier ticks: ben's lies behind an entry of another transaction, so it is not seen.
    scheduler.trans_list.add(7, u"ann"_s);
    scheduler.trans_list.add(8, u"zed"_s);
    scheduler.trans_list.add(7, u"ben"_s);
    const qint64 ann = add_message({u"ann"_s, 7});
    const qint64 ben = add_message({u"ben"_s, 7});
    const qint64 ann_again = add_message({u"ann"_s, 9});

    run();

    EXPECT_FALSE(row(ann).has_value());
    EXPECT_TRUE(row(ben)->pending());
    EXPECT_TRUE(row(ann_again)->pending());
    EXPECT_EQ(scheduler.trans_list.size(), 5u); // ben's pair written again, and ann's of transaction 9
}

TEST_F(SchedulerTest, AdHocRowsKeepTheirNumbers)
{
    add_recipient(u"field pager"_s, u"not used"_s, u"pagenet"_s, false, false, true);
    const qint64 first = add_message({.recipient = u"field pager"_s, .transaction = 60, .pin = u"111"_s});
    const qint64 second = add_message({.recipient = u"field pager"_s, .transaction = 60, .pin = u"222"_s});
    const qint64 again = add_message({.recipient = u"field pager"_s, .transaction = 60, .pin = u"111"_s});
    const qint64 series =
        add_message({u"field pager"_s, 61, env.clock.now(), 15, env.clock.now().addSecs(3600), u"333"_s});

    run();

    for (const auto& [id, pin] :
         {std::pair{first, u"111"_s}, std::pair{second, u"222"_s}, std::pair{series, u"333"_s}}) {
        const MessageRow kept = *row(id);
        EXPECT_TRUE(kept.pending());
        EXPECT_EQ(kept.pin, pin);
        EXPECT_EQ(kept.carrier, u"pagenet"_s);
    }
    EXPECT_FALSE(row(again).has_value()); // the same number twice in one send
    const std::vector<MessageRow> next = rows(series);
    ASSERT_EQ(next.size(), 1u);
    EXPECT_EQ(next[0].pin, u"333"_s);
    EXPECT_EQ(next[0].requested, stored(env.clock.now().addSecs(15 * 60)));
}

TEST_F(SchedulerTest, AnExpansionThatCannotBeWrittenLeavesNothingOfItAndTheGroupWaiting)
{
    for (const QString& person : {u"ann"_s, u"ben"_s, u"cy"_s}) {
        add_recipient(person, u"1"_s, u"tapnet"_s);
    }
    add_group(u"ops"_s, {u"ann"_s, u"ben"_s, u"cy"_s});
    // The third member's row cannot be written, time after time.
    db().exec(u"CREATE TRIGGER refuse_cy BEFORE INSERT ON cv_messages WHEN NEW.cv_recipient = 'cy' "
              "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s);
    const qint64 group_row = add_message({u"ops"_s, 88});

    EXPECT_THROW(run(), ProgramHalted);

    const std::vector<MessageRow> all = rows();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_TRUE(all[0].waiting());
    EXPECT_EQ(all[0].transaction, 88);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_TRUE(env.prompter.boxes[0].text.contains(u"Procedure: schedule_messages"_s));

    // Once the cause is gone, the group expands whole.
    db().exec(u"DROP TRIGGER refuse_cy"_s);
    scheduler = SchedulerState{};
    run();
    EXPECT_TRUE(row(group_row)->done_well());
    EXPECT_EQ(recipients_of(rows(group_row)), (QStringList{u"ann"_s, u"ben"_s, u"cy"_s}));
}

// A pinned clock that runs an action at its first wait: what another process does while the error path waits.
class ActingClock : public testing::PinnedClock
{
public:
    using PinnedClock::PinnedClock;
    void wait(int milliseconds) override
    {
        PinnedClock::wait(milliseconds);
        if (on_first_wait) {
            std::exchange(on_first_wait, nullptr)();
        }
    }
    std::function<void()> on_first_wait;
};

TEST_F(SchedulerTest, AnExpansionKeptWaitingByAnotherWriterHappensOnceWhenItLetsGo)
{
    for (const QString& person : {u"ann"_s, u"ben"_s, u"cy"_s}) {
        add_recipient(person, person, u"tapnet"_s);
    }
    add_group(u"ops"_s, {u"ann"_s, u"ben"_s, u"cy"_s});
    const qint64 group_row = add_message({u"ops"_s, 89});

    ActingClock clock(env.clock.now());
    AppState busy_state(env.prompter, clock, platform::Registry(env.registry_root()), env.runtime_dir());
    busy_state.global_db_folder = state->global_db_folder;
    busy_state.user_db_folder = state->user_db_folder;
    open_database(busy_state);
    busy_state.global_db.set_busy_timeout(1);
    store::Database other = store::Database::open(global_db_path(*state));
    other.exec(u"BEGIN IMMEDIATE"_s);
    clock.on_first_wait = [&other] { other.exec(u"ROLLBACK"_s); };

    schedule_messages(busy_state, scheduler);

    EXPECT_EQ(clock.waits.size(), 1);
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
    EXPECT_TRUE(row(group_row)->done_well());
    const std::vector<MessageRow> members = rows(group_row);
    EXPECT_EQ(recipients_of(members), (QStringList{u"ann"_s, u"ben"_s, u"cy"_s}));
    for (const MessageRow& member : members) {
        EXPECT_TRUE(member.pending());
        EXPECT_EQ(member.pin, member.recipient);
    }
}

} // namespace
} // namespace cvd::queue
