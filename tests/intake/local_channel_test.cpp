#include "intake/local_channel.h"
#include "platform/datagram.h"
#include "store/database.h"
#include "support/database_test.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::intake {
namespace {

// A bound channel over a program state whose global database knows Bob.
class LocalChannelTest : public testing::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier, cv_group) VALUES ('Bob', 'tapnet', 0)"_s);
        socket_path = env.runtime_dir() + u"/CorvaneDesk.sock"_s;
        ASSERT_TRUE(channel.bind(socket_path)) << channel.error().toStdString();
    }

    void send(quint32 kind, const QString& text)
    {
        QString error;
        ASSERT_TRUE(platform::send_datagram(socket_path, kind, text, &error)) << error.toStdString();
    }

    QList<QStringList> rows()
    {
        QList<QStringList> result;
        store::Statement select = db().prepare(
            u"SELECT cv_recipient, cv_from, cv_message, cv_carrier FROM cv_messages ORDER BY cv_message_id"_s);
        while (select.step()) {
            QStringList row;
            for (int column = 0; column < 4; ++column) {
                row.append(select.text(column).value_or(u"<null>"_s));
            }
            result.append(row);
        }
        return result;
    }

    QString socket_path;
    LocalChannel channel;
};

TEST_F(LocalChannelTest, ActivityLinesKeepTheNewestFiveHundred)
{
    int sent = 0;
    // In small batches, so that the socket's queue (as short as ten datagrams on some machines) never fills.
    for (int batch = 0; batch < 69; ++batch) {
        for (int i = 0; i < 8; ++i) {
            send(kActivityKind, u"line %1"_s.arg(++sent));
        }
        const LocalChannel::Changes changes = channel.drain();
        ASSERT_EQ(changes.activity_lines.size(), 8);
        EXPECT_EQ(changes.activity_lines.last(), u"line %1"_s.arg(sent));
        EXPECT_FALSE(changes.status);
        EXPECT_LE(channel.activity().size(), LocalChannel::kActivityLimit);
    }
    ASSERT_EQ(channel.activity().size(), 500);
    EXPECT_EQ(channel.activity().first(), u"line 53"_s); // 552 sent
    EXPECT_EQ(channel.activity().last(), u"line 552"_s);
    EXPECT_TRUE(channel.reg_messages().isEmpty());
    EXPECT_TRUE(channel.drain().empty()); // nothing left waiting
}

TEST_F(LocalChannelTest, StatusTextsAndMessageLinesAreToldApartByTheirFirstWord)
{
    const struct
    {
        quint32 kind;
        QString text;
        QString status;      // the status afterwards
        QString reg_message; // the line noted, if any
    } cases[] = {
        {kStatusKind, u"Dialing tapnet"_s, u"Dialing tapnet"_s, {}},
        {kStatusKind, u"SendPage bob ops Disk full"_s, u"Dialing tapnet"_s, u"bob ops Disk full"_s},
        {kStatusKind, u"sendpage alice  two  blanks"_s, u"Dialing tapnet"_s, u"alice  two  blanks"_s},
        {kStatusKind, u"sendpage "_s, u"sendpage "_s, {}}, // nothing behind the word: a status
        {kStatusKind, u"sendpager on"_s, u"sendpager on"_s, {}},
        {7, u"sendpage bob ops ignored"_s, u"sendpager on"_s, {}},
        {7, u"ignored"_s, u"sendpager on"_s, {}},
        {kStatusKind, QString(), QString(), {}},
    };
    QStringList noted;
    for (const auto& c : cases) {
        send(c.kind, c.text);
        const LocalChannel::Changes changes = channel.drain();
        if (!c.reg_message.isEmpty()) {
            noted.append(c.reg_message);
        }
        EXPECT_EQ(channel.status(), c.status) << c.text.toStdString();
        EXPECT_EQ(channel.reg_messages(), noted) << c.text.toStdString();
        EXPECT_EQ(changes.messages_noted, c.reg_message.isEmpty() ? 0 : 1);
        EXPECT_EQ(changes.status.has_value(), c.kind == kStatusKind && c.reg_message.isEmpty());
        EXPECT_TRUE(changes.activity_lines.isEmpty());
    }
    EXPECT_TRUE(channel.activity().isEmpty());
}

TEST_F(LocalChannelTest, OneDrainTakesEverythingWaitingInOrder)
{
    send(kStatusKind, u"Connected"_s);
    send(kActivityKind, u"first"_s);
    send(kStatusKind, u"sendpage bob ops one"_s);
    send(kActivityKind, u"second"_s);
    send(kStatusKind, u"SENDPAGE bob ops two"_s);
    send(kStatusKind, u"Idle"_s);
    const LocalChannel::Changes changes = channel.drain();
    EXPECT_EQ(changes.activity_lines, (QStringList{u"first"_s, u"second"_s}));
    EXPECT_EQ(changes.status, u"Idle"_s);
    EXPECT_EQ(changes.messages_noted, 2);
    EXPECT_EQ(channel.reg_messages(), (QStringList{u"bob ops one"_s, u"bob ops two"_s}));
}

TEST_F(LocalChannelTest, CheckingTheListMakesRowsOfGoodLinesInOrderAndDropsBadOnes)
{
    QStringList reg_messages = {
        u"bob ops Disk full"_s,
        u"bob ops"_s,             // two words
        u"nobody ops hello"_s,    // unknown recipient
        u"BOB  it's   spaced "_s, // empty sender; the message as given
        u"bob ops "_s,            // nothing behind the second blank
        u" ops no recipient"_s,   // empty recipient
        u"bob ops last one"_s,
    };
    state->error_round = 2;
    check_wm_list(*state, reg_messages);

    EXPECT_TRUE(reg_messages.isEmpty());
    EXPECT_EQ(state->error_round, 0);
    const QList<QStringList> expected = {
        {u"bob"_s, u"ops"_s, u"Disk full"_s, u"tapnet"_s},
        {u"BOB"_s, QString(), u"it's   spaced "_s, u"tapnet"_s},
        {u"bob"_s, u"ops"_s, u"last one"_s, u"tapnet"_s},
    };
    EXPECT_EQ(rows(), expected);

    EXPECT_EQ(scalar(u"SELECT count(DISTINCT cv_transaction) FROM cv_messages"_s), 3); // each line its own
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
}

} // namespace
} // namespace cvd::intake
