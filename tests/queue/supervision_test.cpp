#include "core/app_state.h"
#include "engine_link/supervision.h"
#include "support/recording_view.h"
#include "support/test_environment.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::engine_link {
namespace {

class SupervisionTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        state = env.make_state();
        state->program_folder = u"/opt/corvane/"_s;
        proc = env.path(u"proc"_s);
        starter = [this](const QString& program, const QStringList& arguments) {
            starts.append(program + u' ' + arguments.join(u' '));
        };
    }

    void add_process(int pid, const QString& name)
    {
        const QString folder = proc + u'/' + QString::number(pid);
        QDir().mkpath(folder);
        QFile comm(folder + u"/comm"_s);
        ASSERT_TRUE(comm.open(QIODevice::WriteOnly));
        comm.write(name.toUtf8() + '\n');
    }

    void tick() { supervise_engine(*state, view, engine_status, starter, proc); }

    testing::TestEnvironment env;
    testing::RecordingView view;
    QString engine_status; // what the dispatcher keeps
    std::unique_ptr<AppState> state;
    QString proc;
    QStringList starts;
    EngineStarter starter;
};

TEST_F(SupervisionTest, TheFirstTickStartsTheEngineWithoutLookingAndLaterTicksWhileNoneRunsLeavingItsOwnStatus)
{
    add_process(1, u"init"_s);
    add_process(200, u"CVDDIAL"_s); // the case of the name is of no account
    state->startup_complete = true;
    state->local_db = true;
    tick();
    EXPECT_EQ(starts, QStringList{u"/opt/corvane/cvddial /localdb"_s});
    EXPECT_FALSE(state->startup_complete);
    EXPECT_TRUE(view.status.isEmpty());

    engine_status = u"Dialing tapnet"_s;
    tick(); // it runs: nothing to do, and the engine's own status stays
    EXPECT_EQ(starts.size(), 1);
    EXPECT_EQ(engine_status, u"Dialing tapnet"_s);
    EXPECT_TRUE(view.status.isEmpty());

    QDir(proc + u"/200"_s).removeRecursively(); // it died
    tick();
    EXPECT_EQ(starts.size(), 2);
    EXPECT_EQ(view.status, u"Delivery Engine\r\nNot Running"_s);
    tick();
    EXPECT_EQ(starts.size(), 3); // again on every tick, without back-off

    add_process(300, u"my-cvddial-2"_s); // any name that contains it counts
    tick();
    EXPECT_EQ(starts.size(), 3);
    EXPECT_TRUE(view.status.isEmpty());
}

TEST_F(SupervisionTest, OnlyTheFirst500ProcessesAreLookedAt)
{
    for (int pid = 1; pid <= 500; ++pid) {
        add_process(pid, u"worker"_s);
    }
    add_process(501, u"cvddial"_s);
    tick();
    EXPECT_EQ(starts.size(), 1); // kept as it always was: the engine outside the table counts as not running
}

} // namespace
} // namespace cvd::engine_link
