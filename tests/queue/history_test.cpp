#include "core/app_state.h"
#include "queue/history.h"
#include "queue/stored_message.h"
#include "store/database.h"
#include "support/database_test.h"
#include "support/printers.h"

#include <QLocale>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::queue {
namespace {

class HistoryTest : public testing::DatabaseTest
{
protected:
    HistoryTest() : DatabaseTest(Start::LoadSettings) {}

    struct Message
    {
        QString recipient = u"bob"_s;
        QString pin = QString();
        QString text = u"hello"_s;
        QString requested = u"2026-11-20 08:00:00"_s;
        QString sent = QString(); // empty: never sent
        QString from = QString();
        int scheduled = 0;
        int sent_flag = 0;
        int error = 0;
    };

    qint64 add(const Message& message)
    {
        store::Statement& insert = db().cached(
            u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_date_time_requested, cv_date_time_sent, "
            "cv_from, cv_scheduled, cv_sent, cv_error, cv_transaction, cv_repeat_interval) "
            "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, 7, 0)"_s);
        insert.bind(1, message.recipient).bind(2, message.pin).bind(3, message.text).bind(4, message.requested);
        if (message.sent.isEmpty()) {
            insert.bind_null(5);
        } else {
            insert.bind(5, message.sent);
        }
        insert.bind(6, message.from).bind(7, message.scheduled).bind(8, message.sent_flag).bind(9, message.error);
        insert.exec();
        return db().last_insert_id();
    }

    void add_recipient(const QString& name, const QString& full_name)
    {
        store::Statement insert = db().prepare(u"INSERT INTO cv_recipients (cv_name, cv_full_name) VALUES (?1, ?2)"_s);
        insert.bind(1, name).bind(2, full_name).exec();
    }

