#include "core/app_state.h"
#include "core/conversions.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/passwords.h"
#include "core/startup.h"
#include "platform/registry.h"
#include "platform/runtime.h"
#include "store/database.h"
#include "store/schema.h"
#include "store/upgrades.h"
#include "support/legacy_databases.h"
#include "support/printers.h"
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

// The rows of a query, each as its columns joined by "|" (null as "<null>").
QStringList rows_of(const QString& path, const QString& sql)
{
    store::Database db = store::Database::open(path, store::Database::OpenMode::ReadOnly);
    store::Statement select = db.prepare(sql);
    QStringList rows;
    while (select.step()) {
        QStringList values;
        for (int column = 0; column < select.column_count(); ++column) {
            values.append(select.text(column).value_or(u"<null>"_s));
        }
        rows.append(values.join(u'|'));
    }
    return rows;
}

QString value_of(const QString& path, const QString& sql)
{
    return rows_of(path, sql).value(0);
}

QStringList sorted_columns(const QString& path, const QString& table)
{
    store::Database db = store::Database::open(path, store::Database::OpenMode::ReadOnly);
    QStringList columns = db.column_names(table);
    columns.sort();
    return columns;
}

void exec_on(const QString& path, const QString& sql)
{
    store::Database db = store::Database::open(path);
    db.exec(sql);
}

