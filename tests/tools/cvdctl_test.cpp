// cvdctl run in-process against a private environment: its control commands, the database upkeep (the
// compaction needs the program to be down), and the registry commands other programs use.
#include "platform/datagram.h"
#include "platform/registry.h"
#include "platform/runtime.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/test_environment.h"
#include "support/thin_history.h"
#include "tools/cvdctl.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <QThread>
#include <gtest/gtest.h>
#include <thread>

using namespace Qt::StringLiterals;

namespace cvd::tools {
namespace {

// One in-process run of cvdctl with what it printed.
struct CtlRun
{
    int status = 0;
    QString out;
    QString err;
};

CtlRun cvdctl(const QStringList& arguments)
{
    CtlRun run;
    QTextStream out(&run.out);
    QTextStream err(&run.err);
    run.status = run_cvdctl(arguments, out, err);
    out.flush();
    err.flush();
    return run;
}

// A global database in shared mode, as the program leaves it, that knows the recipient bob.
class CvdctlControl : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QDir().mkpath(env.global_db_folder());
        store::create_global_database(global());
        store::Database db = store::Database::open(global());
        db.enable_wal();
        db.exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier, cv_group) VALUES ('bob', 'tapnet', 0)"_s);
    }
    QString global() const { return env.global_db_folder() + u"cvd.mdb"_s; }
    QString lock_file() const { return env.runtime_dir() + u'/' + QLatin1StringView(platform::kInstanceLockName); }

    void exec(const QString& sql)
    {
        store::Database db = store::Database::open(global());
        db.exec(sql);
    }

    // The first column of every row of a query.
    QStringList column(const QString& sql, const QString& path = {})
    {
        store::Database db =
            store::Database::open(path.isEmpty() ? global() : path, store::Database::OpenMode::ReadOnly);
        store::Statement select = db.prepare(sql);
        QStringList values;
        while (select.step()) {
            values.append(select.text(0).value_or(u"<null>"_s));
        }
        return values;
    }

    // Many rows, most of them deleted again, and a carrier left with a null by another tool.
    void add_thin_history()
    {
        store::Database db = store::Database::open(global());
        testing::add_thin_history(db, 4000, 4, -1);
        db.exec(u"INSERT INTO cv_carriers (cv_name, cv_dial_type) VALUES ('tapnet', NULL)"_s);
    }

    testing::TestEnvironment env;
};
using CvdctlDb = CvdctlControl;
using CvdctlReg = CvdctlControl;

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
    EXPECT_EQ(column(u"SELECT cv_message FROM cv_messages WHERE cv_recipient = 'bob'"_s), QStringList{long_text});

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
    exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_on_call) VALUES ('ops', 'Operations', "
         "-1, -1)"_s);
    exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('ops', 'bob')"_s);
    exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier) VALUES ('cy', 'net')"_s); // flags null
    const CtlRun recipients = cvdctl({u"list"_s, u"recipients"_s});
    EXPECT_EQ(recipients.status, 0) << recipients.err.toStdString();
    EXPECT_EQ(recipients.out,
              u"name\tfull name\tpin\tcarrier\tmax chars\tpriority\nbob\t\t\ttapnet\t\t\ncy\t\t\tnet\t\t\n"_s);
    EXPECT_EQ(cvdctl({u"list"_s, u"groups"_s}).out, u"name\tfull name\ton call\nops\tOperations\tyes\n"_s);
    EXPECT_EQ(cvdctl({u"list"_s, u"members"_s}).out, u"group\trecipient\nops\tbob\n"_s);
    EXPECT_EQ(cvdctl({u"list"_s, u"people"_s}).status, 2);
}

