// Runs the built programs as separate processes in a private environment, as an operator or another
// program on the machine would: the start and its refusals, the dispatcher with a stand-in delivery engine
// fed by every intake channel, and a backup taken while it runs.
#include "platform/folders.h"
#include "platform/registry.h"
#include "platform/runtime.h"
#include "store/database.h"
#include "store/maintenance.h"
#include "store/schema.h"
#include "support/legacy_databases.h"
#include "support/test_environment.h"
#include "support/writer_process.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QThread>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

using namespace Qt::StringLiterals;

namespace cvd {
namespace {

// Bounds on how long a process may take before the test gives up on it; never a measure of speed.
constexpr int kBoundMs = 60000;

// The programs lie beside the test executable unless CVD_BIN_DIR says otherwise.
QString bin_dir()
{
    const QString dir = qEnvironmentVariable("CVD_BIN_DIR");
    return dir.isEmpty() ? platform::executable_folder() : dir + u'/';
}

struct Finished
{
    int status = -1;
    QString out;
    QString err;
};

Finished run_to_end(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.closeWriteChannel();
    process.waitForFinished(kBoundMs);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

// A running cvd --headless, killed at the end of the test unless it ended before.
class RunningProgram
{
public:
    explicit RunningProgram(const QString& program, const QStringList& extra = {})
    {
        m_process.start(program, QStringList{u"--headless"_s} + extra);
        m_process.closeWriteChannel();
        while (!m_output.contains(u"cvd: running"_s) && m_process.waitForReadyRead(kBoundMs)) {
            m_output += QString::fromUtf8(m_process.readAllStandardOutput());
        }
    }
    ~RunningProgram()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished(kBoundMs);
        }
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    bool started() const { return m_output.contains(u"cvd: running"_s); }
    QString errors() { return QString::fromUtf8(m_process.readAllStandardError()); }
    QProcess& process() { return m_process; }
    // Everything printed so far.
    QString output()
    {
        m_process.waitForReadyRead(50);
        m_output += QString::fromUtf8(m_process.readAllStandardOutput());
        return m_output;
    }

    Finished terminate()
    {
        ::kill(static_cast<pid_t>(m_process.processId()), SIGTERM);
        m_process.waitForFinished(kBoundMs);
        m_output += QString::fromUtf8(m_process.readAllStandardOutput());
        return {m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1, m_output,
                QString::fromUtf8(m_process.readAllStandardError())};
    }

private:
    QProcess m_process;
    QString m_output;
};

qint64 scalar(const QString& path, const QString& sql)
{
    store::Database db = store::Database::open(path, store::Database::OpenMode::ReadOnly);
    store::Statement select = db.prepare(sql);
    return select.step() ? select.integer(0).value_or(-1) : -1;
}

void exec_on(const QString& path, const QString& sql)
{
    store::Database db = store::Database::open(path);
    db.exec(sql);
}

// Waits, within the bound, until the condition holds.
bool eventually(const std::function<bool()>& condition)
{
    const QDeadlineTimer deadline(kBoundMs);
    while (!deadline.hasExpired()) {
        if (condition()) {
            return true;
        }
        QThread::msleep(100);
    }
    return condition();
}

TEST(Program, AnswersHelpStartsHeadlessTakesLinesFromSecondStartsAndEndsInOrder)
{
    testing::TestEnvironment env;
    for (const QString& program : {u"cvd"_s, u"cvdctl"_s}) {
        const Finished help = run_to_end(bin_dir() + program, {u"--help"_s});
        EXPECT_TRUE(help.status == 0 && help.out.startsWith(u"Usage: "_s + program)) << help.out.toStdString();
        const Finished version = run_to_end(bin_dir() + program, {u"--version"_s});
        EXPECT_TRUE(version.status == 0 && version.out.startsWith(program + u" 5."_s)) << version.out.toStdString();
    }
    RunningProgram cvd(bin_dir() + u"cvd"_s);
    ASSERT_TRUE(cvd.started()) << cvd.errors().toStdString();
    EXPECT_TRUE(platform::program_is_running(env.runtime_dir()));

    const QString global = env.global_db_folder() + u"cvd.mdb"_s;
    const QString user = env.user_db_folder() + u"cvd.mdb"_s;
    ASSERT_TRUE(QFile::exists(global));
    ASSERT_TRUE(QFile::exists(user));
    EXPECT_EQ(scalar(global, u"SELECT count(*) FROM cv_presets"_s), 100);
    EXPECT_EQ(scalar(user, u"SELECT count(*) FROM cv_presets"_s), 100);
    exec_on(global, u"INSERT INTO cv_recipients (cv_name, cv_carrier, cv_group) VALUES ('bob', 'tapnet', 0)"_s);

    // A second start with a line enqueues it for the running copy and leaves silently.
    const Finished sent = run_to_end(bin_dir() + u"cvd"_s, {u"bob"_s, u"ops"_s, u"Disk"_s, u"full"_s});
    EXPECT_EQ(sent.status, 0) << sent.err.toStdString();
    EXPECT_TRUE(sent.err.isEmpty()) << sent.err.toStdString();
    EXPECT_EQ(scalar(global, u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'bob' AND cv_message = 'Disk "
                             "full' AND cv_from = 'ops' AND cv_carrier = 'tapnet' AND cv_scheduled = 0 AND "
                             "cv_sent = 0 AND cv_error = 0"_s),
              1);

    // A refused line adds nothing and says why in one line.
    const Finished refused = run_to_end(bin_dir() + u"cvd"_s, {u"nobody ops x"_s});
    EXPECT_NE(refused.status, 0);
    EXPECT_EQ(refused.err.count(u'\n'), 1) << refused.err.toStdString();
    EXPECT_TRUE(refused.err.contains(u"nobody"_s));
    EXPECT_EQ(scalar(global, u"SELECT count(*) FROM cv_messages"_s), 1);

    // A second start with nothing to hand in shows the duplicate box and ends.
    const Finished duplicate = run_to_end(bin_dir() + u"cvd"_s, {u"--headless"_s});
    EXPECT_NE(duplicate.status, 0);
    EXPECT_TRUE(duplicate.err.contains(u"Duplicate Application"_s)) << duplicate.err.toStdString();

    const Finished ended = cvd.terminate();
    EXPECT_EQ(ended.status, 0) << ended.err.toStdString();
    EXPECT_TRUE(ended.out.contains(u"cvd: stopped"_s));
    EXPECT_FALSE(platform::program_is_running(env.runtime_dir()));
}

TEST(Program, ADamagedDatabaseEndsTheProgramNamingTheLastBackupAndIsLeftAsItWas)
{
    testing::TestEnvironment env;
    QDir().mkpath(env.global_db_folder());
    const QString path = env.global_db_folder() + u"cvd.mdb"_s;
    store::create_global_database(path);
    {
        // Unsent rows enough that the middle of the file holds rows every start reads.
        store::Database db = store::Database::open(path);
        db.exec(u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2000) INSERT INTO "
                "cv_messages (cv_recipient, cv_message, cv_sent) SELECT 'bob', hex(randomblob(150)), 0 FROM n"_s);
    }
    // A conversion's copy of two days ago beside it, and a newer one made with cvdctl.
    QFile conversion_copy(path + u".v300.bak"_s);
    ASSERT_TRUE(conversion_copy.open(QIODevice::WriteOnly));
    conversion_copy.setFileTime(QDateTime::currentDateTime().addDays(-2), QFileDevice::FileModificationTime);
    const QString copy = env.path(u"nightly.mdb"_s);
    ASSERT_EQ(run_to_end(bin_dir() + u"cvdctl"_s, {u"db"_s, u"backup"_s, copy}).status, 0);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(file.size() / 2 / 4096 * 4096));
    file.write(QByteArray(8 * 4096, '\x5a'));
    ASSERT_TRUE(file.seek(0));
    const QByteArray damaged = file.readAll();

