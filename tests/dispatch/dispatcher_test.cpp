#include "core/app_state.h"
#include "core/databases.h"
#include "dispatch/dispatch_loop.h"
#include "dispatch/dispatcher.h"
#include "platform/datagram.h"
#include "platform/runtime.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/database_test.h"
#include "support/recording_view.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::dispatch {
namespace {

const QString kTransfer = u"SOFTWARE\\Halvern\\Transfer"_s;

class DispatcherTest : public testing::DatabaseTest
{
protected:
    DispatcherTest() : DatabaseTest(Start::LoadSettings) {}

    void SetUp() override
    {
        DatabaseTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_id, cv_carrier, cv_group, cv_on_call) VALUES "
                  "('bob', '5551', 'tapnet', 0, 0), ('carol', '5552', 'tapnet', 0, 0), ('ops', '', '', -1, 0)"_s);
        db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('ops', 'bob'), ('ops', 'carol')"_s);
        state->startup_complete = true;
        dispatcher = std::make_unique<Dispatcher>(
            *state, view, [this](const QString& program, const QStringList&) { starts.append(program); });
        socket = env.runtime_dir() + u"/CorvaneDesk.sock"_s;
        ASSERT_TRUE(dispatcher->load(socket));
    }

    testing::RecordingView view;
    std::unique_ptr<Dispatcher> dispatcher;
    QStringList starts;
    QString socket;
};

TEST_F(DispatcherTest, LoadPublishesTheProgramAndTheFirstTickStartsTheEngine)
{
    EXPECT_EQ(state->registry.read_number(platform::Hive::LocalMachine, kTransfer, u"Running"_s), 1);
    EXPECT_EQ(state->registry.read_text(platform::Hive::LocalMachine, kTransfer, u"Socket"_s), socket);
    EXPECT_TRUE(platform::running_marker_is_held(env.runtime_dir()));

    const Dispatcher::TickResult first = dispatcher->tick();
    EXPECT_EQ(first.next_interval_ms, kRegularTickMs);
    EXPECT_FALSE(first.stop_requested);
    EXPECT_EQ(starts, QStringList{env.program_folder() + u"cvddial"_s});
    EXPECT_EQ(view.panels.value(kSchedPanel), u"Sched: 0"_s);

    dispatcher->unload();
    EXPECT_EQ(state->registry.read_number(platform::Hive::LocalMachine, kTransfer, u"Running"_s), 0);
    EXPECT_FALSE(platform::running_marker_is_held(env.runtime_dir()));
}

TEST_F(DispatcherTest, AGroupExpansionBringsTheNextTickSoonAndOnlyOnce)
{
    state->global_db.exec(
        u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, cv_from, "
        "cv_sent, cv_error, cv_scheduled, cv_repeat_interval, cv_repeat_stop, cv_retries, cv_transaction) VALUES "
        "('ops', '', 'group page', '', '2026-11-23 09:00:00', '', 0, 0, 0, 0, '2026-11-23 09:00:00', 0, 7)"_s);
    EXPECT_EQ(dispatcher->tick().next_interval_ms, kFastTickMs);
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_messages WHERE cv_message = 'group page' AND cv_scheduled <> 0 AND "
                     "cv_sent = 0"_s),
              2);
    EXPECT_EQ(view.panels.value(kPendPanel), u"Pend: 2"_s);
    EXPECT_EQ(dispatcher->tick().next_interval_ms, kRegularTickMs);
}

TEST_F(DispatcherTest, ChannelTextsAreNotedAtOnceAndMessageLinesTakenOnTheNextTick)
{
    ASSERT_TRUE(platform::send_datagram(socket, 2, u"dialing tapnet"_s));
    ASSERT_TRUE(platform::send_datagram(socket, 3, u"Connected"_s));
    ASSERT_TRUE(platform::send_datagram(socket, 3, u"SendPage carol ops from the channel"_s));
    dispatcher->receive();
    EXPECT_EQ(view.activity, QStringList{u"dialing tapnet"_s});
    EXPECT_EQ(view.status, u"Connected"_s);
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_messages"_s), 0);

    dispatcher->tick();
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'carol' AND cv_pin = '5552' AND "
                     "cv_scheduled <> 0"_s),
              1);
}

TEST_F(DispatcherTest, AStopRequestAsksTheFrontEndToQuitAndStopsTheTicks)
{
    dispatcher->unload();
    DispatchLoop loop(*state, view, [](const QString&, const QStringList&) {});
    ASSERT_TRUE(loop.start(socket));
    ASSERT_TRUE(state->registry.write_number(platform::Hive::LocalMachine, kTransfer, u"Stop"_s, 1));
    // The first tick comes 100 ms after the start; the deadline only guards against a hang.
    const QDeadlineTimer deadline(10000);
    while (view.quit_requests == 0 && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }
    EXPECT_EQ(view.quit_requests, 1);
    EXPECT_FALSE(loop.repeat_timer().isActive());
    loop.stop();
    EXPECT_EQ(state->registry.read_number(platform::Hive::LocalMachine, kTransfer, u"Running"_s), 0);
}

TEST_F(DispatcherTest, LinesWaitingOnTheChannelAreEnqueuedBeforeTheEnd)
{
    ASSERT_TRUE(platform::send_datagram(socket, 3, u"sendpage carol ops handed in just before the end"_s));
    dispatcher->unload();
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'carol' AND "
                     "cv_message LIKE 'handed in just before the end%'"_s),
              1);
}

} // namespace
} // namespace cvd::dispatch
