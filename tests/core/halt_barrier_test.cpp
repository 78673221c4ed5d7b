#include "core/app_state.h"
#include "core/error_path.h"
#include "core/halt_barrier.h"
#include "core/startup.h"
#include "support/test_environment.h"

#include <QCoreApplication>
#include <QTimer>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd {
namespace {

// The test main's application carries the barrier, as the program's does.
TEST(HaltBarrier, AHaltInsideASlotEndsTheEventLoopWithItsBoxAndIsNoted)
{
    testing::TestEnvironment env;
    std::unique_ptr<AppState> state = env.make_state();
    clear_noted_halt();
    bool ran_after_halt = false;
    QObject context;
    QTimer::singleShot(0, &context, [&] {
        handle_error(*state, u"Procedure: a_handler"_s, other_error_info(5, u"Invalid procedure call"_s));
        ran_after_halt = true;
    });
    QTimer::singleShot(0, &context, [] {}); // the loop goes on serving nothing after the halt
    EXPECT_EQ(QCoreApplication::exec(), kExitFailure);

    EXPECT_FALSE(ran_after_halt);
    ASSERT_TRUE(noted_halt().has_value());
    EXPECT_TRUE(noted_halt()->contains(u"Procedure: a_handler"_s));
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_EQ(env.prompter.boxes.front().title, u"CorvaneDesk Fatal Error"_s);
    EXPECT_EQ(env.prompter.boxes.front().icon, BoxIcon::Critical);
    clear_noted_halt();
}

} // namespace
} // namespace cvd
