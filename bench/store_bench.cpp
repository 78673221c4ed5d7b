#include "store/database.h"
#include "store/schema.h"
#include "store/unique.h"

#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

using cvd::store::Database;

// One draw of a transaction number from a global database file in write-ahead mode: one committed write.
void bm_get_unique(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"cvd.mdb"_s);
    cvd::store::create_global_database(path);
    Database db = Database::open(path);
    db.enable_wal();
    for (auto _ : state) {
        benchmark::DoNotOptimize(cvd::store::get_unique(db));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(bm_get_unique);

// A new global database with its tables, indexes and default rows, published into place.
void bm_create_global_database(benchmark::State& state)
{
    QTemporaryDir dir;
    int round = 0;
    for (auto _ : state) {
        const QString path = dir.filePath(u"cvd-%1.mdb"_s.arg(++round));
        cvd::store::create_global_database(path);
        state.PauseTiming();
        QFile::remove(path);
        state.ResumeTiming();
    }
}
BENCHMARK(bm_create_global_database)->Unit(benchmark::kMillisecond);

} // namespace
