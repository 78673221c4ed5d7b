// The queue folders below their windows: what each view selects, the change test, and what Cancel, Requeue
// and the detail read and write.
#include "core/app_state.h"
#include "core/databases.h"
#include "queue/folders.h"
#include "queue/message_detail.h"
#include "store/database.h"
#include "support/database_test.h"
#include "support/message_rows.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::queue {
namespace {

using testing::add_message;
using testing::MessageRow;
using State = MessageRow::State;

class FoldersTest : public testing::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_ad_hoc) VALUES "
                  "('bob', 'Bob Smith', 0), ('fx', 'Fax', -1)"_s);
    }

    qint64 add(State state, qint64 transaction, const QString& recipient = u"bob"_s)
    {
        MessageRow row;
        row.state = state;
        row.transaction = transaction;
        row.recipient = recipient;
        return add_message(db(), row);
    }

    QList<qint64> ids(Folder folder)
    {
        QList<qint64> result;
        for (const FolderRow& row : folder_rows(db(), folder, kFirst)) {
            result.append(row.id);
        }
        return result;
    }

    qint64 flags_of(qint64 id)
    {
        return scalar(u"SELECT cv_scheduled * 100 + cv_sent * 10 + cv_error FROM cv_messages WHERE cv_message_id = "_s +
                      QString::number(id));
    }

    static constexpr qint64 kFirst = 100;
};

TEST_F(FoldersTest, EachViewShowsItsStateOfThisRunAndPendingLetsScreenRowsThrough)
{
    const qint64 old_waiting = add(State::Waiting, 5);
    const qint64 waiting = add(State::Waiting, 101);
    add(State::Waiting, 101, u"cvdscreen"_s);
    const qint64 pending = add(State::Pending, 101);
    add(State::Pending, 50);
    const qint64 screen_pending = add(State::Pending, 101, u"cvdscreen"_s);
    const qint64 sent = add(State::Sent, 102);
    add(State::Sent, 0); // a closed group row
    add(State::Sent, 50);
    const qint64 failed = add(State::Failed, 103);
    add(State::Failed, 40);
    add(State::Failed, 103, u"cvdscreen"_s);

    const struct
    {
        Folder folder;
        QList<qint64> rows;
        qint64 total;
    } cases[] = {
        {Folder::Scheduled, {old_waiting, waiting}, old_waiting + waiting},
        // The change test leaves the screen row out; the row query shows it.
        {Folder::Pending, {pending, screen_pending}, pending},
        {Folder::Sent, {sent}, sent},
        {Folder::Bad, {failed}, failed},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.folder));
        EXPECT_EQ(ids(c.folder), c.rows);
        EXPECT_EQ(folder_id_total(db(), c.folder, kFirst), c.total);
    }
    db().exec(u"DELETE FROM cv_messages"_s);
    EXPECT_EQ(folder_id_total(db(), Folder::Sent, kFirst), 0); // a null sum counts as 0
}

TEST_F(FoldersTest, TheContentMarkMovesWithEveryWriteOfAnyConnectionOnly)
{
    const ContentMark start = content_mark(db());
    folder_rows(db(), Folder::Sent, kFirst); // reading moves nothing
    EXPECT_EQ(content_mark(db()), start);
    add(State::Sent, 101);
    const ContentMark own = content_mark(db());
    EXPECT_NE(own, start);
    store::Database other = store::Database::open(global_db_path(*state));
    other.exec(u"UPDATE cv_messages SET cv_error = -1"_s);
    EXPECT_NE(content_mark(db()), own);
}

TEST_F(FoldersTest, RowsCarryLabelOneLineTextAndTheDateAsANumber)
{
    MessageRow adhoc;
    adhoc.recipient = u"fx"_s;
    adhoc.pin = u"555"_s;
    adhoc.message = u"line\tone\r\nline two"_s;
    add_message(db(), adhoc);
    MessageRow gone = adhoc;
    gone.recipient = u"ghost"_s;
    gone.requested = adhoc.requested.addSecs(60);
    add_message(db(), gone);
    add(State::Waiting, 1);

    const QList<FolderRow> rows = folder_rows(db(), Folder::Scheduled, kFirst);
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows.at(0).label, u"Fax:555"_s);
    EXPECT_EQ(rows.at(0).message, u"line one  line two"_s);
    const double nine_am = static_cast<double>(QDate(1899, 12, 30).daysTo(QDate(2026, 11, 23))) + 0.375;
    EXPECT_DOUBLE_EQ(rows.at(0).date_number, nine_am);
    EXPECT_EQ(rows.at(0).date, u"2026-11-23 09:00:00"_s);
    EXPECT_EQ(rows.at(1).label, u"Bob Smith"_s);
    EXPECT_EQ(rows.at(2).label, u"ghost"_s); // gone from the address book: the stored key, never a pin

    // The sent folder dates by the sent time, and a sent row without one sorts as 0.
    const qint64 sent = add(State::Sent, 101);
    db().exec(u"UPDATE cv_messages SET cv_date_time_sent = NULL WHERE cv_message_id = "_s + QString::number(sent));
    const QList<FolderRow> sent_rows = folder_rows(db(), Folder::Sent, kFirst);
    ASSERT_EQ(sent_rows.size(), 1);
    EXPECT_EQ(sent_rows.at(0).date_number, 0.0);
    EXPECT_TRUE(sent_rows.at(0).date.isEmpty());
}

