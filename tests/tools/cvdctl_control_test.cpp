#include "platform/datagram.h"
#include "platform/runtime.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/test_environment.h"
#include "tools/cvdctl_runner.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::tools {
namespace {

class CvdctlControl : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QDir().mkpath(env.global_db_folder());
        store::create_global_database(global());
        store::Database db = store::Database::open(global());
        db.exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier, cv_group) VALUES ('bob', 'tapnet', 0)"_s);
    }
    QString global() const { return env.global_db_folder() + u"cvd.mdb"_s; }

    testing::TestEnvironment env;
};

TEST_F(CvdctlControl, SendEnqueuesDirectlyWhenTheProgramDoesNotRun)
{
    const CtlRun sent = cvdctl({u"send"_s, u"bob"_s, u"ops"_s, u"Disk"_s, u"full"_s});
    EXPECT_EQ(sent.status, 0) << sent.err.toStdString();
    const CtlRun refused = cvdctl({u"send"_s, u"nobody ops x"_s});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.contains(u"nobody"_s));

    const CtlRun status = cvdctl({u"status"_s});
    EXPECT_EQ(status.status, 0) << status.err.toStdString();
    EXPECT_TRUE(status.out.contains(u"running: no\n"_s));
    EXPECT_TRUE(status.out.contains(u"waiting: 1\n"_s)) << status.out.toStdString();
    EXPECT_TRUE(status.out.contains(u"pending: 0\n"_s));
}

TEST_F(CvdctlControl, WhileTheProgramRunsSendCommitsTheWholeLineAndNotifyRefusesWhatTheChannelCannotCarry)
{
    auto lock =
        platform::FileLock::try_lock(env.runtime_dir() + u"/CorvaneDesk.lock"_s, platform::FileLock::Mode::Exclusive);
    platform::DatagramReceiver receiver;
    ASSERT_TRUE(receiver.bind(env.runtime_dir() + u"/CorvaneDesk.sock"_s));

    const QString long_text(6000, u'x');
    const CtlRun sent = cvdctl({u"send"_s, u"bob"_s, u"ops"_s, long_text});
    EXPECT_EQ(sent.status, 0) << sent.err.toStdString();
    EXPECT_TRUE(sent.out.startsWith(u"enqueued as message "_s)) << sent.out.toStdString();
    {
        store::Database db = store::Database::open(global(), store::Database::OpenMode::ReadOnly);
        store::Statement row = db.prepare(u"SELECT cv_message FROM cv_messages WHERE cv_recipient = 'bob'"_s);
        ASSERT_TRUE(row.step());
        EXPECT_EQ(row.text(0), long_text);
    }

    EXPECT_EQ(cvdctl({u"notify"_s, u"--kind"_s, u"2"_s, u"dialing"_s, u"tapnet"_s}).status, 0);
    const std::optional<platform::Datagram> activity = receiver.receive(); // the first: send used no datagram
    ASSERT_TRUE(activity);
    EXPECT_EQ(activity->kind, 2u);
    EXPECT_EQ(activity->text, u"dialing tapnet"_s);

    const struct
    {
        QString kind;
        QString text;
        int status;
        QString reason;
    } refused[] = {
        {u"3"_s, QString(2047, u'x'), 0, {}},
        {u"3"_s, QString(2048, u'x'), 1, u"2048 bytes"_s},
        {u"2"_s, QString(1024, QChar(0x00e9)), 1, u"2048 bytes"_s}, // counted in UTF-8
        {u"3"_s, u"SendPage bob ops x"_s, 1, u"cvdctl send"_s},
        {u"7"_s, u"x"_s, 2, {}},
    };
    for (const auto& c : refused) {
        const CtlRun run = cvdctl({u"notify"_s, u"--kind"_s, c.kind, c.text});
        EXPECT_EQ(run.status, c.status) << c.text.left(20).toStdString();
        EXPECT_TRUE(run.err.contains(c.reason)) << run.err.toStdString();
    }
    ASSERT_TRUE(receiver.receive()); // the one that fits
    EXPECT_FALSE(receiver.receive());
    EXPECT_TRUE(cvdctl({u"status"_s}).out.contains(u"running: yes\n"_s));
}

TEST_F(CvdctlControl, ListShowsTheAddressBook)
{
    {
        store::Database db = store::Database::open(global());
        db.exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_on_call) VALUES ('ops', 'Operations', "
                "-1, -1)"_s);
        db.exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('ops', 'bob')"_s);
        db.exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier) VALUES ('cy', 'net')"_s); // flags null
    }
    const CtlRun recipients = cvdctl({u"list"_s, u"recipients"_s});
    EXPECT_EQ(recipients.status, 0) << recipients.err.toStdString();
    EXPECT_EQ(recipients.out,
              u"name\tfull name\tpin\tcarrier\tmax chars\tpriority\nbob\t\t\ttapnet\t\t\ncy\t\t\tnet\t\t\n"_s);
    EXPECT_EQ(cvdctl({u"list"_s, u"groups"_s}).out, u"name\tfull name\ton call\nops\tOperations\tyes\n"_s);
    EXPECT_EQ(cvdctl({u"list"_s, u"members"_s}).out, u"group\trecipient\nops\tbob\n"_s);
    EXPECT_EQ(cvdctl({u"list"_s, u"people"_s}).status, 2);
}

