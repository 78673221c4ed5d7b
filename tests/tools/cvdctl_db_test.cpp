// cvdctl's database upkeep beyond check and backup: the compaction, which needs the program to be down, and
// which rows a purge takes.
#include "platform/runtime.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/test_environment.h"
#include "support/thin_history.h"
#include "tools/cvdctl_runner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <gtest/gtest.h>
#include <thread>

using namespace Qt::StringLiterals;

namespace cvd::tools {
namespace {

class CvdctlDb : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QDir().mkpath(env.global_db_folder());
        store::create_global_database(global());
        // In shared mode, as the program leaves it.
        store::Database db = store::Database::open(global());
        db.enable_wal();
    }
    QString global() const { return env.global_db_folder() + u"cvd.mdb"_s; }
    QString lock_file() const { return env.runtime_dir() + u'/' + QLatin1StringView(platform::kInstanceLockName); }

    QStringList column(const QString& sql)
    {
        store::Database db = store::Database::open(global(), store::Database::OpenMode::ReadOnly);
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

TEST_F(CvdctlDb, CompactIsRefusedWhileTheProgramRuns)
{
    add_thin_history();
    const qint64 size_before = QFileInfo(global()).size();
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

TEST_F(CvdctlDb, CompactLeavesADatabaseOfAnotherVersionAlone)
{
    {
        store::Database db = store::Database::open(global());
        db.exec(u"UPDATE cv_settings SET cv_value = '502' WHERE cv_category = 'database' AND cv_name = 'version'"_s);
    }
    const QByteArray bytes = [&] {
        QFile file(global());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();

    const CtlRun run = cvdctl({u"db"_s, u"compact"_s});

    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err.count(u'\n'), 1) << run.err.toStdString();
    QFile file(global());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), bytes);
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

} // namespace
} // namespace cvd::tools