TEST_F(CvdctlControl, DbCheckAndBackupReportAndCopyAndMistakenDbCommandsAreRefused)
{
    exec(u"INSERT INTO cv_messages (cv_recipient, cv_sent, cv_error, cv_scheduled, cv_date_time_sent) VALUES "
         "('bob', -1, 0, -1, '2020-01-01 10:00:00'), ('bob', -1, 0, -1, datetime('now', 'localtime')), "
         "('bob', 0, 0, 0, '2020-01-01 10:00:00')"_s);
    const CtlRun checked = cvdctl({u"db"_s, u"check"_s});
    EXPECT_EQ(checked.status, 0) << checked.err.toStdString();
    EXPECT_TRUE(checked.out.contains(u"integrity: ok\n"_s));
    EXPECT_TRUE(checked.out.contains(u"version: 501\n"_s));
    EXPECT_TRUE(checked.out.contains(u"cv_messages: 3\n"_s));

    const QString copy = env.path(u"backup.mdb"_s);
    EXPECT_EQ(cvdctl({u"db"_s, u"backup"_s, copy}).status, 0);
    EXPECT_EQ(column(u"SELECT count(*) FROM cv_messages"_s, copy), QStringList{u"3"_s});
    EXPECT_EQ(cvdctl({u"db"_s, u"backup"_s, global()}).status, 2);

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

TEST_F(CvdctlDb, CompactShrinksBothDatabasesAndRepairsNullsWhenTheProgramDoesNotRun)
{
    add_thin_history();
    const qint64 size_before = QFileInfo(global()).size();

    const CtlRun run = cvdctl({u"db"_s, u"compact"_s});

    EXPECT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();
    const QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3) << run.out.toStdString();
    EXPECT_EQ(lines.at(0), u"global database "_s + global() + u": compacted, "_s + QString::number(size_before) +
                               u" -> "_s + QString::number(QFileInfo(global()).size()) + u" bytes"_s);
    EXPECT_LT(QFileInfo(global()).size(), size_before / 2);
    EXPECT_TRUE(lines.at(1).startsWith(u"user database "_s + env.user_db_folder() + u"cvd.mdb: compacted, "_s))
        << lines.at(1).toStdString();
    EXPECT_EQ(lines.at(2), u"null repair: done"_s);
    EXPECT_EQ(column(u"SELECT count(*) FROM cv_messages"_s), QStringList{u"1000"_s});
    EXPECT_EQ(column(u"SELECT cv_dial_type FROM cv_carriers WHERE cv_name = 'tapnet'"_s), QStringList{u"tap"_s});
    EXPECT_EQ(column(u"PRAGMA integrity_check"_s), QStringList{u"ok"_s});
    // The program's lock is let go again.
    EXPECT_FALSE(platform::program_is_running(env.runtime_dir()));

    EXPECT_EQ(cvdctl({u"db"_s, u"compact"_s, u"now"_s}).status, 2);
}

TEST_F(CvdctlDb, CompactIsRefusedWhileTheProgramRunsAndLeavesADatabaseOfAnotherVersionAlone)
{
    add_thin_history();
    const qint64 size_before = QFileInfo(global()).size();
    {
        auto running = platform::FileLock::try_lock(lock_file(), platform::FileLock::Mode::Exclusive);
        ASSERT_TRUE(running);
        const CtlRun run = cvdctl({u"db"_s, u"compact"_s});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(run.out.isEmpty()) << run.out.toStdString();
        EXPECT_EQ(run.err.count(u'\n'), 1) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(u"running"_s)) << run.err.toStdString();
        EXPECT_EQ(QFileInfo(global()).size(), size_before);
        EXPECT_FALSE(QFileInfo::exists(env.global_db_folder() + u"cvdtmp.mdb"_s));
        EXPECT_FALSE(QFileInfo::exists(env.user_db_folder() + u"cvd.mdb"_s));
    }

    exec(u"UPDATE cv_settings SET cv_value = '502' WHERE cv_category = 'database' AND cv_name = 'version'"_s);
    QFile file(global());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    const CtlRun other_version = cvdctl({u"db"_s, u"compact"_s});
    EXPECT_EQ(other_version.status, 1);
    EXPECT_EQ(other_version.err.count(u'\n'), 1) << other_version.err.toStdString();
    ASSERT_TRUE(file.seek(0));
    EXPECT_TRUE(file.readAll() == bytes);
}

TEST_F(CvdctlDb, CompactHoldsTheProgramsLockSoThatNoCopyStartsMeanwhile)
{
    // A connection of another program keeps the file open, so the compaction waits for it.
    auto leftover = std::make_unique<store::Database>(store::Database::open(global()));
    ASSERT_EQ(leftover->prepare(u"SELECT count(*) FROM cv_messages"_s).step(), true);
    CtlRun run;
    std::thread compaction([&] { run = cvdctl({u"db"_s, u"compact"_s}); });
    bool held = false;
    for (int probe = 0; probe < 1000 && !held; ++probe) {
        held = platform::program_is_running(env.runtime_dir());
        if (!held) {
            QThread::msleep(1);
        }
    }
    leftover.reset();
    compaction.join();
    EXPECT_TRUE(held);
    EXPECT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_FALSE(platform::program_is_running(env.runtime_dir()));
}

