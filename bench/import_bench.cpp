// Provisioning a large address book: 50,000 recipients imported from a text file into an empty database. The
// figure includes what every import of recipients does at its end: publishing the 50,000 names to the machine
// store, one value each.
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/prompter.h"
#include "exchange/text_exchange.h"
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

struct Workspace
{
    explicit Workspace(const QString& name)
        : state(prompter, clock, cvd::platform::Registry(dir.path() + u"/registry"_s), dir.path())
    {
        state.global_db_folder = dir.path() + u'/' + name + u'/';
        state.user_db_folder = state.global_db_folder + u"user/"_s;
        QDir().mkpath(state.user_db_folder);
        cvd::store::create_global_database(cvd::global_db_path(state));
        cvd::open_database(state);
    }

    QTemporaryDir dir;
    cvd::testing::NullPrompter prompter;
    cvd::SystemClock clock;
    cvd::AppState state;
};

// A text file of `count` recipients, written by the program's own export.
QString make_recipients_file(const QString& folder, int count)
{
    Workspace source(u"source"_s);
    {
        cvd::store::Transaction transaction(source.state.global_db);
        cvd::store::Statement insert = source.state.global_db.prepare(
            u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_id, cv_carrier, cv_maxchars, cv_alpha, "
            "cv_on_call, cv_ad_hoc, cv_drop_control, cv_group, cv_SendSubject, cv_extra1, cv_extra2, "
            "cv_remove_from, cv_priority) VALUES (?1, ?2, ?3, 'tapnet', 240, -1, 0, 0, 0, 0, 0, 'Ward 3', '', 0, "
            "100)"_s);
        for (int row = 0; row < count; ++row) {
            insert.reset();
            insert.bind(1, u"user"_s + QString::number(row))
                .bind(2, u"User, Number "_s + QString::number(row))
                .bind(3, QString::number(5550000 + row));
            insert.exec();
        }
        transaction.commit();
    }
    const QString path = folder + u"/recip.txt"_s;
    cvd::exchange::export_text(source.state, cvd::exchange::ExchangeKind::Recipients, path);
    return path;
}

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
