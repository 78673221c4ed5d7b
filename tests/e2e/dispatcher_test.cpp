// The dispatcher as another program sees it: cvd --headless in a private environment with a stand-in
// delivery engine beside it, fed by every intake channel.
#include "platform/folders.h"
#include "platform/registry.h"
#include "platform/runtime.h"
#include "store/database.h"
#include "support/test_environment.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QThread>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd {
namespace {

// Bounds on how long the test waits for the program to do something; never a measure of speed.
constexpr int kBoundMs = 60000;

QString bin_dir()
{
    const QString dir = qEnvironmentVariable("CVD_BIN_DIR");
    return dir.isEmpty() ? platform::executable_folder() : dir + u'/';
}

QString source_dir()
{
    return QStringLiteral(CVD_E2E_SOURCE_DIR);
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
        cvd.setProgram(program + u"cvd"_s);
        cvd.setArguments({u"--headless"_s});
        cvd.start();
        ASSERT_TRUE(eventually([&] { return output().contains(u"cvd: running"_s); })) << errors().toStdString();
        global = env.global_db_folder() + u"cvd.mdb"_s;
    }

    void TearDown() override
    {
        if (cvd.state() != QProcess::NotRunning) {
            cvd.kill();
            cvd.waitForFinished(kBoundMs);
        }
        for (const QString& pid : engine_pids()) {
            ::kill(pid.toInt(), SIGKILL);
        }
    }

    QString output()
    {
        cvd.waitForReadyRead(50);
        m_output += QString::fromUtf8(cvd.readAllStandardOutput());
        return m_output;
    }
    QString errors() { return QString::fromUtf8(cvd.readAllStandardError()); }

