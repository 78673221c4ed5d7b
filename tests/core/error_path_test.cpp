#include "core/app_state.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/halt_barrier.h"
#include "core/startup.h"
#include "store/database.h"
#include "support/test_environment.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTimer>
#include <cerrno>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd {
namespace {

const QString kProcedure = u"Procedure: open_database"_s;

QByteArray file_bytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Feeds the same error to the common path until it halts; returns how many failures that took.
int failures_until_halt(AppState& state, const ErrorInfo& error, int limit = 5000)
{
    for (int failure = 1; failure <= limit; ++failure) {
        try {
            handle_error(state, kProcedure, error);
        } catch (const ProgramHalted&) {
            return failure;
        }
    }
    return -1;
}

class ErrorCounters : public ::testing::Test
{
protected:
    testing::TestEnvironment env;
    std::unique_ptr<AppState> state = env.make_state();
};
using WithRetry = ErrorCounters;
using HaltBarrier = ErrorCounters;

// Retryable database errors get 18 tries, file errors 1681, anything else none; every failure before the halt
// waits 0.5 s plus the random part (pinned at 0.25).
TEST(HandleError, EachKindOfErrorHaltsAfterItsNumberOfFailuresWithItsBox)
{
    const struct
    {
        ErrorInfo error;
        int failures;
        QString box; // * stands for any text without a slash
    } cases[] = {
        {database_error_info(store::Error(store::codes::Busy, u"database is locked"_s)), 18,
         u"Fatal database error:  5 database is locked in Procedure: open_database Program Halted"_s},
        {database_error_info(store::Error(store::codes::NotADb, u"file is not a database"_s)), 1,
         u"Fatal database error:  26 *"_s},
        {file_error_info(EACCES), 1681, u"Excessive file errors: 13 * in Procedure: open_database"_s},
        {other_error_info(91, u"Object variable not set"_s), 1,
         u"Error #91 Object variable not set in Procedure: open_database"_s},
    };
    for (const auto& c : cases) {
        testing::TestEnvironment env;
        auto state = env.make_state();
        EXPECT_EQ(failures_until_halt(*state, c.error), c.failures) << c.box.toStdString();
        EXPECT_EQ(env.clock.waits.size(), c.failures - 1);
        EXPECT_EQ(env.clock.waits.value(0, 750), 750);
        ASSERT_EQ(env.prompter.boxes.size(), 1);
        EXPECT_EQ(env.prompter.boxes.front().title, u"CorvaneDesk Fatal Error"_s);
        const QRegularExpression box = QRegularExpression::fromWildcard(c.box, Qt::CaseSensitive);
        EXPECT_TRUE(box.match(env.prompter.boxes.front().text).hasMatch())
            << env.prompter.boxes.front().text.toStdString();
    }
}

TEST_F(ErrorCounters, ClearedBetweenUnitsGiveFreshRetries)
{
    const ErrorInfo locked = database_error_info(store::Error(store::codes::Locked, u"locked"_s));
    EXPECT_EQ(failures_until_halt(*state, locked, 17), -1);
    state->clear_error_counters();
    EXPECT_EQ(failures_until_halt(*state, locked), 18);
}

TEST(HandleError, ADamagedDatabaseIsClosedWithoutAnotherWriteAndHaltsAtOnce)
{
    // Damaged pages and indexes, and a file that no longer reads as a database although it opened as one.
    for (const int code : {store::codes::Corrupt, 779, store::codes::NotADb}) {
        testing::TestEnvironment env;
        auto state = env.make_state();
        QDir().mkpath(env.global_db_folder());
        state->global_db_folder = env.global_db_folder();
        open_database(*state);
        // A commit that waits in the write-ahead log: closing the file as usual would write it into the file.
        state->global_db.exec(u"INSERT INTO cv_carriers (cv_name) VALUES ('Pager')"_s);
        const QString path = global_db_path(*state);
        const QByteArray before = file_bytes(path);
        const ErrorInfo damaged = database_error_info(
            store::Error(code, u"database disk image is malformed"_s, state->global_db.file_name()));

        EXPECT_EQ(failures_until_halt(*state, damaged, 5), 1) << code;
        EXPECT_FALSE(state->global_db.is_open());
        ASSERT_EQ(env.prompter.boxes.size(), 1);
        EXPECT_TRUE(env.prompter.boxes.front().text.startsWith(u"The database "_s + path + u" is damaged ("_s +
                                                               QString::number(code)));
        EXPECT_TRUE(env.prompter.boxes.front().text.contains(u"No backup of it is known."_s));
        // Nor is it opened again in this run.
        EXPECT_THROW(open_database(*state), ProgramHalted);
        state.reset();
        EXPECT_TRUE(file_bytes(path) == before) << code;
    }
}

TEST_F(WithRetry, RunsTheStepAgainUntilItSucceeds)
{
    int attempts = 0;
    const int value = with_retry(*state, kProcedure, [&] {
        if (++attempts < 4) {
            throw store::Error(store::codes::Busy, u"database is locked"_s);
        }
        return 42;
    });
    EXPECT_EQ(value, 42);
    EXPECT_EQ(attempts, 4);
    EXPECT_EQ(env.clock.waits.size(), 3);
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
}

TEST_F(WithRetry, AHaltEndsTheRetries)
{
    int attempts = 0;
    EXPECT_THROW(with_retry(*state, kProcedure,
                            [&] {
                                ++attempts;
                                throw FileError(ENOSPC);
                            }),
                 ProgramHalted);
    EXPECT_EQ(attempts, 1681);
}

// The test main's application carries the barrier, as the program's does.
TEST_F(HaltBarrier, AHaltInsideASlotEndsTheEventLoopWithItsBoxAndIsNoted)
{
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