    const Finished run = run_to_end(bin_dir() + u"cvd"_s, {u"--headless"_s});
    EXPECT_NE(run.status, 0);
    EXPECT_TRUE(run.err.contains(u"The database "_s + path + u" is damaged"_s)) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(u"The most recent backup is "_s + copy + u'.')) << run.err.toStdString();
    ASSERT_TRUE(file.seek(0));
    EXPECT_TRUE(file.readAll() == damaged);
}

TEST(Program, AnOldDatabaseIsConvertedAtStartAndOneTooOldOrNoDatabaseAtAllIsRefused)
{
    testing::TestEnvironment env;
    QDir().mkpath(env.global_db_folder());
    const QString path = env.global_db_folder() + u"cvd.mdb"_s;
    testing::make_version300_database(path);
    exec_on(path, u"INSERT INTO cv_carriers (cv_name, cv_dial_type, cv_password) VALUES ('Pager', 'tap', 'u|p')"_s);
    {
        RunningProgram program(bin_dir() + u"cvd"_s);
        ASSERT_TRUE(program.started()) << program.errors().toStdString();
        EXPECT_EQ(program.terminate().status, 0);
    }
    EXPECT_EQ(scalar(path, u"SELECT cv_value FROM cv_settings WHERE cv_name = 'version'"_s), 501);
    EXPECT_EQ(scalar(path, u"SELECT cv_auth_type FROM cv_carriers WHERE cv_auth_user = 'u' AND cv_auth_pass = 'p'"_s),
              1);
    EXPECT_EQ(scalar(path + u".v300.bak"_s, u"SELECT cv_dbversion FROM cv_settings"_s), 300);

    QFile::remove(path);
    testing::make_version300_database(path, 250);
    const Finished refused = run_to_end(bin_dir() + u"cvd"_s, {u"--headless"_s});
    EXPECT_NE(refused.status, 0);
    EXPECT_TRUE(refused.err.contains(u"Can't Upgrade Database"_s)) << refused.err.toStdString();
    EXPECT_TRUE(refused.err.contains(u"Version Mismatch"_s)) << refused.err.toStdString();
    EXPECT_EQ(scalar(path, u"SELECT cv_dbversion FROM cv_settings"_s), 250);

    const QByteArray junk = QByteArray("not a database\n").repeated(200);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(junk);
    file.close();
    const Finished not_ours = run_to_end(bin_dir() + u"cvd"_s, {u"--headless"_s});
    EXPECT_NE(not_ours.status, 0);
    EXPECT_TRUE(not_ours.err.contains(u"CorvaneDesk Fatal Error: Fatal database error:  26"_s))
        << not_ours.err.toStdString();
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), junk);
}