    QStringList engine_pids() const
    {
        QFile file(env.runtime_dir() + u"/engine.pids"_s);
        if (!file.open(QIODevice::ReadOnly)) {
            return {};
        }
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    void exec(const QString& sql)
    {
        store::Database db = store::Database::open(global);
        db.exec(sql);
    }

    qint64 scalar(const QString& sql)
    {
        store::Database db = store::Database::open(global, store::Database::OpenMode::ReadOnly);
        store::Statement select = db.prepare(sql);
        return select.step() ? select.integer(0).value_or(-1) : -1;
    }

    int cvdctl(const QStringList& arguments)
    {
        QProcess tool;
        tool.start(env.program_folder() + u"cvdctl"_s, arguments);
        tool.waitForFinished(kBoundMs);
        return tool.exitCode();
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
    QProcess cvd;
    QString global;

private:
    QString m_output;
};

TEST_F(DispatcherEndToEnd, MessagesFromEveryChannelAreScheduledAndTheEngineIsKeptAlive)
{
    exec(u"INSERT INTO cv_recipients (cv_name, cv_id, cv_carrier, cv_group, cv_on_call) VALUES "
         "('bob', '5551', 'tapnet', 0, 0), ('carol', '5552', 'tapnet', 0, 0), ('dave', '5553', 'smtp1', 0, 0), "
         "('ops', '', 'tapnet', -1, 0), ('night', '', 'tapnet', -1, -1)"_s);
    exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('ops', 'bob'), ('ops', 'carol'), "
         "('ops', 'dave'), ('night', 'carol')"_s);
    // A window that starts and stops at the same moment of one day covers the whole week.
    exec(u"INSERT INTO cv_oncalltable (cv_group, cv_recipient, cv_start_day, cv_start_time, cv_stop_day, "
         "cv_stop_time) VALUES ('night', 'carol', 1, '1899-12-30 08:00:00', 1, '1899-12-30 08:00:00')"_s);

    // The engine is started on the first tick and reports its status.
    ASSERT_TRUE(eventually([&] { return output().contains(u"engine: Engine ready"_s); })) << output().toStdString();

    // A drop file becomes a row with carrier and pin, and the file is gone; a bad one is kept as .bad.
    drop_file(u"page1.asc"_s, "Bob\nops\nDisk full on db1\n");
    drop_file(u"page2.asc"_s, "nobody\nops\nlost\n");
    ASSERT_TRUE(eventually([&] { return !QFile::exists(env.global_db_folder() + u"page1.asc"_s); }));
    EXPECT_TRUE(eventually([&] { return QFile::exists(env.global_db_folder() + u"page2.asc.bad"_s); }));
    EXPECT_TRUE(eventually([&] {
        return scalar(u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'bob' AND cv_pin = '5551' AND "
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
        return scalar(u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'carol' AND cv_pin = '5552' AND "
                      "cv_message = 'from the registry'"_s) == 1;
    }));

    // A line over the channel, and one that the engine will fail.
    ASSERT_EQ(cvdctl({u"send"_s, u"dave ops over the channel"_s}), 0);
    ASSERT_EQ(cvdctl({u"send"_s, u"dave ops this will fail"_s}), 0);
    EXPECT_TRUE(eventually([&] {
        return scalar(u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'dave' AND cv_sent <> 0"_s) == 2;
    }));
    EXPECT_TRUE(eventually([&] { return output().contains(u"Bad: 1"_s); })) << output().toStdString();

    // A three-member group and an on-call group handed in together expand in the same tick.
    exec(u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, cv_from, "
         "cv_sent, cv_error, cv_scheduled, cv_repeat_interval, cv_repeat_stop, cv_retries, cv_last_try, "
         "cv_transaction) VALUES "
         "('ops', '', 'group page', '', datetime('now', 'localtime'), '', 0, 0, 0, 0, datetime('now', 'localtime'), "
         "0, datetime('now', 'localtime'), 2000000), "
         "('night', '', 'night page', '', datetime('now', 'localtime'), '', 0, 0, 0, 0, datetime('now', "
         "'localtime'), 0, datetime('now', 'localtime'), 2000001)"_s);
    EXPECT_TRUE(eventually([&] {
        return scalar(u"SELECT count(*) FROM cv_messages WHERE cv_message = 'group page' AND cv_recipient IN "
                      "('bob', 'carol', 'dave') AND cv_sent <> 0"_s) == 3 &&
               scalar(u"SELECT count(*) FROM cv_messages WHERE cv_message = 'night page' AND cv_recipient = "
                      "'carol' AND cv_sent <> 0"_s) == 1;
    }));
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_messages WHERE cv_recipient IN ('ops', 'night') AND "
                     "cv_transaction = 0 AND cv_sent <> 0"_s),
              2);
    EXPECT_TRUE(output().contains(u"activity: delivered"_s));

    // An engine that dies is started again on a later tick.
    const QStringList before = engine_pids();
    ASSERT_FALSE(before.isEmpty());
    for (const QString& pid : before) {
        ::kill(pid.toInt(), SIGKILL);
    }
    EXPECT_TRUE(eventually([&] { return engine_pids().size() > before.size(); }));

    // Another program asks the program to stop.
    EXPECT_EQ(cvdctl({u"stop"_s, u"--timeout"_s, u"60"_s}), 0);
    EXPECT_TRUE(cvd.waitForFinished(kBoundMs));
    EXPECT_EQ(cvd.exitCode(), 0) << errors().toStdString();
    EXPECT_EQ(registry.read_number(platform::Hive::LocalMachine, u"SOFTWARE\\Halvern\\Transfer"_s, u"Running"_s), 0);
    EXPECT_FALSE(platform::running_marker_is_held(env.runtime_dir()));
}

TEST_F(DispatcherEndToEnd, EveryAcknowledgedSendOutlivesAnAbruptEndAndKeepsItsWholeText)
{
    exec(u"INSERT INTO cv_recipients (cv_name, cv_id, cv_carrier, cv_group, cv_on_call) VALUES "
         "('bob', '5551', 'tapnet', 0, 0)"_s);
    // Once the engine has reported, its pid is on record for the clean-up; none is started after the end.
    ASSERT_TRUE(eventually([&] { return output().contains(u"engine: Engine ready"_s); })) << output().toStdString();
    const QString long_text = QString(6000, u'x');
    const QStringList texts{u"one"_s, long_text, u"three"_s, u"four"_s};
    for (const QString& text : texts) {
        ASSERT_EQ(cvdctl({u"send"_s, u"bob"_s, u"ops"_s, text}), 0);
    }
    // Nothing is left to finish: the end comes without warning, right after the last answer.
    cvd.kill();
    ASSERT_TRUE(cvd.waitForFinished(kBoundMs));
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'bob'"_s), texts.size());
    EXPECT_EQ(scalar(u"SELECT max(length(cv_message)) FROM cv_messages WHERE cv_recipient = 'bob'"_s),
              long_text.size());
}

} // namespace
} // namespace cvd