    static QList<qint64> ids(const QList<HistoryRow>& rows)
    {
        QList<qint64> result;
        for (const HistoryRow& row : rows) {
            result.append(row.message_id);
        }
        return result;
    }
};

TEST(HistoryStatus, FollowsTheFlagsAndShowsEveryUnsentRowPendingAfterARequeue)
{
    struct Case
    {
        bool sent, error, scheduled;
        const char16_t* first_fill;
        const char16_t* after_requeue;
    };
    const Case cases[] = {
        {true, true, false, u"Failed", u"Failed"},         {true, true, true, u"Failed", u"Failed"},
        {true, false, true, u"Successful", u"Successful"}, {false, false, true, u"Pending", u"Pending"},
        {false, true, true, u"Pending", u"Pending"},       {false, false, false, u"Scheduled", u"Pending"},
        {false, true, false, u"Scheduled", u"Pending"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(history_status(c.sent, c.error, c.scheduled, StatusRule::FirstFill),
                  QString::fromUtf16(c.first_fill));
        EXPECT_EQ(history_status(c.sent, c.error, c.scheduled, StatusRule::AfterRequeue),
                  QString::fromUtf16(c.after_requeue));
    }
}

TEST(HistoryDates, FloatsCountDaysFromTheEndOf1899AndAMissingDateIsZero)
{
    EXPECT_EQ(general_number_text(ole_date_number(QDateTime(QDate(1899, 12, 31), QTime(12, 0)))), u"1.5"_s);
    EXPECT_EQ(general_number_text(ole_date_number(QDateTime(QDate(2026, 11, 20), QTime(6, 0)))), u"46346.25"_s);
    EXPECT_EQ(general_number_text(ole_date_number(std::nullopt)), u"0"_s);
    EXPECT_EQ(general_date_text(std::nullopt), QString());
    EXPECT_TRUE(general_date_text(QDateTime(QDate(2026, 11, 20), QTime(6, 0, 42))).contains(u"42"_s));
}

TEST(HistorySorts, AHeadingTogglesOnlyAgainstItsOwnAscendingSort)
{
    struct Case
    {
        int column;
        const char16_t* stored;
        std::optional<HistorySort> expected;
    };
    const Case cases[] = {
        {1, u"", HistorySort::RequestedAscending},
        {1, u"SortByRequestedAscending", HistorySort::RequestedDescending},
        {1, u"SortByRequestedDescending", HistorySort::RequestedAscending},
        {4, u"SortByToAscending", HistorySort::ToDescending},
        {4, u"SortByRequestedAscending", HistorySort::ToAscending},
        {6, u"SortByMessageAscending", HistorySort::MessageDescending},
        {3, u"SortByStatusAscending", HistorySort::StatusDescending},
        {0, u"", std::nullopt},
        {7, u"", std::nullopt},
        {-1, u"", std::nullopt},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(history_heading_sort(c.column, QString::fromUtf16(c.stored)), c.expected) << c.column;
    }
    EXPECT_EQ(history_sort_name(HistorySort::FromDescending), u"SortByFromDescending"_s);
    EXPECT_EQ(history_sort_keys(HistorySort::MessageAscending), (QList<int>{6, 7, 8, 4, 3, 5}));
}

TEST(HistoryText, FieldsAreCutOrFilledToTheirWidthsAndTheMessageStandsWhole)
{
    HistoryRow row;
    row.columns[kHistoryRequested] = u"11/20/26 8:00:00 AM"_s;
    row.columns[kHistorySent] = QString();
    row.columns[kHistoryStatus] = u"Successful"_s;
    row.columns[kHistorySentTo] = u"Robert Example of the Night Shift Team:5551234"_s;
    row.columns[kHistorySentFrom] = u"desk"_s;
    row.columns[kHistoryMessage] = u"call the office now please"_s;
    const QString print = history_text_line(row, HistoryLayout::Print);
    EXPECT_EQ(print, u"11/20/26 8:00:00 AM  " + QString(21, u' ') + u"Successful " +
                         u"Robert Example of the Night Shift T " + u"desk" + QString(32, u' ') +
                         u"call the office now please\r\n"_s);
    const QString clipboard = history_text_line(row, HistoryLayout::Clipboard);
    EXPECT_TRUE(clipboard.contains(u"Robert Example of the Night Shift Team:5 desk"_s)) << clipboard.toStdString();
    EXPECT_TRUE(history_text_heading(HistoryLayout::Print)
                    .startsWith(u"Requested            Sent                 Status     Sent To      "_s));
    EXPECT_TRUE(history_text_heading(HistoryLayout::Clipboard).endsWith(u"-------\r\n"_s));
    // The heading's columns line up with the fields.
    const QStringList print_lines = history_text_heading(HistoryLayout::Print).split(u"\r\n"_s);
    EXPECT_EQ(print_lines.at(0).indexOf(u"Message"_s), print.indexOf(u"call"_s));
    const QStringList clip_lines = history_text_heading(HistoryLayout::Clipboard).split(u"\r\n"_s);
    EXPECT_EQ(clip_lines.at(1).lastIndexOf(u"-------"_s), clipboard.indexOf(u"call"_s));
}

TEST_F(HistoryTest, RowsShowLabelsPinsFlattenedTextsAndZeroForAMessageNeverSent)
{
    add_recipient(u"bob"_s, u"Bob Baker"_s);
    const qint64 known = add({.pin = u"  "_s, .text = u"one\ttwo\r\nthree"_s, .from = u"ops"_s});
    const qint64 adhoc = add({.recipient = u"walkin"_s,
                              .pin = u"5551234"_s,
                              .requested = u"2026-11-20 09:00:00"_s,
                              .sent = u"2026-11-20 09:01:00"_s,
                              .scheduled = -1,
                              .sent_flag = -1});
    HistoryView view(db(), HistorySort::RequestedAscending, StatusRule::FirstFill);
    ASSERT_EQ(view.row_count(), 2);
    const QList<HistoryRow> rows = view.rows(0, 10);
    ASSERT_EQ(ids(rows), (QList<qint64>{known, adhoc}));
    EXPECT_EQ(rows[0].columns[kHistorySentTo], u"Bob Baker"_s);
    EXPECT_EQ(rows[0].columns[kHistoryMessage], u"one two  three"_s);
    EXPECT_EQ(rows[0].columns[kHistorySent], QString());
    EXPECT_EQ(rows[0].columns[kHistorySentFloat], u"0"_s);
    EXPECT_EQ(rows[0].columns[kHistoryStatus], u"Scheduled"_s);
    EXPECT_EQ(rows[0].columns[kHistorySentFrom], u"ops"_s);
    EXPECT_EQ(rows[0].columns[kHistoryMessageId], QString::number(known));
    EXPECT_EQ(rows[1].columns[kHistorySentTo], u"walkin:5551234"_s);
    EXPECT_EQ(rows[1].columns[kHistoryStatus], u"Successful"_s);
    EXPECT_EQ(rows[1].columns[kHistoryRequestedFloat], general_number_text(46346.375));
    EXPECT_EQ(rows[1].text().split(u'\t').size(), kHistoryColumnCount);
}

TEST_F(HistoryTest, SortsOnSeveralKeysInOneDirection)
{
    add_recipient(u"zed"_s, u"Alice"_s);
    // By "Sent To" (the label, not the stored key), ties broken by request time, then send time.
    const qint64 carl_late = add({.recipient = u"carl"_s, .requested = u"2026-11-20 10:00:00"_s});
    const qint64 alice = add({.recipient = u"zed"_s, .requested = u"2026-11-20 11:00:00"_s});
    const qint64 carl_early_sent = add({.recipient = u"carl"_s,
                                        .requested = u"2026-11-20 09:00:00"_s,
                                        .sent = u"2026-11-20 09:05:00"_s,
                                        .scheduled = -1,
                                        .sent_flag = -1});
    const qint64 carl_early_unsent = add({.recipient = u"CARL"_s, .requested = u"2026-11-20 09:00:00"_s});
    const qint64 failed = add({.recipient = u"dan"_s,
                               .requested = u"2026-11-20 08:00:00"_s,
                               .sent = u"2026-11-20 08:01:00"_s,
                               .scheduled = -1,
                               .sent_flag = -1,
                               .error = -1});
    {
        HistoryView view(db(), HistorySort::ToAscending, StatusRule::FirstFill);
        EXPECT_EQ(ids(view.rows(0, 10)), (QList<qint64>{alice, carl_early_unsent, carl_early_sent, carl_late, failed}));
    }
    {
        HistoryView view(db(), HistorySort::ToDescending, StatusRule::FirstFill);
        EXPECT_EQ(ids(view.rows(0, 10)), (QList<qint64>{failed, carl_late, carl_early_sent, carl_early_unsent, alice}));
    }
    {
        // Requested, then sent (a missing send time first), then "Sent To".
        HistoryView view(db(), HistorySort::RequestedAscending, StatusRule::FirstFill);
        EXPECT_EQ(ids(view.rows(0, 10)), (QList<qint64>{failed, carl_early_unsent, carl_early_sent, carl_late, alice}));
    }
    {
        // Status as text: Failed, Scheduled, Successful; within a status by request time.
        HistoryView view(db(), HistorySort::StatusAscending, StatusRule::FirstFill);
        EXPECT_EQ(ids(view.rows(0, 10)), (QList<qint64>{failed, carl_early_unsent, carl_late, alice, carl_early_sent}));
        EXPECT_EQ(ids(view.rows(3, 10)), (QList<qint64>{alice, carl_early_sent}));
    }
    {
        // After a requeue every unsent row is "Pending", which sorts before "Successful" as before.
        HistoryView view(db(), HistorySort::StatusDescending, StatusRule::AfterRequeue);
        EXPECT_EQ(view.rows(0, 1).front().message_id, carl_early_sent);
        EXPECT_EQ(view.rows(1, 1).front().columns[kHistoryStatus], u"Pending"_s);
    }
}

TEST_F(HistoryTest, DeepPagesReadTheSameOrderAsTheIndexAndLaterRowsStayOut)
{
    {
        store::Transaction transaction(db());
        for (int i = 0; i < 6000; ++i) {
            // Many equal request times, so the later keys decide.
            add({.recipient = u"r%1"_s.arg(i % 17),
                 .text = u"m%1"_s.arg(i % 5),
                 .requested = u"2026-11-20 0%1:00:00"_s.arg(i % 7)});
        }
        transaction.commit();
    }
    HistoryView direct(db(), HistorySort::RequestedDescending, StatusRule::FirstFill);
    const QList<qint64> expected = ids(direct.rows(0, 6000));
    add({.requested = u"2026-11-19 00:00:00"_s});
    HistoryView view(db(), HistorySort::RequestedDescending, StatusRule::FirstFill);
    add({.requested = u"2026-11-21 00:00:00"_s}); // after the view was taken: not shown
    ASSERT_EQ(view.row_count(), 6001);
    // A deep page is read from the worked-out order; it continues the order of the first pages.
    const QList<qint64> deep = ids(view.rows(5990, 100));
    ASSERT_EQ(deep.size(), 11);
    EXPECT_EQ(deep.mid(0, 10), expected.mid(5990, 10));
    EXPECT_EQ(ids(view.rows(0, 6000)), expected);
    qint64 walked = 0;
    view.walk(0, [&](qint64 position, const HistoryRow&) {
        EXPECT_EQ(position, walked);
        ++walked;
        return true;
    });
    EXPECT_EQ(walked, 6001);
    // A sort without an index reads its first page straight, and the same rows lead the whole order.
    HistoryView by_message(db(), HistorySort::MessageAscending, StatusRule::FirstFill);
    const QList<qint64> first_page = ids(by_message.rows(0, kHistoryPageRows));
    const QList<qint64> whole = ids(by_message.rows(0, 6001));
    ASSERT_EQ(whole.size(), 6001);
    EXPECT_EQ(first_page, whole.mid(0, kHistoryPageRows));
    EXPECT_EQ(ids(by_message.rows(kHistoryPageRows - 6, 12)), whole.mid(kHistoryPageRows - 6, 12));
}

TEST_F(HistoryTest, AnOrderWorkedOutBeforeTheDatabaseWasOpenedAnewIsWorkedOutAgain)
{
    const qint64 late = add({.recipient = u"amy"_s, .requested = u"2026-11-20 10:00:00"_s});
    const qint64 early = add({.recipient = u"bob"_s, .requested = u"2026-11-20 09:00:00"_s});
    HistoryView view(db(), HistorySort::ToDescending, StatusRule::FirstFill);
    const QString path = db().path();
    db().close();
    db() = store::Database::open(path);
    EXPECT_EQ(ids(view.rows(0, 10)), (QList<qint64>{early, late}));
}

TEST_F(HistoryTest, RequeueSendsAnyRowAgainWithAFreshTransactionEach)
{
    const qint64 pending = add({.scheduled = -1});
    const qint64 failed = add({.sent = u"2026-11-20 08:01:00"_s, .scheduled = -1, .sent_flag = -1, .error = -1});
    const qint64 untouched = add({.sent = u"2026-11-20 08:01:00"_s, .scheduled = -1, .sent_flag = -1});
    const QDateTime now(QDate(2026, 11, 23), QTime(9, 30));
    requeue_history_rows(db(), {pending, failed}, now);
    for (const qint64 id : {pending, failed}) {
        EXPECT_EQ(
            scalar(u"SELECT cv_scheduled + cv_sent + cv_error FROM cv_messages WHERE cv_message_id = %1"_s.arg(id)), 0);
        EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_messages WHERE cv_message_id = %1 AND "
                         "cv_date_time_requested = '2026-11-23 09:30:00'"_s.arg(id)),
                  1);
    }
    EXPECT_EQ(
        scalar(u"SELECT count(DISTINCT cv_transaction) FROM cv_messages WHERE cv_message_id IN (%1, %2)"_s.arg(pending)
                   .arg(failed)),
        2);
    EXPECT_NE(scalar(u"SELECT cv_transaction FROM cv_messages WHERE cv_message_id = %1"_s.arg(pending)), 7);
    EXPECT_EQ(scalar(u"SELECT cv_sent FROM cv_messages WHERE cv_message_id = %1"_s.arg(untouched)), -1);
}

TEST_F(HistoryTest, ReadsAStoredMessageForCopyAndNothingForARowThatIsGone)
{
    const qint64 id = add({.recipient = u"bob"_s, .text = u"again"_s});
    const std::optional<StoredMessage> stored = read_stored_message(db(), id);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->recipient, u"bob"_s);
    EXPECT_EQ(stored->text, u"again"_s);
    EXPECT_EQ(stored->requested, QDateTime(QDate(2026, 11, 20), QTime(8, 0)));
    EXPECT_FALSE(read_stored_message(db(), id + 1));
}

} // namespace
} // namespace cvd::queue
