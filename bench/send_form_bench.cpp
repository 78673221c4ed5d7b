// How fast the send window fills its recipient lists: show_users over 10,000 recipients (goal: under 100 ms).
#include "bench_program.h"
#include "console/send_form.h"
#include "offscreen_application.h"

#include <benchmark/benchmark.h>

namespace {

void BM_ShowUsersTenThousand(benchmark::State& bench)
{
    offscreen_application();
    BenchProgram<> program;
    program.open_fresh_global_database();
    fill_recipients(program.state.global_db, 10000, 20);
    cvd::console::send_form window(program.context, [](const QString&, const QStringList&) {});
    for (auto _ : bench) {
        window.show_users();
        benchmark::DoNotOptimize(window.unpicked_entries().size());
    }
}
BENCHMARK(BM_ShowUsersTenThousand)->Unit(benchmark::kMillisecond);

} // namespace
