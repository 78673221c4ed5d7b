// A backup taken with cvdctl while the dispatcher runs and another program keeps adding rows: the copy must
// be sound and hold every row committed before the backup began.
#include "platform/folders.h"
#include "store/database.h"
#include "store/maintenance.h"
#include "store/schema.h"
#include "support/test_environment.h"
#include "support/writer_process.h"

#include <QFile>
#include <QProcess>
#include <csignal>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd {
namespace {

// Bounds on how long a process may take before the test gives up on it; never a measure of speed.
constexpr int kBoundMs = 30000;

QString bin_dir()
{
    const QString dir = qEnvironmentVariable("CVD_BIN_DIR");
    return dir.isEmpty() ? platform::executable_folder() : dir + u'/';
}

// A history of finished rows, so that the copy takes the backup several steps.
void add_history(const QString& path, int rows)
{
    store::Database db = store::Database::open(path);
    store::Transaction transaction(db);
    store::Statement insert = db.prepare(u"INSERT INTO cv_messages (cv_recipient, cv_message, cv_sent, cv_error, "
                                         "cv_scheduled, cv_date_time_sent) VALUES ('history', ?1, -1, 0, -1, "
                                         "'2026-01-01 10:00:00')"_s);
    for (int row = 1; row <= rows; ++row) {
        insert.reset();
        insert.bind(1, u"a page of the long history, number %1, with some words to fill the row"_s.arg(row));
        insert.exec();
    }
    transaction.commit();
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
    QProcess cvd;
    cvd.start(bin_dir() + u"cvd"_s, {u"--headless"_s});
    cvd.closeWriteChannel();
    QString output;
    while (!output.contains(u"cvd: running"_s) && cvd.waitForReadyRead(kBoundMs)) {
        output += QString::fromUtf8(cvd.readAllStandardOutput());
    }
    ASSERT_TRUE(output.contains(u"cvd: running"_s)) << cvd.readAllStandardError().toStdString();
    const QString global = env.global_db_folder() + u"cvd.mdb"_s;
    add_history(global, 30000);

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
    QList<qint64> first_rows;
    for (qint64 number = 1; number <= copied.size(); ++number) {
        first_rows.append(number);
    }
    EXPECT_EQ(copied, first_rows);
    EXPECT_LE(copied.size(), committed.size());
    store::Statement history = db.prepare(u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'history'"_s);
    ASSERT_TRUE(history.step());
    EXPECT_EQ(history.integer(0), 30000);

    ::kill(static_cast<pid_t>(cvd.processId()), SIGTERM);
    ASSERT_TRUE(cvd.waitForFinished(kBoundMs));
    EXPECT_EQ(cvd.exitCode(), 0);
}

} // namespace
} // namespace cvd