QString source_dir()
{
    return QStringLiteral(CVD_E2E_SOURCE_DIR);
}

class DispatcherEndToEnd : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const QString program = env.program_folder();
        for (const QString& name : {u"cvd"_s, u"cvdctl"_s}) {
            ASSERT_TRUE(QFile::copy(bin_dir() + name, program + name));
        }
        ASSERT_TRUE(QFile::copy(source_dir() + u"/fixtures/fake_engine.sh"_s, program + u"cvddial"_s));
        QFile::setPermissions(program + u"cvddial"_s, QFile::permissions(program + u"cvddial"_s) |
                                                          QFileDevice::ExeOwner | QFileDevice::ExeUser);
        cvd = std::make_unique<RunningProgram>(program + u"cvd"_s);
        ASSERT_TRUE(cvd->started()) << cvd->errors().toStdString();
    }

    void TearDown() override
    {
        cvd.reset();
        for (const QString& pid : engine_pids()) {
            ::kill(pid.toInt(), SIGKILL);
        }
    }

    QStringList engine_pids() const
    {
        QFile file(env.runtime_dir() + u"/engine.pids"_s);
        if (!file.open(QIODevice::ReadOnly)) {
            return {};
        }
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    int cvdctl(const QStringList& arguments)
    {
        return run_to_end(env.program_folder() + u"cvdctl"_s, arguments).status;
    }

    void drop_file(const QString& name, const QByteArray& content)
    {
        // Written under another name and renamed, as a careful writer does, and dated back a little so
        // that it does not count as still being written.
        const QString path = env.global_db_folder() + name;
        QFile file(path + u".tmp"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.setFileTime(QDateTime::currentDateTime().addSecs(-5), QFileDevice::FileModificationTime);
        file.close();
        ASSERT_TRUE(QFile::rename(path + u".tmp"_s, path));
    }

    testing::TestEnvironment env;
    std::unique_ptr<RunningProgram> cvd;
    const QString global = env.global_db_folder() + u"cvd.mdb"_s;
};

TEST_F(DispatcherEndToEnd, MessagesFromEveryChannelAreScheduledAndTheEngineIsKeptAlive)
{
    exec_on(global,
            u"INSERT INTO cv_recipients (cv_name, cv_id, cv_carrier, cv_group, cv_on_call) VALUES "
            "('bob', '5551', 'tapnet', 0, 0), ('carol', '5552', 'tapnet', 0, 0), ('dave', '5553', 'smtp1', 0, 0), "
            "('ops', '', 'tapnet', -1, 0), ('night', '', 'tapnet', -1, -1)"_s);
    exec_on(global, u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('ops', 'bob'), ('ops', 'carol'), "
                    "('ops', 'dave'), ('night', 'carol')"_s);
    // A window that starts and stops at the same moment of one day covers the whole week.
    exec_on(global, u"INSERT INTO cv_oncalltable (cv_group, cv_recipient, cv_start_day, cv_start_time, cv_stop_day, "
                    "cv_stop_time) VALUES ('night', 'carol', 1, '1899-12-30 08:00:00', 1, '1899-12-30 08:00:00')"_s);

    // The engine is started on the first tick and reports its status.
    ASSERT_TRUE(eventually([&] { return cvd->output().contains(u"engine: Engine ready"_s); }))
        << cvd->output().toStdString();

    // A drop file becomes a row with carrier and pin, and the file is gone; a bad one is kept as .bad.
    drop_file(u"page1.asc"_s, "Bob\nops\nDisk full on db1\n");
    drop_file(u"page2.asc"_s, "nobody\nops\nlost\n");
    ASSERT_TRUE(eventually([&] { return !QFile::exists(env.global_db_folder() + u"page1.asc"_s); }));
    EXPECT_TRUE(eventually([&] { return QFile::exists(env.global_db_folder() + u"page2.asc.bad"_s); }));
    EXPECT_TRUE(eventually([&] {
        return scalar(global,
                      u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'bob' AND cv_pin = '5551' AND "
                      "cv_carrier = 'tapnet' AND cv_message = 'Disk full on db1' || char(13, 10) AND cv_sent <> 0"_s) ==
               1;
    }));

    // A complete registry subkey is taken and deleted.
    const QString job = u"SOFTWARE\\Halvern\\Transfer\\Messages\\job1"_s;
    ASSERT_EQ(cvdctl({u"reg"_s, u"set"_s, job, u"To"_s, u"carol"_s}), 0);
    ASSERT_EQ(cvdctl({u"reg"_s, u"set"_s, job, u"From"_s, u"ops"_s}), 0);
    ASSERT_EQ(cvdctl({u"reg"_s, u"set"_s, job, u"Message"_s, u"from the registry"_s}), 0);
    ASSERT_EQ(cvdctl({u"reg"_s, u"set"_s, u"--number"_s, job, u"Ready"_s, u"1"_s}), 0);
    platform::Registry registry(env.registry_root());
    EXPECT_TRUE(eventually([&] { return !registry.key_exists(platform::Hive::LocalMachine, job); }));
    EXPECT_TRUE(eventually([&] {
        return scalar(global, u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'carol' AND cv_pin = '5552' AND "
                              "cv_message = 'from the registry'"_s) == 1;
    }));

    // A line over the channel, and one that the engine will fail.
    ASSERT_EQ(cvdctl({u"send"_s, u"dave ops over the channel"_s}), 0);
    ASSERT_EQ(cvdctl({u"send"_s, u"dave ops this will fail"_s}), 0);
    EXPECT_TRUE(eventually([&] {
        return scalar(global, u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'dave' AND cv_sent <> 0"_s) == 2;
    }));
    EXPECT_TRUE(eventually([&] { return cvd->output().contains(u"Bad: 1"_s); })) << cvd->output().toStdString();

    // A three-member group and an on-call group handed in together expand in the same tick.
    exec_on(global,
            u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, cv_from, "
            "cv_sent, cv_error, cv_scheduled, cv_repeat_interval, cv_repeat_stop, cv_retries, cv_last_try, "
            "cv_transaction) VALUES "
            "('ops', '', 'group page', '', datetime('now', 'localtime'), '', 0, 0, 0, 0, datetime('now', 'localtime'), "
            "0, datetime('now', 'localtime'), 2000000), "
            "('night', '', 'night page', '', datetime('now', 'localtime'), '', 0, 0, 0, 0, datetime('now', "
            "'localtime'), 0, datetime('now', 'localtime'), 2000001)"_s);
    EXPECT_TRUE(eventually([&] {
        return scalar(global, u"SELECT count(*) FROM cv_messages WHERE cv_message = 'group page' AND cv_recipient IN "
                              "('bob', 'carol', 'dave') AND cv_sent <> 0"_s) == 3 &&
               scalar(global, u"SELECT count(*) FROM cv_messages WHERE cv_message = 'night page' AND cv_recipient = "
                              "'carol' AND cv_sent <> 0"_s) == 1;
    }));
    EXPECT_EQ(scalar(global, u"SELECT count(*) FROM cv_messages WHERE cv_recipient IN ('ops', 'night') AND "
                             "cv_transaction = 0 AND cv_sent <> 0"_s),
              2);
    EXPECT_TRUE(cvd->output().contains(u"activity: delivered"_s));

    // An engine that dies is started again on a later tick.
    const QStringList before = engine_pids();
    ASSERT_FALSE(before.isEmpty());
    for (const QString& pid : before) {
        ::kill(pid.toInt(), SIGKILL);
    }
    EXPECT_TRUE(eventually([&] { return engine_pids().size() > before.size(); }));

    // Another program asks the program to stop.
    EXPECT_EQ(cvdctl({u"stop"_s, u"--timeout"_s, u"60"_s}), 0);
    EXPECT_TRUE(cvd->process().waitForFinished(kBoundMs));
    EXPECT_EQ(cvd->process().exitCode(), 0) << cvd->errors().toStdString();
    EXPECT_EQ(registry.read_number(platform::Hive::LocalMachine, u"SOFTWARE\\Halvern\\Transfer"_s, u"Running"_s), 0);
    EXPECT_FALSE(platform::running_marker_is_held(env.runtime_dir()));
}

TEST_F(DispatcherEndToEnd, EveryAcknowledgedSendOutlivesAnAbruptEndAndKeepsItsWholeText)
{
    exec_on(global, u"INSERT INTO cv_recipients (cv_name, cv_id, cv_carrier, cv_group, cv_on_call) VALUES "
                    "('bob', '5551', 'tapnet', 0, 0)"_s);
    // Once the engine has reported, its pid is on record for the clean-up; none is started after the end.
    ASSERT_TRUE(eventually([&] { return cvd->output().contains(u"engine: Engine ready"_s); }))
        << cvd->output().toStdString();
    const QString long_text = QString(6000, u'x');
    const QStringList texts{u"one"_s, long_text, u"three"_s, u"four"_s};
    for (const QString& text : texts) {
        ASSERT_EQ(cvdctl({u"send"_s, u"bob"_s, u"ops"_s, text}), 0);
    }
    // Nothing is left to finish: the end comes without warning, right after the last answer.
    cvd->process().kill();
    ASSERT_TRUE(cvd->process().waitForFinished(kBoundMs));
    EXPECT_EQ(scalar(global, u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'bob'"_s), texts.size());
    EXPECT_EQ(scalar(global, u"SELECT max(length(cv_message)) FROM cv_messages WHERE cv_recipient = 'bob'"_s),
              long_text.size());
}

QList<qint64> writer_rows(const QString& path)
{
    store::Database db = store::Database::open(path, store::Database::OpenMode::ReadOnly);
    store::Statement select =
        db.prepare(u"SELECT cv_transaction FROM cv_messages WHERE cv_recipient = 'writer' ORDER BY cv_transaction"_s);
    QList<qint64> rows;
    while (select.step()) {
        rows.append(select.integer(0).value_or(-1));
    }
    return rows;
}

TEST(BackupWhileRunning, TheCopyIsSoundAndHoldsEveryRowCommittedBeforeItBegan)
{
    testing::TestEnvironment env;
    RunningProgram cvd(bin_dir() + u"cvd"_s);
    ASSERT_TRUE(cvd.started()) << cvd.errors().toStdString();
    const QString global = env.global_db_folder() + u"cvd.mdb"_s;
    // A history of finished rows, so that the copy takes the backup several steps.
    exec_on(global, u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 30000) INSERT INTO "
                    "cv_messages (cv_recipient, cv_message, cv_sent, cv_error, cv_scheduled, cv_date_time_sent) SELECT "
                    "'history', 'a page of the long history, number ' || i || ', with some words to fill the row', -1, "
                    "0, -1, '2026-01-01 10:00:00' FROM n"_s);

    testing::WriterProcess writer(global, 2);
    ASSERT_TRUE(writer.started());
    ASSERT_TRUE(writer.wait_for(20, kBoundMs));

    const QString copy = env.path(u"copy.mdb"_s);
    const qint64 began = testing::WriterProcess::steady_ms();
    QProcess backup;
    backup.start(bin_dir() + u"cvdctl"_s, {u"db"_s, u"backup"_s, copy});
    ASSERT_TRUE(backup.waitForFinished(kBoundMs));
    const qint64 ended = testing::WriterProcess::steady_ms();
    EXPECT_EQ(backup.exitCode(), 0) << backup.readAllStandardError().toStdString();
    const qsizetype reported = writer.commits().size();
    ASSERT_TRUE(writer.wait_for(reported + 5, kBoundMs));
    ASSERT_TRUE(writer.stop());

    QList<qint64> before_backup;
    QList<qint64> committed;
    qsizetype during_backup = 0;
    for (const testing::WriterProcess::Commit& commit : writer.commits()) {
        committed.append(commit.number);
        if (commit.committed_ms < began) {
            before_backup.append(commit.number);
        } else if (commit.committed_ms <= ended) {
            ++during_backup;
        }
    }
    // The writer kept going while the copy was taken.
    EXPECT_GT(during_backup, 0);

    store::Database db = store::Database::open(copy, store::Database::OpenMode::ReadOnly);
    EXPECT_EQ(store::integrity_check(db), QStringList{u"ok"_s});
    EXPECT_EQ(store::classify(db), store::FileKind::Global);
    const QList<qint64> copied = writer_rows(copy);
    // One committed moment: the writer's rows up to some row, every one committed before the backup began
    // among them, none that was never committed.
    ASSERT_GE(copied.size(), before_backup.size());
    EXPECT_EQ(copied.mid(0, before_backup.size()), before_backup);
    for (qsizetype row = 0; row < copied.size(); ++row) {
        EXPECT_EQ(copied.at(row), row + 1);
    }
    EXPECT_LE(copied.size(), committed.size());
    EXPECT_EQ(scalar(copy, u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'history'"_s), 30000);

    EXPECT_EQ(cvd.terminate().status, 0);
}

} // namespace
} // namespace cvd
