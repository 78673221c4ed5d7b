// How fast a message line becomes a Waiting row: the whole SendPage (open, look up, draw a transaction,
// insert, close) and the insert alone over an open database.
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/prompter.h"
#include "platform/registry.h"
#include "queue/enqueue.h"
#include "queue/send_page.h"
#include "store/database.h"
#include "store/schema.h"
#include "store/unique.h"
#include "support/null_prompter.h"

#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

struct Fixture
{
    Fixture() : state(prompter, clock, cvd::platform::Registry(dir.path() + u"/registry"_s), dir.path())
    {
        state.global_db_folder = dir.path() + u"/"_s;
        state.user_db_folder = dir.path() + u"/"_s;
        cvd::store::create_global_database(cvd::global_db_path(state));
        cvd::store::Database db = cvd::store::Database::open(cvd::global_db_path(state));
        db.exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier, cv_group) VALUES ('bob', 'tapnet', 0)"_s);
    }

    QTemporaryDir dir;
    cvd::testing::NullPrompter prompter;
    cvd::SystemClock clock;
    cvd::AppState state;
};

void BM_SendPageWholeLine(benchmark::State& bench)
{
    Fixture fixture;
    for (auto _ : bench) {
        const cvd::queue::SendPageResult result =
            cvd::queue::SendPage(fixture.state, u"bob ops Disk full on db1, please look"_s);
        benchmark::DoNotOptimize(result.message_id);
    }
    bench.SetItemsProcessed(bench.iterations());
}
BENCHMARK(BM_SendPageWholeLine)->Unit(benchmark::kMicrosecond);

void BM_InsertWaitingMessage(benchmark::State& bench)
{
    Fixture fixture;
    cvd::open_database(fixture.state);
    const cvd::queue::NewMessage message{u"bob"_s, u"Disk full on db1, please look"_s, u"tapnet"_s, u"ops"_s};
    for (auto _ : bench) {
        benchmark::DoNotOptimize(
            cvd::queue::insert_waiting_message(fixture.state.global_db, fixture.clock.now(), message, 15));
    }
    bench.SetItemsProcessed(bench.iterations());
}
BENCHMARK(BM_InsertWaitingMessage)->Unit(benchmark::kMicrosecond);

} // namespace
