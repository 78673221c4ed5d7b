#include "core/app_state.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/passwords.h"
#include "core/startup.h"
#include "platform/registry.h"
#include "platform/runtime.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/test_environment.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace cvd {
namespace {

TEST(CommandLine, SwitchesAreRemovedWhereverTheyStandAndCaseCounts)
{
    const struct
    {
        QString text;
        bool local_db;
        bool minimized;
        QString line;
    } cases[] = {
        {QString(), false, false, QString()},
        {u"/minimized"_s, false, true, QString()},
        {u"/minimized bob ops Disk full"_s, false, true, u"bob ops Disk full"_s},
        {u"bob ops Disk full /localdb"_s, true, false, u"bob ops Disk full"_s},
        {u"/LOCALDB bob"_s, false, false, u"/LOCALDB bob"_s},
        {u"ab/localdbcd /minimized/minimized"_s, true, true, u"abcd"_s},
        {u"  bob  ops  x  "_s, false, false, u"bob  ops  x"_s},
    };
    for (const auto& c : cases) {
        const CommandLine parsed = parse_command_line(c.text);
        EXPECT_EQ(parsed.local_db, c.local_db) << c.text.toStdString();
        EXPECT_EQ(parsed.minimized, c.minimized) << c.text.toStdString();
        EXPECT_EQ(parsed.line, c.line) << c.text.toStdString();
    }
}

class StartupTest : public ::testing::Test
{
protected:
    StartupResult start(const QString& command_line = {}, const StartupHooks& hooks = {})
    {
        state = env.make_state();
        return run_startup(*state, command_line, env.program_folder(), hooks);
    }