TEST_F(CvdctlControl, DbCheckBackupAndPurge)
{
    {
        store::Database db = store::Database::open(global());
        db.exec(u"INSERT INTO cv_messages (cv_recipient, cv_sent, cv_error, cv_scheduled, cv_date_time_sent) VALUES "
                "('bob', -1, 0, -1, '2020-01-01 10:00:00'), ('bob', -1, 0, -1, datetime('now', 'localtime')), "
                "('bob', 0, 0, 0, '2020-01-01 10:00:00')"_s);
    }
    const CtlRun checked = cvdctl({u"db"_s, u"check"_s});
    EXPECT_EQ(checked.status, 0) << checked.err.toStdString();
    EXPECT_TRUE(checked.out.contains(u"integrity: ok\n"_s));
    EXPECT_TRUE(checked.out.contains(u"version: 501\n"_s));
    EXPECT_TRUE(checked.out.contains(u"cv_messages: 3\n"_s));

    const QString copy = env.path(u"backup.mdb"_s);
    EXPECT_EQ(cvdctl({u"db"_s, u"backup"_s, copy}).status, 0);
    store::Database backup = store::Database::open(copy, store::Database::OpenMode::ReadOnly);
    store::Statement rows = backup.prepare(u"SELECT count(*) FROM cv_messages"_s);
    ASSERT_TRUE(rows.step());
    EXPECT_EQ(rows.integer(0), 3);
    EXPECT_EQ(cvdctl({u"db"_s, u"backup"_s, global()}).status, 2);

    const CtlRun purged = cvdctl({u"db"_s, u"purge"_s, u"--days"_s, u"30"_s});
    EXPECT_EQ(purged.status, 0) << purged.err.toStdString();
    EXPECT_TRUE(purged.out.startsWith(u"deleted 1 "_s)) << purged.out.toStdString();
    EXPECT_EQ(cvdctl({u"db"_s, u"purge"_s, u"--days"_s, u"x"_s}).status, 2);
    EXPECT_EQ(cvdctl({u"db"_s, u"shrink"_s}).status, 2);
}

TEST_F(CvdctlControl, AnAddressBookExportedAndImportedElsewhereIsListedAndPublished)
{
    const QString file = env.path(u"recip.txt"_s);
    const CtlRun exported = cvdctl({u"export"_s, u"recipients"_s, file});
    ASSERT_EQ(exported.status, 0) << exported.err.toStdString();

    // Another machine: a fresh database without bob.
    QFile::remove(global());
    store::create_global_database(global());
    EXPECT_EQ(cvdctl({u"list"_s, u"recipients"_s}).out.count(u'\n'), 1);
    const CtlRun imported = cvdctl({u"import"_s, u"recipients"_s, file});
    EXPECT_EQ(imported.status, 0) << imported.err.toStdString();
    EXPECT_TRUE(cvdctl({u"list"_s, u"recipients"_s}).out.contains(u"\nbob\t"_s));
    platform::Registry registry(env.registry_root());
    EXPECT_EQ(registry.value_names(platform::Hive::LocalMachine, u"SOFTWARE\\Halvern\\Transfer\\Recipients"_s),
              QStringList{u"bob"_s});

    const CtlRun missing = cvdctl({u"import"_s, u"recipients"_s, env.path(u"nope.txt"_s)});
    EXPECT_EQ(missing.status, 1);
    EXPECT_FALSE(missing.err.isEmpty());
    EXPECT_EQ(cvdctl({u"import"_s, u"people"_s, file}).status, 2);
}

TEST_F(CvdctlControl, StopAsksAndGivesUpAfterItsTimeLimit)
{
    const QString transfer = u"SOFTWARE\\Halvern\\Transfer"_s;
    platform::Registry registry(env.registry_root());
    ASSERT_TRUE(registry.create_key(platform::Hive::LocalMachine, transfer));
    ASSERT_TRUE(registry.write_number(platform::Hive::LocalMachine, transfer, u"Running"_s, 1));
    const CtlRun stuck = cvdctl({u"stop"_s, u"--timeout"_s, u"0"_s});
    EXPECT_EQ(stuck.status, 1);
    EXPECT_EQ(registry.read_number(platform::Hive::LocalMachine, transfer, u"Stop"_s), 1);

    ASSERT_TRUE(registry.write_number(platform::Hive::LocalMachine, transfer, u"Running"_s, 0));
    EXPECT_EQ(cvdctl({u"stop"_s}).status, 0);
}

} // namespace
} // namespace cvd::tools
