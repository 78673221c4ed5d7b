// Upkeep of a large global database: compaction, null repair and purge, the last with a writer of its own
// going on meanwhile. Each database is built once per run (the large one is copied from a file built once),
// and each benchmark runs a single iteration: they rewrite the file they measure.
#include "store/compaction.h"
#include "store/database.h"
#include "store/maintenance.h"
#include "store/schema.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <algorithm>
#include <atomic>
#include <benchmark/benchmark.h>
#include <chrono>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

using cvd::store::Database;
using cvd::store::Statement;
using cvd::store::Transaction;

constexpr int kHistoryRows = 1000000;
constexpr int kOldFinishedRows = 900000;
const QDateTime kNow(QDate(2026, 11, 23), QTime(9, 30));

// 900,000 finished rows a year old and 100,000 recent ones, of which every tenth is still waiting; in
// shared mode, as the program keeps the file. Built once and copied for each benchmark.
const QString& history_template()
{
    static QTemporaryDir dir;
    static const QString path = [] {
        QString file = dir.filePath(u"history.mdb"_s);
        cvd::store::create_global_database(file);
        Database db = Database::open(file);
        db.enable_wal();
        Transaction transaction(db);
        Statement insert = db.prepare(
            u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, "
            "cv_date_time_sent, cv_from, cv_sent, cv_error, cv_scheduled, cv_repeat_interval, cv_transaction) "
            "VALUES ('bob', '5551', ?1, 'tapnet', ?2, ?3, 'ops', ?4, 0, ?4, 0, ?5)"_s);
        for (int row = 0; row < kHistoryRows; ++row) {
            const bool old = row < kOldFinishedRows;
            const bool waiting = !old && row % 10 == 0;
            const QDateTime at = old ? kNow.addDays(-365).addSecs(row * 30LL) : kNow.addSecs(-(row % 86400));
            insert.reset();
            insert.bind(1, u"page number %1 of the history"_s.arg(row)).bind(2, at);
            if (waiting) {
                insert.bind_null(3);
            } else {
                insert.bind(3, at);
            }
            insert.bind(4, waiting ? 0 : -1).bind(5, row + 1);
            insert.exec();
        }
        transaction.commit();
        return file;
    }();
    return path;
}

QString copy_of_history(const QTemporaryDir& dir)
{
    QString path = dir.filePath(u"cvd.mdb"_s);
    QFile::copy(history_template(), path);
    return path;
}

// The compaction of a million-row file of which two rows in five were deleted.
void BM_CompactMillionRowFile(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = copy_of_history(dir);
    {
        Database db = Database::open(path);
        db.exec(u"DELETE FROM cv_messages WHERE cv_transaction % 5 < 2"_s);
    }
    const qint64 before = QFileInfo(path).size();
    for (auto _ : state) {
        cvd::store::compact_file(path, dir.filePath(u"cvdtmp.mdb"_s), 10000);
    }
    state.counters["mb_before"] = static_cast<double>(before) / 1e6;
    state.counters["mb_after"] = static_cast<double>(QFileInfo(path).size()) / 1e6;
}
BENCHMARK(BM_CompactMillionRowFile)->Iterations(1)->Unit(benchmark::kMillisecond);

// The null repair over 100,000 unsent rows that each miss a few columns.
void BM_RepairNullsOfUnsentRows(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString global_path = dir.filePath(u"global.mdb"_s);
    const QString user_path = dir.filePath(u"user.mdb"_s);
    cvd::store::create_global_database(global_path);
    cvd::store::create_user_database(user_path);
    Database global = Database::open(global_path);
    Database user = Database::open(user_path);
    global.enable_wal();
    user.enable_wal();
    {
        Transaction transaction(global);
        Statement insert = global.prepare(u"INSERT INTO cv_messages (cv_recipient, cv_message, cv_sent, cv_error, "
                                          "cv_scheduled, cv_transaction) VALUES ('bob', ?1, 0, 0, 0, ?2)"_s);
        for (int row = 0; row < 100000; ++row) {
            insert.reset();
            insert.bind(1, u"waiting page %1"_s.arg(row)).bind(2, row + 1);
            insert.exec();
        }
        transaction.commit();
    }
    for (auto _ : state) {
        cvd::store::repair_nulls(global, user, kNow);
    }
    state.SetItemsProcessed(100000);
}
BENCHMARK(BM_RepairNullsOfUnsentRows)->Iterations(1)->Unit(benchmark::kMillisecond);

// Another process's writer: inserts one row at a time on its own connection and notes the longest wait.
class Writer
{
public:
    explicit Writer(const QString& path)
        : m_thread([this, path] {
              Database db = Database::open(path);
              db.enable_wal();
              Statement& insert = db.cached(u"INSERT INTO cv_messages (cv_recipient, cv_message, cv_sent, cv_error, "
                                            "cv_scheduled) VALUES ('writer', 'a new page', 0, 0, 0)"_s);
              while (!m_stop) {
                  const auto start = std::chrono::steady_clock::now();
                  try {
                      insert.exec();
                  } catch (const cvd::store::Error&) {
                      // Waited out the whole busy timeout: the program would take the common error path.
                      ++m_failures;
                  }
                  const double waited =
                      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
                  m_longest_ms = std::max(m_longest_ms.load(), waited);
                  ++m_inserts;
              }
          })
    {
    }
    ~Writer() { stop(); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void stop()
    {
        m_stop = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }
    double longest_ms() const { return m_longest_ms; }
    int inserts() const { return m_inserts; }
    int failures() const { return m_failures; }

private:
    std::atomic<bool> m_stop{false};
    std::atomic<double> m_longest_ms{0};
    std::atomic<int> m_inserts{0};
    std::atomic<int> m_failures{0};
    std::thread m_thread;
};

// The purge of 900,000 old finished rows out of a million in batches of 2,000, with a writer meanwhile. The
// argument is the pause between batches in milliseconds (cvdctl takes 5).
void BM_PurgeWithWriter(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = copy_of_history(dir);
    Database db = Database::open(path);
    db.enable_wal();
    const auto pause_ms = std::chrono::milliseconds(state.range(0));
    qint64 deleted = 0;
    double longest_ms = 0;
    int inserts = 0;
    int failures = 0;
    for (auto _ : state) {
        Writer writer(path);
        deleted = cvd::store::purge_finished_messages(db, kNow.addDays(-30), 2000,
                                                      [&] { std::this_thread::sleep_for(pause_ms); });
        writer.stop();
        longest_ms = writer.longest_ms();
        inserts = writer.inserts();
        failures = writer.failures();
    }
    state.counters["deleted"] = static_cast<double>(deleted);
    state.counters["writer_longest_wait_ms"] = longest_ms;
    state.counters["writer_inserts"] = inserts;
    state.counters["writer_failures"] = failures;
}
BENCHMARK(BM_PurgeWithWriter)->Arg(0)->Arg(5)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