    static QByteArray file_bytes(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static qint64 count_rows(const QString& path, const QString& sql)
    {
        store::Database db = store::Database::open(path, store::Database::OpenMode::ReadOnly);
        store::Statement select = db.prepare(sql);
        return select.step() ? select.integer(0).value_or(-1) : -1;
    }

    testing::TestEnvironment env;
    std::unique_ptr<AppState> state;
};

TEST_F(StartupTest, AFirstStartCreatesBothDatabasesInTheDataFolders)
{
    const StartupResult result = start();
    ASSERT_EQ(result.outcome, StartupOutcome::Running) << result.reason.toStdString();
    EXPECT_TRUE(state->startup_complete);
    EXPECT_EQ(state->global_db_folder, env.global_db_folder());
    EXPECT_EQ(state->user_db_folder, env.user_db_folder());
    EXPECT_TRUE(QFile::exists(env.global_db_folder() + u"cvd.mdb"_s));
    EXPECT_TRUE(QFile::exists(env.user_db_folder() + u"cvd.mdb"_s));
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
    EXPECT_GT(state->first_transaction, 0);
    // The instance lock is held: another process testing for a running copy sees one.
    EXPECT_TRUE(platform::program_is_running(env.runtime_dir()));
    // The start counter went from 0 to 1 and was saved.
    EXPECT_EQ(
        count_rows(global_db_path(*state),
                   u"SELECT cv_value FROM cv_settings WHERE cv_category = 'database' AND cv_name = 'rebuild_index'"_s),
        1);
    // The queue's commits wait for the disk (FULL); the user's settings need not (NORMAL).
    open_user_database(*state);
    for (const auto& [db, level] : {std::pair{&state->global_db, 2}, std::pair{&state->user_db, 1}}) {
        store::Statement synchronous = db->prepare(u"PRAGMA synchronous"_s);
        ASSERT_TRUE(synchronous.step());
        EXPECT_EQ(synchronous.integer(0), level) << db->path().toStdString();
    }
}

TEST_F(StartupTest, DataRootsThatDoNotExistYetAreCreated)
{
    const QString common = env.path(u"fresh/var/lib"_s);
    const QString data = env.path(u"fresh/home/.local/share"_s);
    qputenv("CVD_COMMON_APPDATA", common.toUtf8());
    qputenv("XDG_DATA_HOME", data.toUtf8());
    ASSERT_EQ(start().outcome, StartupOutcome::Running);
    EXPECT_TRUE(QFile::exists(common + u"/Halvern/Corvane Desk/5.0/cvd.mdb"_s));
    EXPECT_TRUE(QFile::exists(data + u"/Halvern/Corvane Desk/5.0/cvd.mdb"_s));
}

TEST_F(StartupTest, TheLocalFormKeepsTheDatabasesBesideTheProgramCrossed)
{
    ASSERT_EQ(start(u"/localdb"_s).outcome, StartupOutcome::Running);
    EXPECT_EQ(state->global_db_folder, env.program_folder() + u"UserDB/"_s);
    EXPECT_EQ(state->user_db_folder, env.program_folder() + u"GlobalDB/"_s);
    EXPECT_TRUE(state->local_db);
    // The file in UserDB is the one with the queue.
    store::Database global =
        store::Database::open(env.program_folder() + u"UserDB/cvd.mdb"_s, store::Database::OpenMode::ReadOnly);
    EXPECT_EQ(store::classify(global), store::FileKind::Global);
    store::Database user =
        store::Database::open(env.program_folder() + u"GlobalDB/cvd.mdb"_s, store::Database::OpenMode::ReadOnly);
    EXPECT_EQ(store::classify(user), store::FileKind::User);
}

// A line is handed on before the instance test and ends a second copy silently; without one, a second copy
// shows the duplicate box unless started minimized.
TEST_F(StartupTest, ASecondCopyHandsItsLineOnOrShowsTheDuplicateBoxUnlessMinimized)
{
    auto held =
        platform::FileLock::try_lock(env.runtime_dir() + u"/CorvaneDesk.lock"_s, platform::FileLock::Mode::Exclusive);
    ASSERT_TRUE(held);
    QStringList lines;
    StartupHooks hooks;
    hooks.send_page = [&](AppState&, const QString& line, QString*) {
        lines.append(line);
        return true;
    };
    const StartupResult handed_on = start(u"/minimized bob ops Disk full"_s, hooks);
    EXPECT_EQ(lines, QStringList{u"bob ops Disk full"_s});
    EXPECT_EQ(handed_on.outcome, StartupOutcome::Exit);
    EXPECT_EQ(handed_on.exit_code, kExitOk);
    EXPECT_EQ(start(u"/minimized"_s).outcome, StartupOutcome::Exit);
    EXPECT_TRUE(env.prompter.boxes.isEmpty());

    const StartupResult plain = start();
    EXPECT_EQ(plain.outcome, StartupOutcome::Exit);
    EXPECT_NE(plain.exit_code, kExitOk);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_EQ(env.prompter.boxes.front().title, u"Duplicate Application"_s);
    EXPECT_EQ(env.prompter.boxes.front().text, u"Another copy of Corvane Desk is already running.  Quitting..."_s);
}

TEST_F(StartupTest, ARefusedLineEndsTheStartWithItsReason)
{
    StartupHooks hooks;
    hooks.send_page = [](AppState&, const QString&, QString* reason) {
        *reason = u"unknown recipient \"nobody\""_s;
        return false;
    };
    const StartupResult result = start(u"nobody ops x"_s, hooks);
    EXPECT_EQ(result.outcome, StartupOutcome::Exit);
    EXPECT_EQ(result.exit_code, kExitLineRefused);
    EXPECT_EQ(result.reason, u"unknown recipient \"nobody\""_s);
    EXPECT_FALSE(platform::program_is_running(env.runtime_dir()));
}

TEST_F(StartupTest, ADatabaseBesideTheProgramIsCopiedOnFirstRun)
{
    const QString seed = env.program_folder() + u"cvd.mdb"_s;
    store::create_global_database(seed);
    {
        store::Database db = store::Database::open(seed);
        db.exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier) VALUES ('bob', 'tapnet')"_s);
    }
    ASSERT_EQ(start().outcome, StartupOutcome::Running);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_EQ(env.prompter.boxes.front().title, u"Database Copied"_s);
    EXPECT_EQ(env.prompter.boxes.front().text,
              u"Corvane Desk database file copied from program folder to new data folder: "_s + env.global_db_folder());
    EXPECT_EQ(count_rows(global_db_path(*state), u"SELECT count(*) FROM cv_recipients WHERE cv_name = 'bob'"_s), 1);
}

TEST_F(StartupTest, ANewerDatabaseIsRefusedAndLeftByteForByte)
{
    QDir().mkpath(env.global_db_folder());
    const QString path = env.global_db_folder() + u"cvd.mdb"_s;
    store::create_global_database(path);
    {
        store::Database db = store::Database::open(path);
        db.exec(u"UPDATE cv_settings SET cv_value = '502' WHERE cv_category = 'database' AND cv_name = 'version'"_s);
        db.exec(u"PRAGMA journal_mode=DELETE"_s);
    }
    const QByteArray before = file_bytes(path);

    const StartupResult result = start();
    EXPECT_EQ(result.outcome, StartupOutcome::Exit);
    EXPECT_NE(result.exit_code, kExitOk);
    ASSERT_FALSE(env.prompter.boxes.isEmpty());
    EXPECT_EQ(env.prompter.boxes.back().title, u"Version Mismatch"_s);
    EXPECT_EQ(env.prompter.boxes.back().text,
              u"Corvane Desk cannot start. This version of Corvane Desk does not match the database version."_s);
    state.reset();
    EXPECT_TRUE(file_bytes(path) == before);
}

TEST_F(StartupTest, AFileThatIsNoDatabaseHaltsAndIsNeverOverwritten)
{
    QDir().mkpath(env.global_db_folder());
    const QString path = env.global_db_folder() + u"cvd.mdb"_s;
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray("These are the minutes of the night shift, not a database.\n").repeated(100));
    }
    const QByteArray before = file_bytes(path);
    EXPECT_THROW(start(), ProgramHalted);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_EQ(env.prompter.boxes.front().title, u"CorvaneDesk Fatal Error"_s);
    EXPECT_TRUE(env.prompter.boxes.front().text.startsWith(u"Fatal database error:  26 "_s));
    EXPECT_TRUE(env.prompter.boxes.front().text.endsWith(u"in Procedure: open_database Program Halted"_s));
    state.reset();
    EXPECT_TRUE(file_bytes(path) == before);
}

