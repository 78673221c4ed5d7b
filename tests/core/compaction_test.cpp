#include "core/app_state.h"
#include "core/compaction.h"
#include "core/databases.h"
#include "core/startup.h"
#include "store/database.h"
#include "store/maintenance.h"
#include "store/unique.h"
#include "support/test_environment.h"
#include "support/thin_history.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd {
namespace {

class CompactDatabases : public ::testing::Test
{
protected:
    void SetUp() override
    {
        state = env.make_state();
        ASSERT_EQ(run_startup(*state, {}, env.program_folder(), {}).outcome, StartupOutcome::Running);
        global = global_db_path(*state);
        user = user_db_path(*state);
    }

    // A long history of which most rows are gone again, so that there is something to compact.
    void thin_history() { testing::add_thin_history(state->global_db, 8000, 8, -1); }

    static QString value(store::Database& db, const QString& sql)
    {
        store::Statement select = db.prepare(sql);
        return select.step() ? select.text(0).value_or(u"<null>"_s) : u"<no row>"_s;
    }

    testing::TestEnvironment env;
    std::unique_ptr<AppState> state;
    QString global;
    QString user;
};

TEST_F(CompactDatabases, BothAreCompactedReopenedAndRepaired)
{
    thin_history();
    state->global_db.exec(u"INSERT INTO cv_carriers (cv_name, cv_dial_type) VALUES ('tapnet', NULL)"_s);
    state->global_db.exec(u"INSERT INTO cv_messages (cv_recipient, cv_sent, cv_transaction) VALUES ('ann', 0, 1)"_s);
    open_user_database(*state);
    state->user_db.exec(u"INSERT INTO cv_presets (cv_index, cv_description) VALUES (101, NULL)"_s);
    close_user_database(*state);

    const CompactionReport report = compact_databases(*state);

    EXPECT_TRUE(report.failure.isEmpty()) << report.failure.toStdString();
    EXPECT_EQ(report.global.path, global);
    EXPECT_EQ(report.global.outcome, CompactionOutcome::Compacted);
    EXPECT_LT(report.global.size_after, report.global.size_before / 2);
    EXPECT_EQ(report.global.size_after, QFileInfo(global).size());
    EXPECT_EQ(report.user.path, user);
    EXPECT_EQ(report.user.outcome, CompactionOutcome::Compacted);
    EXPECT_GT(report.user.size_after, 0);
    EXPECT_TRUE(report.nulls_repaired);
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
    EXPECT_TRUE(QFileInfo::exists(env.global_db_folder() + u"cvdtmp.mdb"_s));
    EXPECT_TRUE(QFileInfo::exists(env.user_db_folder() + u"cvdtmp.mdb"_s));
    // The next run deletes these scratch files first.
    const CompactionReport again = compact_databases(*state);
    EXPECT_EQ(again.global.outcome, CompactionOutcome::Compacted);
    EXPECT_EQ(again.user.outcome, CompactionOutcome::Compacted);

    // The global database is open again and takes writes; the user database was closed after the repair.
    ASSERT_TRUE(state->global_db.is_open());
    EXPECT_FALSE(state->user_db.is_open());
    EXPECT_EQ(value(state->global_db, u"SELECT count(*) FROM cv_messages"_s), u"1001"_s);
    EXPECT_EQ(value(state->global_db, u"SELECT cv_dial_type FROM cv_carriers WHERE cv_name = 'tapnet'"_s), u"tap"_s);
    // Missing dates become the time of the program's clock.
    EXPECT_EQ(value(state->global_db, u"SELECT cv_last_try FROM cv_messages WHERE cv_recipient = 'ann'"_s),
              store::format_date(env.clock.now()));
    EXPECT_GT(store::get_unique(state->global_db), state->first_transaction);
    EXPECT_EQ(store::integrity_check(state->global_db), QStringList{u"ok"_s});
    open_user_database(*state);
    EXPECT_EQ(value(state->user_db, u"SELECT cv_description FROM cv_presets WHERE cv_index = 101"_s), u""_s);
}

TEST_F(CompactDatabases, AStaleScratchThatCannotBeDeletedSkipsOnlyItsOwnDatabase)
{
    for (const bool global_blocked : {true, false}) {
        SCOPED_TRACE(global_blocked ? "global scratch in the way" : "user scratch in the way");
        const QString folder = global_blocked ? env.global_db_folder() : env.user_db_folder();
        // A scratch file that cannot be deleted: a folder with something in it.
        QFile::remove(folder + u"cvdtmp.mdb"_s);
        ASSERT_TRUE(QDir().mkpath(folder + u"cvdtmp.mdb/inside"_s));

        const CompactionReport report = compact_databases(*state);

        const DatabaseCompaction& skipped = global_blocked ? report.global : report.user;
        const DatabaseCompaction& compacted = global_blocked ? report.user : report.global;
        EXPECT_EQ(skipped.outcome, CompactionOutcome::ScratchInTheWay);
        EXPECT_TRUE(skipped.reason.contains(folder + u"cvdtmp.mdb"_s)) << skipped.reason.toStdString();
        EXPECT_EQ(skipped.size_after, 0);
        EXPECT_EQ(compacted.outcome, CompactionOutcome::Compacted);
        EXPECT_TRUE(report.nulls_repaired);
        EXPECT_TRUE(report.failure.isEmpty()) << report.failure.toStdString();
        EXPECT_TRUE(state->global_db.is_open());
        EXPECT_TRUE(env.prompter.boxes.isEmpty());
        ASSERT_TRUE(QDir(folder + u"cvdtmp.mdb"_s).removeRecursively());
    }
}

TEST_F(CompactDatabases, AFailureEndsTheRunSilentlyAndTheNextOpenReopens)
{
    thin_history();
    const qint64 size_before = QFileInfo(global).size();
    // A leftover process that keeps the global file open.
    store::Database leftover = store::Database::open(global);
    ASSERT_EQ(value(leftover, u"SELECT count(*) FROM cv_messages"_s), u"1000"_s);

    const CompactionReport report = compact_databases(*state);

    EXPECT_EQ(report.global.outcome, CompactionOutcome::Failed);
    EXPECT_FALSE(report.global.reason.isEmpty());
    EXPECT_TRUE(report.failure.startsWith(u"global database: "_s)) << report.failure.toStdString();
    EXPECT_EQ(report.user.outcome, CompactionOutcome::NotReached);
    EXPECT_FALSE(report.nulls_repaired);
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
    EXPECT_EQ(state->error_count, 0);
    // What was closed stays closed, and the next user opens it again.
    EXPECT_FALSE(state->global_db.is_open());
    EXPECT_EQ(QFileInfo(global).size(), size_before);
    open_database(*state);
    ASSERT_TRUE(state->global_db.is_open());
    EXPECT_EQ(value(state->global_db, u"SELECT count(*) FROM cv_messages"_s), u"1000"_s);
    EXPECT_NO_THROW(save_settings(*state));
}

TEST_F(CompactDatabases, AFailureOnTheUserDatabaseLeavesTheGlobalOneCompactedAndOpen)
{
    store::Database leftover = store::Database::open(user);
    ASSERT_EQ(value(leftover, u"SELECT count(*) FROM cv_presets"_s), u"100"_s);

    const CompactionReport report = compact_databases(*state);

    EXPECT_EQ(report.global.outcome, CompactionOutcome::Compacted);
    EXPECT_EQ(report.user.outcome, CompactionOutcome::Failed);
    EXPECT_TRUE(report.failure.startsWith(u"user database: "_s)) << report.failure.toStdString();
    EXPECT_FALSE(report.nulls_repaired);
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
    EXPECT_TRUE(state->global_db.is_open());
    leftover.close();
    EXPECT_NO_THROW(save_settings(*state));
}

} // namespace
} // namespace cvd