TEST_F(CvdctlDb, PurgeTakesExactlyTheFinishedRowsOlderThanTheDays)
{
    // cvdctl runs on the system clock: the ages stay far from the 30-day line.
    const QDateTime now = QDateTime::currentDateTime();
    const struct
    {
        const char* recipient;
        int sent;
        int error;
        int scheduled;
        QDateTime sent_at;
        bool purged;
    } rows[] = {
        {"old sent", -1, 0, -1, now.addDays(-400), true},   {"old failed", -1, -1, -1, now.addDays(-45), true},
        {"recent sent", -1, 0, -1, now.addDays(-3), false}, {"recent failed", -1, -1, -1, now.addDays(-1), false},
        {"old waiting", 0, 0, 0, now.addDays(-400), false}, {"old pending", 0, 0, -1, now.addDays(-400), false},
        {"sent, no date", -1, 0, -1, QDateTime(), false},   {"future sent", -1, 0, -1, now.addDays(20), false},
    };
    QStringList kept;
    {
        store::Database db = store::Database::open(global());
        store::Statement insert =
            db.prepare(u"INSERT INTO cv_messages (cv_recipient, cv_sent, cv_error, cv_scheduled, cv_date_time_sent) "
                       "VALUES (?1, ?2, ?3, ?4, ?5)"_s);
        for (const auto& row : rows) {
            insert.reset();
            insert.bind(1, QString::fromLatin1(row.recipient)).bind(2, row.sent).bind(3, row.error);
            insert.bind(4, row.scheduled).bind(5, row.sent_at);
            insert.exec();
            if (!row.purged) {
                kept.append(QString::fromLatin1(row.recipient));
            }
        }
    }

    const CtlRun purged = cvdctl({u"db"_s, u"purge"_s, u"--days"_s, u"30"_s});

    EXPECT_EQ(purged.status, 0) << purged.err.toStdString();
    EXPECT_EQ(purged.out, u"deleted 2 finished messages older than 30 days\n"_s);
    EXPECT_EQ(column(u"SELECT cv_recipient FROM cv_messages ORDER BY cv_message_id"_s), kept);
}

const QString kMessages = u"SOFTWARE\\Halvern\\Transfer\\Messages\\job1"_s;

TEST_F(CvdctlReg, SetGetListAndDeleteLikeAnotherProgramWouldInEitherHiveAndRefuseMistakes)
{
    EXPECT_EQ(cvdctl({u"reg"_s, u"set"_s, kMessages, u"To"_s, u"bob"_s}).status, 0);
    EXPECT_EQ(cvdctl({u"reg"_s, u"set"_s, kMessages, u"Message"_s, u"Disk full on db1"_s}).status, 0);
    EXPECT_EQ(cvdctl({u"reg"_s, u"set"_s, u"--number"_s, kMessages, u"Ready"_s, u"1"_s}).status, 0);

    const CtlRun got = cvdctl({u"reg"_s, u"get"_s, kMessages, u"Message"_s});
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.out, u"Disk full on db1\n"_s);

    // What cvdctl wrote is what the program reads through its own store.
    platform::Registry registry(env.registry_root());
    EXPECT_EQ(registry.read_number(platform::Hive::LocalMachine, kMessages, u"Ready"_s), 1);

    const CtlRun listed = cvdctl({u"reg"_s, u"list"_s, u"SOFTWARE\\Halvern\\Transfer"_s});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(listed.out, u"Messages\\\n"_s);
    const CtlRun values = cvdctl({u"reg"_s, u"list"_s, kMessages});
    EXPECT_EQ(values.out, u"Message = Disk full on db1\nReady = 1\nTo = bob\n"_s);

    EXPECT_EQ(cvdctl({u"reg"_s, u"delete"_s, kMessages, u"To"_s}).status, 0);
    EXPECT_EQ(cvdctl({u"reg"_s, u"get"_s, kMessages, u"To"_s}).status, 1);
    EXPECT_EQ(cvdctl({u"reg"_s, u"delete"_s, kMessages}).status, 0);
    EXPECT_FALSE(registry.key_exists(platform::Hive::LocalMachine, kMessages));

    // The hives are apart.
    EXPECT_EQ(cvdctl({u"reg"_s, u"set"_s, u"--hive"_s, u"HKCU"_s, u"SOFTWARE\\Halvern"_s, u"Here"_s, u"1"_s}).status,
              0);
    EXPECT_EQ(cvdctl({u"reg"_s, u"get"_s, u"SOFTWARE\\Halvern"_s, u"Here"_s}).status, 1);
    EXPECT_EQ(cvdctl({u"reg"_s, u"get"_s, u"--hive"_s, u"hkey_current_user"_s, u"SOFTWARE\\Halvern"_s, u"Here"_s}).out,
              u"1\n"_s);

    const CtlRun not_a_number = cvdctl({u"reg"_s, u"set"_s, u"--number"_s, u"K"_s, u"N"_s, u"twelve"_s});
    EXPECT_EQ(not_a_number.status, 2);
    EXPECT_FALSE(not_a_number.err.isEmpty());
    EXPECT_EQ(cvdctl({u"reg"_s, u"get"_s, u"K"_s}).status, 2);
    EXPECT_EQ(cvdctl({u"reg"_s, u"list"_s, u"NoSuchKey"_s}).status, 1);
    EXPECT_EQ(cvdctl({u"reg"_s, u"get"_s, u"--hive"_s, u"HKXX"_s, u"K"_s, u"N"_s}).status, 2);
    EXPECT_EQ(cvdctl({u"frobnicate"_s}).status, 2);
    EXPECT_EQ(cvdctl({u"--help"_s}).status, 0);
    EXPECT_TRUE(cvdctl({u"--version"_s}).out.startsWith(u"cvdctl "_s));
}

} // namespace
} // namespace cvd::tools
