// Provisioning a large address book: 50,000 recipients imported from a text file into an empty database. The
// figure includes what every import of recipients does at its end: publishing the 50,000 names to the machine
// store, one value each.
#include "bench_program.h"
#include "core/prompter.h"
#include "exchange/text_exchange.h"
#include "recipients_file.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

struct Workspace : BenchProgram<>
{
    explicit Workspace(const QString& name) { open_named_databases(name); }
};

void BM_ImportFiftyThousandRecipients(benchmark::State& bench)
{
    QTemporaryDir files;
    const QString path = make_recipients_file(files.path(), static_cast<int>(bench.range(0)));
    for (auto _ : bench) {
        bench.PauseTiming();
        auto target = std::make_unique<Workspace>(u"target"_s);
        bench.ResumeTiming();
        const cvd::exchange::ImportResult result =
            cvd::exchange::import_text(target->state, cvd::exchange::ExchangeKind::Recipients, path, false);
        if (result.imported != bench.range(0)) {
            bench.SkipWithError("not every record was imported");
        }
        bench.PauseTiming();
        target.reset();
        bench.ResumeTiming();
    }
    bench.SetItemsProcessed(bench.iterations() * bench.range(0));
}
BENCHMARK(BM_ImportFiftyThousandRecipients)->Arg(50000)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
