// The press of SEND: rows, transaction, ad hoc numbers, the schedule, the refusals.
#include "core/app_state.h"
#include "queue/send_message.h"
#include "store/database.h"
#include "support/database_test.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::queue {
namespace {

using addressbook::PickerEntry;

TEST(PickedTarget, KeyPinAndPriorityFollowTheEntry)
{
    const struct
    {
        PickerEntry entry;
        PickedTarget target;
    } cases[] = {
        {{u"Bob Smith"_s, u"BobS"_s, u" 7 "_s}, {u"bobs"_s, QString(), 7}},
        {{u"(A) Fax | 555 12 "_s, u"(A) fx"_s, QString()}, {u"fx"_s, u"555 12"_s, 0}},
        {{u"Fax (A) | 9|8"_s, u"fax (a)"_s, QString()}, {u"(a)"_s, u"9|8"_s, 0}}, // marked behind: loses its front
        {{u"(A) x | "_s + QString(120, u'1'), u"(A) x"_s, {}}, {u"x"_s, QString(99, u'1'), 0}}, // the blank counts
        {{u"Long"_s, QString(50, u'K'), u"x"_s}, {QString(45, u'k'), QString(), 0}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(picked_target(c.entry), c.target) << c.entry.label.toStdString();
    }
}

class SendMessageTest : public testing::DatabaseTest
{
protected:
    QString column(qint64 id, const QString& name)
    {
        store::Statement query = db().prepare(u"SELECT "_s + name + u" FROM cv_messages WHERE cv_message_id = ?1"_s);
        query.bind(1, id);
        return query.step() ? query.text(0).value_or(QString()) : u"<none>"_s;
    }
};

TEST_F(SendMessageTest, TwoRecipientsShareOneTransactionInOneCommit)
{
    const SendOutcome sent =
        send_message(*state, {{u"Bob"_s, u"bob"_s, u"3"_s}, {u"Ann"_s, u"ann"_s, QString()}}, u"  Disk full  "_s, {});
    ASSERT_FALSE(sent.refusal);
    ASSERT_EQ(sent.message_ids.size(), 2);
    EXPECT_GT(sent.transaction, 0);
    for (const qint64 id : sent.message_ids) {
        EXPECT_EQ(column(id, u"cv_transaction"_s).toInt(), sent.transaction);
        EXPECT_EQ(column(id, u"cv_message"_s), u"Disk full"_s);
        EXPECT_EQ(column(id, u"cv_repeat_stop"_s), column(id, u"cv_date_time_requested"_s));
        EXPECT_EQ(column(id, u"cv_scheduled"_s), u"0"_s);
    }
    EXPECT_EQ(column(sent.message_ids.at(0), u"cv_priority"_s), u"3"_s);
    EXPECT_EQ(column(sent.message_ids.at(1), u"cv_recipient"_s), u"ann"_s);
    // A second press is a new send.
    EXPECT_NE(send_message(*state, {{u"Bob"_s, u"bob"_s, {}}}, u"again"_s, {}).transaction, sent.transaction);
}

TEST_F(SendMessageTest, AnAdHocRecipientPickedTwiceGetsTwoNumbers)
{
    const PickerEntry adhoc{u"(A) Fax"_s, u"fx"_s, u"9"_s};
    const SendOutcome sent = send_message(
        *state, {*addressbook::adhoc_picked_entry(adhoc, u"111"_s), *addressbook::adhoc_picked_entry(adhoc, u"222"_s)},
        u"hello"_s, {});
    ASSERT_EQ(sent.message_ids.size(), 2);
    EXPECT_EQ(column(sent.message_ids.at(0), u"cv_recipient"_s), u"fx"_s);
    EXPECT_EQ(column(sent.message_ids.at(1), u"cv_recipient"_s), u"fx"_s);
    EXPECT_EQ(column(sent.message_ids.at(0), u"cv_pin"_s), u"111"_s);
    EXPECT_EQ(column(sent.message_ids.at(1), u"cv_pin"_s), u"222"_s);
}

TEST_F(SendMessageTest, TextIsCutTo6000AndTheScheduleIsApplied)
{
    ScheduleSelection schedule;
    schedule.schedule_flag = true;
    schedule.repeat_flag = true;
    schedule.schedule_time = QDateTime(QDate(2026, 12, 1), QTime(8, 0));
    schedule.repeat_stop_time = QDateTime(QDate(2026, 12, 31), QTime(8, 0));
    schedule.repeat_minutes = 1440;
    const SendOutcome sent = send_message(*state, {{u"Bob"_s, u"bob"_s, {}}}, QString(6001, u'x'), schedule);
    ASSERT_EQ(sent.message_ids.size(), 1);
    const qint64 id = sent.message_ids.at(0);
    EXPECT_EQ(column(id, u"cv_message"_s).size(), 6000);
    EXPECT_EQ(column(id, u"cv_date_time_requested"_s), u"2026-12-01 08:00:00"_s);
    EXPECT_EQ(column(id, u"cv_repeat_stop"_s), u"2026-12-31 08:00:00"_s);
    EXPECT_EQ(column(id, u"cv_repeat_interval"_s), u"1440"_s);
}

TEST_F(SendMessageTest, NothingPickedOrNoTextIsRefusedWithoutARow)
{
    const SendOutcome no_one = send_message(*state, {}, u"text"_s, {});
    ASSERT_TRUE(no_one.refusal);
    EXPECT_EQ(no_one.refusal->title, u"No Recipient"_s);
    const SendOutcome no_text = send_message(*state, {{u"Bob"_s, u"bob"_s, {}}}, u"   "_s, {});
    ASSERT_TRUE(no_text.refusal);
    EXPECT_EQ(no_text.refusal->title, u"No Message"_s);
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_messages"_s), 0);
}

} // namespace
} // namespace cvd::queue
