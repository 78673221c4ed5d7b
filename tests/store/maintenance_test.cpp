#include "store/maintenance.h"
#include "store/schema.h"
#include "store_test_support.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using namespace Qt::StringLiterals;

namespace cvd::store {
namespace {

qint64 count(Database& db, const QString& sql)
{
    return testing::query_value(db, sql).toLongLong();
}

void insert_message(Database& db, const QString& recipient, int sent, const QDateTime& sent_at)
{
    Statement insert =
        db.prepare(u"INSERT INTO cv_messages (cv_recipient, cv_sent, cv_error, cv_scheduled, cv_date_time_sent) VALUES "
                   "(?1, ?2, 0, ?2, ?3)"_s);
    insert.bind(1, recipient).bind(2, sent);
    if (sent_at.isValid()) {
        insert.bind(3, sent_at);
    } else {
        insert.bind_null(3);
    }
    insert.exec();
}

// `rows` unsent messages for "before", in one transaction.
void insert_before(Database& db, int rows)
{
    Transaction transaction(db);
    for (int row = 0; row < rows; ++row) {
        insert_message(db, u"before"_s, 0, {});
    }
    transaction.commit();
}

// A thread with a connection of its own that inserts "during" rows until it is stopped.
class WriterThread
{
public:
    explicit WriterThread(const QString& path)
        : m_thread([this, path] {
              Database other = Database::open(path);
              while (!stop) {
                  insert_message(other, u"during"_s, 0, {});
                  ++written;
              }
          })
    {
    }
    ~WriterThread() { finish(); }
    WriterThread(const WriterThread&) = delete;
    WriterThread& operator=(const WriterThread&) = delete;

    void finish()
    {
        stop = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    std::atomic<bool> stop{false};
    std::atomic<int> written{0};

private:
    std::thread m_thread;
};

class Maintenance : public ::testing::Test
{
protected:
    void SetUp() override
    {
        create_global_database(path);
        db = Database::open(path);
    }

    // The backup in copy.mdb: sound, of our kind, with every row that was there before it began.
    Database checked_copy(int rows_before)
    {
        Database copy = Database::open(folder.path(u"copy.mdb"_s), Database::OpenMode::ReadOnly);
        EXPECT_EQ(integrity_check(copy), QStringList{u"ok"_s});
        EXPECT_EQ(classify(copy), FileKind::Global);
        EXPECT_EQ(count(copy, u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'before'"_s), rows_before);
        return copy;
    }

    testing::TempFolder folder;
    const QString path = folder.path(u"cvd.mdb"_s);
    Database db;
};

TEST_F(Maintenance, ABackupTakenWhileAnotherConnectionWritesIsSoundAndComplete)
{
    insert_before(db, 20000);
    WriterThread writer(path);
    backup_to(db, folder.path(u"copy.mdb"_s), [] { std::this_thread::yield(); });
    writer.finish();

    Database copy = checked_copy(20000);
    EXPECT_LE(count(copy, u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'during'"_s), writer.written.load());
}

TEST_F(Maintenance, ABackupInSharedModeKeepsToOneSnapshotWhileAWriterGoesOn)
{
    db.enable_wal();
    insert_before(db, 60000);
    WriterThread writer(path);
    while (writer.written == 0) {
        std::this_thread::yield();
    }
    // Between steps the writer gets its turn. Were the copy to start over after each of its commits, it
    // would never end while the writer goes on; the writer is stopped after many steps so that the test ends
    // either way and the count below tells.
    int pauses = 0;
    const int written_before = writer.written;
    backup_to(db, folder.path(u"copy.mdb"_s), [&] {
        if (++pauses == 200) {
            writer.stop = true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    });
    const int written_after = writer.written;
    writer.finish();

    Database copy = checked_copy(60000);
    const qint64 pages = count(copy, u"PRAGMA page_count"_s);
    EXPECT_GT(pages, 3 * 256); // several steps
    EXPECT_LE(pauses, pages / 256);
    EXPECT_GT(written_after, written_before);
    const qint64 during = count(copy, u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'during'"_s);
    EXPECT_GE(during, written_before);
    EXPECT_LE(during, written_after);
}

TEST_F(Maintenance, PurgeRemovesExactlyTheOldFinishedRows)
{
    const QDateTime now(QDate(2026, 11, 23), QTime(12, 0));
    for (int row = 0; row < 7; ++row) {
        insert_message(db, u"old sent"_s, -1, now.addDays(-40 - row));
    }
    insert_message(db, u"new sent"_s, -1, now.addDays(-2));
    insert_message(db, u"old waiting"_s, 0, now.addDays(-90));
    insert_message(db, u"sent, no date"_s, -1, {});
    db.exec(u"INSERT INTO cv_messages (cv_recipient, cv_sent, cv_scheduled, cv_error, cv_date_time_sent) VALUES "
            "('old pending', 0, -1, 0, '2020-01-01 00:00:00')"_s);

    int pauses = 0;
    EXPECT_EQ(purge_finished_messages(db, now.addDays(-30), 3, [&] { ++pauses; }), 7);
    EXPECT_EQ(pauses, 2); // batches of 3, 3 and 1
    EXPECT_EQ(count(db, u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'old sent'"_s), 0);
    EXPECT_EQ(count(db, u"SELECT count(*) FROM cv_messages"_s), 4);
    EXPECT_EQ(purge_finished_messages(db, now.addDays(-30)), 0);
}

} // namespace
} // namespace cvd::store