TEST_F(FoldersTest, CancelFailsOnlyUnfinishedRowsAndRequeueOnlyFinishedOnes)
{
    const qint64 waiting = add(State::Waiting, 101);
    const qint64 pending = add(State::Pending, 101);
    const qint64 sent = add(State::Sent, 101);
    const qint64 failed = add(State::Failed, 101);
    const QDateTime now = env.clock.now();

    EXPECT_EQ(cancel_messages(db(), {waiting, pending, sent}, now), 2);
    EXPECT_EQ(flags_of(waiting), -111);
    EXPECT_EQ(flags_of(pending), -111);
    EXPECT_EQ(flags_of(sent), -110); // finished meanwhile: left alone
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_messages WHERE cv_date_time_sent = '2026-11-23 09:30:00'"_s), 2);

    const qint64 still_pending = add(State::Pending, 101);
    EXPECT_EQ(requeue_messages(db(), {sent, failed, still_pending}, now), 2);
    EXPECT_EQ(flags_of(sent), 0);
    EXPECT_EQ(flags_of(failed), 0);
    EXPECT_EQ(flags_of(still_pending), -100);
    EXPECT_EQ(scalar(u"SELECT COUNT(DISTINCT cv_transaction) FROM cv_messages WHERE cv_transaction <> 101"_s), 2);
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_messages WHERE cv_transaction = 101 AND cv_date_time_requested = "
                     "'2026-11-23 09:30:00'"_s),
              0);
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_messages WHERE cv_transaction <> 101 AND cv_date_time_requested = "
                     "'2026-11-23 09:30:00'"_s),
              2);
}

TEST_F(FoldersTest, CopyReadsOnlyRowsStillInTheFoldersStateAndEditDeletesOnlyWaitingRows)
{
    MessageRow repeating;
    repeating.repeat_interval = 90;
    const qint64 waiting = add_message(db(), repeating);
    const qint64 sent = add(State::Sent, 101);
    const qint64 pending = add(State::Pending, 101);

    const std::optional<StoredMessage> stored = read_folder_message(db(), Folder::Scheduled, waiting);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->recipient, u"bob"_s);
    EXPECT_EQ(stored->repeat_interval, 90);
    EXPECT_EQ(stored->requested, repeating.requested);
    EXPECT_EQ(stored->repeat_stop, repeating.requested.addDays(1));
    EXPECT_FALSE(read_folder_message(db(), Folder::Scheduled, sent));
    EXPECT_FALSE(read_folder_message(db(), Folder::Bad, sent));
    EXPECT_TRUE(read_folder_message(db(), Folder::Sent, sent));

    EXPECT_FALSE(delete_waiting_message(db(), pending));
    EXPECT_TRUE(delete_waiting_message(db(), waiting));
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_messages"_s), 2);
}

TEST_F(FoldersTest, DetailHasTheCommonLinesAndEachSourcesOwn)
{
    MessageRow row;
    row.repeat_interval = 1530; // one day, one hour, thirty minutes
    row.message = u"Disk full"_s;
    const qint64 waiting = add_message(db(), row);
    row.recipient = u"fx"_s;
    row.pin = u"555"_s;
    row.state = State::Failed;
    const qint64 failed = add_message(db(), row);
    row.recipient = u"deleted"_s;
    row.state = State::Sent;
    const qint64 sent = add_message(db(), row);

    const QString requested = general_date_text(u"2026-11-23 09:00:00"_s);
    const QString finished = general_date_text(u"2026-11-23 09:01:30"_s);
    const QString head = u"Sender: desk\r\nCarrier: tapnet\r\nPriority: 3\r\nRequested: "_s + requested + u"\r\n"_s;
    const QString tail = u"Message:\r\nDisk full"_s;
    const struct
    {
        int source;
        qint64 id;
        QString text;
    } cases[] = {
        {1, waiting,
         u"To: Bob Smith\r\n"_s + head + u"Repeat Interval: 1 Days, 1 Hours, 30 Minutes\r\nRepeat Stop: "_s +
             general_date_text(u"2026-11-24 09:00:00"_s) + u"\r\n"_s + tail},
        {2, waiting, u"To: Bob Smith\r\n"_s + head + u"Retries: 2\r\nLast Try: "_s + requested + u"\r\n"_s + tail},
        {4, failed, u"To: Fax 555\r\n"_s + head + u"Failed: "_s + finished + u"\r\n"_s + tail},
        {3, sent, u"To: 555\r\n"_s + head + u"Sent: "_s + finished + u"\r\n"_s + tail}, // recipient gone: the pin
        {5, failed, u"To: Fax 555\r\n"_s + head + u"Sent: "_s + finished + u"\r\nStatus: Failed\r\n"_s + tail},
        {5, waiting, u"To: Bob Smith\r\n"_s + head + u"Status: Scheduled\r\n"_s + tail},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.source);
        EXPECT_EQ(message_detail_text(db(), c.source, c.id).value_or(u"none"_s), c.text);
    }
    EXPECT_FALSE(message_detail_text(db(), 3, sent + 10));
    EXPECT_FALSE(message_detail_text(db(), 0, sent));
}

} // namespace
} // namespace cvd::queue