TEST_F(StartupTest, TheOrderlyEndWritesTheDatabasePasswordBackAndTheNextStartAsksForTheUserPassword)
{
    platform::Registry registry(env.registry_root());
    const QString key = u"SOFTWARE\\Halvern\\CorvaneDesk"_s;
    ASSERT_TRUE(registry.create_key(platform::Hive::LocalMachine, key));
    ASSERT_TRUE(registry.write_text(platform::Hive::LocalMachine, key, u"DB_Password"_s, u"  s3cret \n"_s));
    ASSERT_EQ(start().outcome, StartupOutcome::Running);
    EXPECT_EQ(state->db_password, u"s3cret"_s);
    state->db_password = u"n3w"_s;
    state->settings.put_setting(u"security"_s, u"user_password"_s, encode_password(u"open"_s));
    orderly_shutdown(*state);
    EXPECT_EQ(registry.read_text(platform::Hive::LocalMachine, key, u"DB_Password"_s), u"n3w"_s);
    EXPECT_FALSE(platform::program_is_running(env.runtime_dir()));

    env.prompter.enter_next(std::nullopt);
    const StartupResult cancelled = start();
    EXPECT_EQ(cancelled.outcome, StartupOutcome::Exit);
    EXPECT_EQ(env.prompter.password_prompts.size(), 1);
    state.reset();

    env.prompter.enter_next(u"open"_s);
    EXPECT_EQ(start().outcome, StartupOutcome::Running);
    EXPECT_EQ(state->user_password, u"open"_s);
}

// Each start also gives the unsent rows transactions of this run and clears the carriers' retries.
TEST_F(StartupTest, TheStartCounterWrapsOnTheEleventhStartAndUnsentRowsDrawTransactionsOfThisRun)
{
    ASSERT_EQ(start().outcome, StartupOutcome::Running);
    state->settings.put_setting(u"database"_s, u"rebuild_index"_s, 9);
    state->global_db.exec(
        u"INSERT INTO cv_messages (cv_recipient, cv_sent, cv_transaction) VALUES ('a', 0, 1), ('b', 0, 1), "
        "('c', -1, 1)"_s);
    state->global_db.exec(u"INSERT INTO cv_carriers (cv_name, cv_retries) VALUES ('tapnet', 3)"_s);
    orderly_shutdown(*state);
    const QString query =
        u"SELECT cv_value FROM cv_settings WHERE cv_category = 'database' AND cv_name = 'rebuild_index'"_s;

    ASSERT_EQ(start().outcome, StartupOutcome::Running);
    const QString path = global_db_path(*state);
    EXPECT_EQ(count_rows(path, query), 10);
    EXPECT_EQ(count_rows(path, u"SELECT count(*) FROM cv_messages WHERE cv_transaction > "_s +
                                   QString::number(state->first_transaction)),
              2);
    EXPECT_EQ(count_rows(path, u"SELECT count(DISTINCT cv_transaction) FROM cv_messages WHERE cv_sent = 0"_s), 2);
    EXPECT_EQ(count_rows(path, u"SELECT cv_transaction FROM cv_messages WHERE cv_recipient = 'c'"_s), 1);
    EXPECT_EQ(count_rows(path, u"SELECT cv_retries FROM cv_carriers"_s), 0);
    const QString global_scratch = env.global_db_folder() + u"cvdtmp.mdb"_s;
    const QString user_scratch = env.user_db_folder() + u"cvdtmp.mdb"_s;
    EXPECT_FALSE(QFile::exists(global_scratch));
    state->global_db.exec(u"INSERT INTO cv_carriers (cv_name) VALUES ('Pager')"_s);
    orderly_shutdown(*state);

    // The eleventh start compacts both files through their scratch files and mends the null columns.
    ASSERT_EQ(start().outcome, StartupOutcome::Running);
    EXPECT_EQ(count_rows(global_db_path(*state), query), 0);
    EXPECT_TRUE(QFile::exists(global_scratch));
    EXPECT_TRUE(QFile::exists(user_scratch));
    store::Database db = store::Database::open(global_db_path(*state), store::Database::OpenMode::ReadOnly);
    store::Statement carrier =
        db.prepare(u"SELECT cv_dial_type, cv_maxchars FROM cv_carriers WHERE cv_name = 'Pager'"_s);
    ASSERT_TRUE(carrier.step());
    EXPECT_EQ(carrier.text(0), u"tap"_s);
    EXPECT_EQ(carrier.integer(1), 240);
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
}

} // namespace
} // namespace cvd
