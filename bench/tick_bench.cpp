// One idle tick of the dispatcher over a long history: nothing is due, nothing arrives, the counts and the
// due query must stay cheap however many finished rows the table holds.
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/prompter.h"
#include "dispatch/dispatcher.h"
#include "platform/registry.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/null_prompter.h"
#include "support/recording_view.h"

#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

void fill_history(cvd::store::Database& db, int rows)
{
    cvd::store::Transaction transaction(db);
    cvd::store::Statement insert =
        db.prepare(u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, "
                   "cv_date_time_sent, cv_from, cv_sent, cv_error, cv_scheduled, cv_repeat_interval, cv_transaction) "
                   "VALUES ('bob', '5551', 'an old page', 'tapnet', ?1, ?1, 'ops', -1, ?2, -1, 0, ?3)"_s);
    const QDateTime start(QDate(2024, 1, 1), QTime(0, 0));
    for (int row = 0; row < rows; ++row) {
        insert.reset();
        insert.bind(1, start.addSecs(row * 60LL)).bind(2, row % 50 == 0 ? -1 : 0).bind(3, row + 1);
        insert.exec();
    }
    transaction.commit();
}

void BM_IdleTickOverHistory(benchmark::State& bench)
{
    QTemporaryDir dir;
    qputenv("CVD_RUNTIME_DIR", dir.path().toUtf8());
    cvd::testing::NullPrompter prompter;
    cvd::SystemClock clock;
    cvd::AppState state(prompter, clock, cvd::platform::Registry(dir.path() + u"/registry"_s), dir.path());
    state.global_db_folder = dir.path() + u"/"_s;
    state.user_db_folder = dir.path() + u"/user/"_s;
    QDir().mkpath(state.user_db_folder);
    state.program_folder = dir.path() + u"/program/"_s;
    cvd::store::create_global_database(cvd::global_db_path(state));
    {
        cvd::store::Database db = cvd::store::Database::open(cvd::global_db_path(state));
        fill_history(db, static_cast<int>(bench.range(0)));
    }
    cvd::load_settings(state);
    state.first_transaction = static_cast<qint32>(bench.range(0)); // every history row is of an earlier run
    cvd::testing::RecordingView view;
    cvd::dispatch::Dispatcher dispatcher(state, view, [](const QString&, const QStringList&) {});
    dispatcher.load(dir.path() + u"/cvd.sock"_s);
    for (auto _ : bench) {
        benchmark::DoNotOptimize(dispatcher.tick());
    }
    dispatcher.unload();
}
BENCHMARK(BM_IdleTickOverHistory)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(20);

} // namespace
