// How fast a tick takes a burst of drop files: 1,000 files in the watched folder, all taken by one
// check_for_files call (read, rename, look up, draw a transaction, insert with its record, delete), with the
// global database as the program runs it: WAL and synchronous=FULL, so every commit waits for the disk.
// Goal: under 1 s for the burst.
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/prompter.h"
#include "intake/drop_files.h"
#include "platform/registry.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/null_prompter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFilesPerTick = 1000;

// The real time a minute ahead, so that files written just before the tick count as quiet.
class MinuteAheadClock : public cvd::Clock
{
public:
    QDateTime now() const override { return QDateTime::currentDateTime().addSecs(60); }
    void wait(int) override {}
    double random_unit() override { return 0.5; }
};

struct DropFixture
{
    DropFixture() : state(prompter, clock, cvd::platform::Registry(dir.path() + u"/registry"_s), dir.path())
    {
        state.program_folder = dir.path() + u"/program/"_s;
        state.global_db_folder = dir.path() + u"/global/"_s;
        state.user_db_folder = dir.path() + u"/user/"_s;
        for (const QString& folder : {state.program_folder, state.global_db_folder, state.user_db_folder}) {
            QDir().mkpath(folder);
        }
        cvd::store::create_global_database(cvd::global_db_path(state));
        state.global_db = cvd::store::Database::open(cvd::global_db_path(state));
        state.global_db.enable_wal();
        state.global_db.exec(u"PRAGMA synchronous=FULL"_s);
        state.global_db.exec(
            u"INSERT INTO cv_recipients (cv_name, cv_carrier, cv_group) VALUES ('bob', 'tapnet', 0)"_s);
    }

    void drop_files()
    {
        for (int index = 0; index < kFilesPerTick; ++index) {
            QFile file(state.global_db_folder + u"msg%1.asc"_s.arg(index));
            if (file.open(QIODevice::WriteOnly)) {
                file.write("Bob\nmonitoring\nDisk full on db1\nused 97 percent, please look\n");
            }
        }
    }

    QTemporaryDir dir;
    cvd::testing::NullPrompter prompter;
    MinuteAheadClock clock;
    cvd::AppState state;
};

void BM_DropFilesThousandInOneTick(benchmark::State& bench)
{
    DropFixture fixture;
    for (auto _ : bench) {
        bench.PauseTiming();
        fixture.drop_files();
        bench.ResumeTiming();
        cvd::intake::check_for_files(fixture.state);
    }
    const qsizetype left = QDir(fixture.state.global_db_folder).entryList({u"*.asc*"_s}, QDir::Files).size();
    if (left != 0) {
        bench.SkipWithError("files were left behind");
    }
    bench.SetItemsProcessed(bench.iterations() * kFilesPerTick);
}
BENCHMARK(BM_DropFilesThousandInOneTick)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