void write_file(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
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

// A line is handed on before the instance test: a refused one ends the start with its reason and no lock
// held, an accepted one ends a second copy silently. Without a line, a second copy shows the duplicate box
// unless started minimized.
TEST_F(StartupTest, ASecondCopyHandsItsLineOnOrShowsTheDuplicateBoxUnlessMinimized)
{
    QStringList lines;
    StartupHooks hooks;
    hooks.send_page = [&](AppState&, const QString& line, QString* reason) {
        lines.append(line);
        *reason = u"unknown recipient \"nobody\""_s;
        return !line.startsWith(u"nobody"_s);
    };
    const StartupResult refused = start(u"nobody ops x"_s, hooks);
    EXPECT_EQ(refused.outcome, StartupOutcome::Exit);
    EXPECT_EQ(refused.exit_code, kExitLineRefused);
    EXPECT_EQ(refused.reason, u"unknown recipient \"nobody\""_s);
    EXPECT_FALSE(platform::program_is_running(env.runtime_dir()));

    auto held =
        platform::FileLock::try_lock(env.runtime_dir() + u"/CorvaneDesk.lock"_s, platform::FileLock::Mode::Exclusive);
    ASSERT_TRUE(held);
    const StartupResult handed_on = start(u"/minimized bob ops Disk full"_s, hooks);
    EXPECT_EQ(lines, (QStringList{u"nobody ops x"_s, u"bob ops Disk full"_s}));
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

TEST_F(StartupTest, ADatabaseBesideTheProgramIsCopiedOnFirstRun)
{
    const QString seed = env.program_folder() + u"cvd.mdb"_s;
    store::create_global_database(seed);
    exec_on(seed, u"INSERT INTO cv_recipients (cv_name, cv_carrier) VALUES ('bob', 'tapnet')"_s);
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
    exec_on(path, u"UPDATE cv_settings SET cv_value = '502' WHERE cv_category = 'database' AND cv_name = 'version'; "
                  "PRAGMA journal_mode=DELETE"_s);
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

TEST_F(StartupTest, TheOrderlyEndWritesTheDatabasePasswordBackAndTheNextStartAsksForTheUserPassword)
{
    platform::Registry registry(env.registry_root());
    const QString key = u"SOFTWARE\\Halvern\\CorvaneDesk"_s;
    ASSERT_TRUE(registry.create_key(platform::Hive::LocalMachine, key));
    ASSERT_TRUE(registry.write_text(platform::Hive::LocalMachine, key, u"DB_Password"_s, u"  s3cret \n"_s));
    ASSERT_EQ(start().outcome, StartupOutcome::Running);
    EXPECT_EQ(state->db_password, u"s3cret"_s);
    state->db_password = u"n3w"_s;
    state->settings.put_setting({u"security", u"user_password"}, encode_password(u"open"_s));
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
    state->settings.put_setting({u"database", u"rebuild_index"}, 9);
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

// Start-ups over a database of an older version, which they convert.
class ConversionTest : public StartupTest
{
protected:
    ConversionTest() { QDir().mkpath(env.global_db_folder()); }

    QString global() const { return env.global_db_folder() + u"cvd.mdb"_s; }

    // The old settings row, carriers whose passwords show every way of splitting them, a recipient and two
    // messages with the columns that go away.
    void fill_version300(int version = 300)
    {
        testing::make_version300_database(global(), version);
        exec_on(global(), u"UPDATE cv_settings SET cv_retries = 3, cv_retry_interval = 20, cv_log_to_disk = -1, "
                          "cv_purge_after = 45, cv_archive_logs = -1, cv_log_length = 50000, cv_dial_prefix = '9,', "
                          "cv_unique = 777, cv_port = 2, cv_domain = 'old.example', cv_dns1 = '10.0.0.1', "
                          "cv_dns2 = '10.0.0.2', cv_relay_mail = -1, cv_smtp_relay = 'relay.old.example', "
                          "cv_remove_from = 0, cv_admin_password = 'adm', cv_super_password = 'sup', "
                          "cv_user_password = ''"_s);
        exec_on(global(),
                u"INSERT INTO cv_carriers (cv_name, cv_modem_settings, cv_dial_type, cv_password, cv_pulse) "
                "VALUES ('First', '1200,e,7,1', 'ucp', '', 0), ('Pager', '1200,e,7,1', 'tap', 'user|pass', 0), "
                "('Web', '', 'wctp', 'secret', 0), ('Mail', '', 'eml', '', 0), "
                "('Fax', '9600,n,8,1', 'fax', 'a|b|c', -1)"_s);
        exec_on(global(), u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_carrier, cv_maxchars, cv_group, "
                          "cv_trustline, cv_trustline_index, cv_notify_only, cv_notify_code, cv_remove_from) VALUES "
                          "('bob', 'Bob Smith', 'Pager', 240, 0, -1, 4, 0, 'x', 0)"_s);
        exec_on(global(), u"INSERT INTO cv_messages (cv_recipient, cv_message, cv_sent, cv_error, cv_scheduled, "
                          "cv_transaction, cv_trustline_index) VALUES ('bob', 'old and done', -1, 0, -1, 5, 1), "
                          "('bob', 'still waiting', 0, 0, 0, 6, 2)"_s);
    }
};

TEST_F(ConversionTest, AVersion300FileGoesThroughAllFourConversionsInOneStart)
{
    fill_version300();
    platform::Registry registry(env.registry_root());
    const platform::Hive machine = platform::Hive::LocalMachine;
    const platform::Hive user = platform::Hive::CurrentUser;
    const QString key = u"SOFTWARE\\Halvern\\CorvaneDesk"_s;
    const QString window = key + u"\\Window"_s;
    ASSERT_TRUE(registry.create_key(user, window) && registry.create_key(machine, window));
    // Here says the values are the machine's; the user's own are not read.
    registry.write_text(user, key, u"Here"_s, u" True "_s);
    registry.write_text(user, key, u"Sender"_s, u"not this one"_s);
    registry.write_text(machine, key, u"Sender"_s, u" dispatch "_s);
    registry.write_text(machine, key, u"SpellCheck"_s, u"TRUE"_s);
    registry.write_text(machine, key, u"ClearOnSend"_s, u"false"_s);
    registry.write_text(machine, key, u"SmallFont"_s, u"1"_s);
    registry.write_number(machine, key, u"MaxMsgLength"_s, 1500);
    registry.write_text(machine, window, u"CMVisible"_s, u"true"_s);
    const QString preset_file = env.path(u"presets.txt"_s);
    write_file(preset_file, "\"Fire\",\"Fire in hall 2, come at once\",\"bob\"\r\n\"Test\",\"Weekly test\",\"\"\r\n");
    registry.write_text(machine, window, u"PresetFile"_s, preset_file);
    write_file(env.program_folder() + u"modem.dbg"_s, "debug");

    ASSERT_EQ(start().outcome, StartupOutcome::Running);
    EXPECT_TRUE(env.prompter.boxes.isEmpty()) << env.prompter.box_titles().join(u", "_s).toStdString();
    state.reset();

    EXPECT_EQ(value_of(global(), u"SELECT cv_value FROM cv_settings WHERE cv_category = 'database' AND "
                                 "cv_name = 'version'"_s),
              u"501"_s);
    EXPECT_EQ(rows_of(global(), u"SELECT cv_name, cv_dial_type, cv_auth_type, cv_auth_user, cv_auth_pass, "
                                "cv_relay_mail, cv_relay_server, cv_modem_settings, cv_priority FROM cv_carriers "
                                "ORDER BY rowid"_s),
              (QStringList{u"First|ucp|0|||0||1200,e,7,1|100"_s, u"Pager|tap|1|user|pass|0||1200,e,7,1|100"_s,
                           u"Web|wct-0|11||secret|0|||100"_s, u"Mail|eml|11|||-1|relay.old.example|25|100"_s,
                           u"Fax|fax|11|a|b|c|0||9600,n,8,1|100"_s}));
    EXPECT_EQ(
        sorted_columns(global(), u"cv_carriers"_s),
        u"cv_auth_pass cv_auth_type cv_auth_user cv_dial_type cv_init_string cv_maxchars cv_message_limit "
        "cv_modem_settings cv_name cv_phone_number cv_priority cv_relay_mail cv_relay_server cv_retries"_s.split(u' '));
    // The converted password column keeps the width it was given, wider than a new file's.
    EXPECT_EQ(value_of(global(), u"SELECT type FROM pragma_table_info('cv_carriers') WHERE name = 'cv_auth_pass'"_s),
              u"TEXT(80)"_s);

    EXPECT_EQ(rows_of(global(), u"SELECT cv_name, cv_extra1, cv_extra2, cv_priority FROM cv_recipients"_s),
              QStringList{u"bob|||100"_s});
    EXPECT_FALSE(sorted_columns(global(), u"cv_recipients"_s).contains(u"cv_trustline"_s));
    EXPECT_FALSE(sorted_columns(global(), u"cv_messages"_s).contains(u"cv_trustline_index"_s));
    EXPECT_EQ(rows_of(global(), u"SELECT cv_message, cv_priority FROM cv_messages ORDER BY rowid"_s),
              (QStringList{u"old and done|100"_s, u"still waiting|100"_s}));

    const QString settings = u"SELECT cv_category || '/' || cv_name || '=' || cv_value FROM cv_settings "
                             "ORDER BY cv_category, cv_name"_s;
    const QStringList stored = rows_of(global(), settings);
    for (const QString& expected :
         u"database/purge_after=45;connector/retries=3;connector/retry_interval=20;connector/dial_prefix=9,;"
         "connector/port=2;connector/dns1=0.0.0.0;connector/dns2=0.0.0.0;connector/sender= dispatch ;"
         "connector/sender_email=dispatch@old.example;logging/level=2;logging/archive=-1;logging/length=50000;"
         "security/admin_password=adm;security/super_password=sup;security/user_password=;"
         "display/extra1_label=Comment1;display/extra2_label=Comment2;display/spell_check=-1;display/clear_on_send=0;"
         "display/small_font=0;display/max_msg_length=1500;display/connection_monitor_visible=-1;"
         "display/minimize_to_taskbar=0;level/user_presets=0;level/user_send_form_top=-1;"
         "level/user_activity_height=-1"_s.split(u';')) {
        EXPECT_TRUE(stored.contains(expected)) << expected.toStdString();
    }
    // The old row with no category was removed by the first save of the settings.
    EXPECT_EQ(value_of(global(), u"SELECT count(*) FROM cv_settings WHERE cv_category IS NULL"_s), u"0"_s);
    EXPECT_EQ(sorted_columns(global(), u"cv_settings"_s),
              (QStringList{u"cv_category"_s, u"cv_id"_s, u"cv_name"_s, u"cv_value"_s}));

    // The preset file replaced the presets from the first on; the message lives in cv_recipient.
    EXPECT_EQ(rows_of(global(), u"SELECT cv_index, cv_description, cv_recipient, cv_message FROM cv_presets "
                                "WHERE cv_index <= 3 ORDER BY cv_index"_s),
              (QStringList{u"1|Fire|Fire in hall 2, come at once|bob"_s, u"2|Test|Weekly test|"_s, u"3|||"_s}));
    EXPECT_EQ(value_of(global(), u"SELECT count(*) FROM cv_presets"_s), u"100"_s);
    // The counter started afresh at 1; this start drew from it.
    EXPECT_LT(value_of(global(), u"SELECT cv_unique FROM cv_counters"_s).toInt(), 10);

    store::Database db = store::Database::open(global(), store::Database::OpenMode::ReadOnly);
    const QStringList indexes = db.index_names(u"cv_messages"_s);
    EXPECT_FALSE(indexes.contains(u"sent_index"_s));
    EXPECT_FALSE(indexes.contains(u"cv_error_index"_s));
    EXPECT_TRUE(indexes.contains(u"cv_due_index"_s) && indexes.contains(u"cv_transaction_index"_s));
    EXPECT_TRUE(indexes.contains(u"cv_messages_priority_index"_s));
    EXPECT_TRUE(db.index_names(u"cv_carriers"_s).contains(u"priority_index"_s));
    EXPECT_EQ(value_of(global(), u"PRAGMA journal_mode"_s), u"wal"_s);

    // The copy taken before the first conversion is the file as it was.
    const QString backup = global() + u".v300.bak"_s;
    ASSERT_TRUE(QFile::exists(backup));
    EXPECT_EQ(value_of(backup, u"SELECT cv_dbversion FROM cv_settings"_s), u"300"_s);
    EXPECT_EQ(rows_of(backup, u"SELECT cv_password FROM cv_carriers ORDER BY rowid"_s).value(1), u"user|pass"_s);
}

TEST_F(ConversionTest, WithoutHereTheUsersOwnValuesAreReadAndMissingOnesGiveDefaults)
{
    fill_version300(302);
    exec_on(global(), u"ALTER TABLE cv_settings ADD COLUMN cv_extra1_label TEXT(20)"_s);
    exec_on(global(), u"ALTER TABLE cv_settings ADD COLUMN cv_extra2_label TEXT(20)"_s);
    exec_on(global(), u"UPDATE cv_settings SET cv_extra1_label = 'Room', cv_extra2_label = 'Ward'"_s);
    platform::Registry registry(env.registry_root());
    const QString key = u"SOFTWARE\\Halvern\\CorvaneDesk"_s;
    ASSERT_TRUE(registry.create_key(platform::Hive::CurrentUser, key));
    ASSERT_TRUE(registry.create_key(platform::Hive::LocalMachine, key));
    registry.write_text(platform::Hive::CurrentUser, key, u"Sender"_s, u"ops@plant.example"_s);
    registry.write_text(platform::Hive::CurrentUser, key, u"WarningPopup"_s, u"true"_s);
    registry.write_text(platform::Hive::LocalMachine, key, u"Sender"_s, u"machine"_s);

    ASSERT_EQ(start().outcome, StartupOutcome::Running);
    state.reset();
    const QStringList stored = rows_of(global(), u"SELECT cv_category || '/' || cv_name || '=' || cv_value "
                                                 "FROM cv_settings"_s);
    for (const QString& expected :
         {u"connector/sender=ops@plant.example"_s, u"connector/sender_email=ops@plant.example"_s,
          u"display/warning_popup=-1"_s, u"display/max_msg_length=0"_s, u"logging/level=1"_s,
          u"display/extra1_label=Room"_s, u"display/extra2_label=Ward"_s}) {
        EXPECT_TRUE(stored.contains(expected)) << expected.toStdString();
    }
    // No preset file: the program buttons keep their names.
    EXPECT_EQ(rows_of(global(), u"SELECT cv_description FROM cv_presets WHERE cv_index IN (1, 5) ORDER BY 1"_s),
              (QStringList{u"Prog 1"_s, u"Prog 5"_s}));
    // A 302 file skips the two small conversions: its password column is where it was.
    EXPECT_TRUE(QFile::exists(global() + u".v302.bak"_s));
    EXPECT_EQ(value_of(global(), u"SELECT cv_auth_pass FROM cv_carriers WHERE cv_name = 'Pager'"_s), u"pass"_s);
}

TEST_F(ConversionTest, AVersion500FileGetsOnlyTheLastConversion)
{
    testing::make_version500_database(global());
    exec_on(global(), u"UPDATE cv_settings SET cv_value = '10.1.1.1' WHERE cv_name = 'dns1'"_s);
    exec_on(global(), u"INSERT INTO cv_carriers (cv_name, cv_dial_type, cv_pulse) VALUES ('Pager', 'tap', -1)"_s);
    exec_on(global(), u"INSERT INTO cv_messages (cv_recipient, cv_sent, cv_error, cv_scheduled) VALUES "
                      "('bob', 0, 0, 0)"_s);

    ASSERT_EQ(start().outcome, StartupOutcome::Running);
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
    EXPECT_EQ(state->settings.get_setting_long({u"database", u"version"}), 501);
    state.reset();

    EXPECT_EQ(value_of(global(), u"SELECT cv_value FROM cv_settings WHERE cv_name = 'version'"_s), u"501"_s);
    // The settings were not converted again: the name server stays.
    EXPECT_EQ(value_of(global(), u"SELECT cv_value FROM cv_settings WHERE cv_name = 'dns1'"_s), u"10.1.1.1"_s);
    EXPECT_FALSE(sorted_columns(global(), u"cv_carriers"_s).contains(u"cv_pulse"_s));
    EXPECT_EQ(value_of(global(), u"SELECT cv_priority FROM cv_carriers"_s), u"100"_s);
    EXPECT_EQ(value_of(global(), u"SELECT cv_priority FROM cv_messages"_s), u"100"_s);
    EXPECT_TRUE(QFile::exists(global() + u".v500.bak"_s));
    EXPECT_FALSE(QFile::exists(global() + u".v300.bak"_s));
}

TEST_F(ConversionTest, AFileUnder300IsRefusedUntouchedWithBothBoxes)
{
    testing::make_version300_database(global(), 299);
    const QStringList before = testing::dump_database(global());

    const StartupResult result = start();
    EXPECT_EQ(result.outcome, StartupOutcome::Exit);
    EXPECT_NE(result.exit_code, kExitOk);
    EXPECT_EQ(env.prompter.box_titles(), (QStringList{u"Can't Upgrade Database"_s, u"Version Mismatch"_s}));
    EXPECT_EQ(env.prompter.boxes.front().text, u"The existing database is too old to upgrade."_s);
    state.reset();
    EXPECT_EQ(testing::dump_database(global()), before);
    EXPECT_TRUE(QDir(env.global_db_folder()).entryList({u"*.bak"_s}).isEmpty());
}

TEST_F(ConversionTest, AConversionThatFailsMidwayLeavesTheFileAsBeforeItAndTheBackup)
{
    fill_version300();
    // What the file looks like after the two small conversions, made on a copy.
    const QString copy = env.path(u"copy.mdb"_s);
    ASSERT_TRUE(QFile::copy(global(), copy));
    {
        store::Database db = store::Database::open(copy);
        store::convert300to301(db);
        store::convert301to302(db);
    }
    // A trigger makes the carrier rows refuse the change that only the conversion to 500 makes, after it has
    // already added its columns.
    const QString trigger = u"CREATE TRIGGER held BEFORE UPDATE ON cv_carriers WHEN NEW.cv_dial_type = 'wct-0' "
                            "BEGIN SELECT RAISE(ABORT, 'carrier rows are held'); END"_s;
    exec_on(global(), trigger);
    exec_on(copy, trigger);
    const QStringList original = testing::dump_database(global());

    const StartupResult result = start();
    EXPECT_EQ(result.outcome, StartupOutcome::Exit);
    EXPECT_NE(result.exit_code, kExitOk);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_EQ(env.prompter.boxes.front().title, u"CVD Fatal Error - convert302to500"_s);
    EXPECT_TRUE(env.prompter.boxes.front().text.startsWith(u"Error #"_s));
    EXPECT_TRUE(env.prompter.boxes.front().text.contains(u"  carrier rows are held"_s))
        << env.prompter.boxes.front().text.toStdString();
    state.reset();

    EXPECT_EQ(testing::dump_database(global()), testing::dump_database(copy));
    EXPECT_EQ(value_of(global(), u"SELECT cv_dbversion FROM cv_settings"_s), u"302"_s);
    const QString backup = global() + u".v300.bak"_s;
    ASSERT_TRUE(QFile::exists(backup));
    EXPECT_EQ(testing::dump_database(backup), original);
}

TEST_F(ConversionTest, AFailedLastConversionLeavesTheVersion500FileAsItWas)
{
    testing::make_version500_database(global());
    exec_on(global(), u"INSERT INTO cv_messages (cv_recipient, cv_sent, cv_error, cv_scheduled) VALUES "
                      "('bob', 0, 0, 0)"_s);
    exec_on(global(), u"CREATE TRIGGER held BEFORE UPDATE ON cv_messages BEGIN SELECT RAISE(ABORT, 'held'); END"_s);
    const QStringList before = testing::dump_database(global());

    const StartupResult result = start();
    EXPECT_EQ(result.outcome, StartupOutcome::Exit);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_EQ(env.prompter.boxes.front().title, u"CVD Fatal Error - convert500to501"_s);
    state.reset();
    EXPECT_EQ(testing::dump_database(global()), before);
    EXPECT_EQ(testing::dump_database(global() + u".v500.bak"_s), before);
}

TEST_F(ConversionTest, AFailureInTheSmallConversionsHaltsThroughTheCommonPath)
{
    testing::make_version300_database(global());
    exec_on(global(), u"DROP TABLE cv_recipients"_s);
    const QStringList before = testing::dump_database(global());

    EXPECT_THROW(start(), ProgramHalted);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_EQ(env.prompter.boxes.front().title, u"CorvaneDesk Fatal Error"_s);
    EXPECT_TRUE(env.prompter.boxes.front().text.endsWith(u"in Procedure: convert300to301 Program Halted"_s))
        << env.prompter.boxes.front().text.toStdString();
    state.reset();
    EXPECT_EQ(testing::dump_database(global()), before);
}

TEST(OldPresetFile, LinesAreReadAsDescriptionMessageAndRecipientUpToAHundred)
{
    testing::TestEnvironment env;
    const QString path = env.path(u"presets.txt"_s);
    QByteArray content = "\"Fire, hall 2\",\"Come \"\"now\"\"\",bob\r\n\r\nBare , text only\n\"Caf\xe9\"\n";
    for (int line = 0; line < 120; ++line) {
        content += "\"n\",\"m\",\"r\"\r\n";
    }
    write_file(path, content);
    const std::optional<QList<store::OldPreset>> presets = read_old_preset_file(path);
    ASSERT_TRUE(presets.has_value());
    ASSERT_EQ(presets->size(), 100);
    EXPECT_EQ(presets->at(0).description, u"Fire, hall 2"_s);
    EXPECT_EQ(presets->at(0).message, u"Come \"now\""_s);
    EXPECT_EQ(presets->at(0).recipient, u"bob"_s);
    EXPECT_EQ(presets->at(1).description, u"Bare"_s);
    EXPECT_EQ(presets->at(1).message, u"text only"_s);
    EXPECT_EQ(presets->at(1).recipient, QString());
    // Not UTF-8: read as Latin-1.
    EXPECT_EQ(presets->at(2).description, u"Café"_s);

    write_file(path, "\"one\",\"1\",\"\"\r\n\"unclosed,\"2\r\n");
    const std::optional<QList<store::OldPreset>> cut = read_old_preset_file(path);
    ASSERT_TRUE(cut.has_value());
    ASSERT_EQ(cut->size(), 1);
    EXPECT_FALSE(read_old_preset_file(env.path(u"missing.txt"_s)).has_value());
}

} // namespace
} // namespace cvd
