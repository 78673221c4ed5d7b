// The queue folders over a long history: the sent folder opening on 10,000 rows of this run (goal: under
// 200 ms), the refresh of each tick that finds nothing changed (goal: under 2 ms), and the sum of ids that a
// refresh runs when the file was written to, over a million rows of earlier runs. The database is made once and kept
// under the build folder between runs.
#include "bench_program.h"
#include "console/folder_grid_model.h"
#include "console/sent_form.h"
#include "offscreen_application.h"
#include "queue/folders.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kHistoryRows = 1000000;
constexpr int kThisRunRows = 10000;
constexpr int kRecipients = 500;
constexpr qint32 kFirstTransaction = kHistoryRows;

void fill(cvd::store::Database& db)
{
    cvd::store::Transaction transaction(db);
    cvd::store::Statement recipient =
        db.prepare(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_ad_hoc) VALUES (?1, ?2, 0, ?3)"_s);
    for (int i = 0; i < kRecipients; ++i) {
        recipient.reset();
        recipient.bind(1, u"r"_s + QString::number(i))
            .bind(2, u"Recipient "_s + QString::number(i))
            .bind(3, i % 10 == 0 ? -1 : 0);
        recipient.exec();
    }
    cvd::store::Statement insert =
        db.prepare(u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, "
                   "cv_date_time_sent, cv_from, cv_sent, cv_error, cv_scheduled, cv_repeat_interval, cv_transaction) "
                   "VALUES (?1, '5551', ?2, 'tapnet', ?3, ?3, 'ops', -1, ?4, -1, 0, ?5)"_s);
    const QDateTime start(QDate(2024, 1, 1), QTime(0, 0));
    for (int row = 0; row < kHistoryRows + kThisRunRows; ++row) {
        insert.reset();
        insert.bind(1, u"r"_s + QString::number(row % kRecipients))
            .bind(2, u"Server %1 reports a full disk\r\non volume %2"_s.arg(row % 97).arg(row % 7))
            .bind(3, start.addSecs(row * 30LL))
            .bind(4, row % 50 == 0 ? -1 : 0)
            .bind(5, row + 1);
        insert.exec();
    }
    transaction.commit();
}

// The cached file, made on first use.
QString history_database()
{
    const QString folder = QStringLiteral(CVD_BENCH_CACHE_DIR) + u"/folders"_s;
    QString path = folder + u"/cvd.mdb"_s;
    if (!QFile::exists(path)) {
        QDir().mkpath(folder);
        const QString building = path + u".new"_s;
        QFile::remove(building);
        cvd::store::create_global_database(building);
        cvd::store::Database db = cvd::store::Database::open(building);
        fill(db);
        db.close();
        QFile::rename(building, path);
    }
    return path;
}

struct FolderFixture : BenchProgram<>
{
    FolderFixture()
    {
        offscreen_application();
        state.global_db = cvd::store::Database::open(history_database(), cvd::store::Database::OpenMode::ReadOnly);
        state.first_transaction = kFirstTransaction;
    }
};

void BM_SentFolderOpensOnTenThousandRows(benchmark::State& bench)
{
    FolderFixture fixture;
    for (auto _ : bench) {
        cvd::console::sent_form folder(fixture.context);
        folder.show();
        QApplication::processEvents();
        benchmark::DoNotOptimize(folder.model().rowCount());
        bench.PauseTiming();
        folder.hide();
        bench.ResumeTiming();
    }
}
BENCHMARK(BM_SentFolderOpensOnTenThousandRows)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_FolderRefreshFindsNoChange(benchmark::State& bench)
{
    FolderFixture fixture;
    cvd::console::sent_form folder(fixture.context);
    folder.show();
    if (folder.model().rowCount() != kThisRunRows - kThisRunRows / 50) {
        bench.SkipWithError("the sent folder did not load this run's rows");
        return;
    }
    for (auto _ : bench) {
        folder.refresh();
    }
}
BENCHMARK(BM_FolderRefreshFindsNoChange)->Unit(benchmark::kMicrosecond);

// The sum of ids alone, as a refresh runs it when another program wrote to the file in between.
void BM_SentFolderChangeTest(benchmark::State& bench)
{
    FolderFixture fixture;
    for (auto _ : bench) {
        benchmark::DoNotOptimize(
            cvd::queue::folder_id_total(fixture.state.global_db, cvd::queue::Folder::Sent, kFirstTransaction));
    }
}
BENCHMARK(BM_SentFolderChangeTest)->Unit(benchmark::kMicrosecond);

} // namespace
