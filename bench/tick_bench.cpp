// One idle tick of the dispatcher over a long history: nothing is due, nothing arrives, the counts and the
// due query must stay cheap however many finished rows the table holds.
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/prompter.h"
#include "platform/registry.h"
#include "queue/console_view.h"
#include "queue/poll_loop.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/null_prompter.h"

#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

class QuietView : public cvd::queue::ConsoleView
{
public:
    QString counter_panel(int panel) const override { return m_panels[panel]; }
    void set_counter_panel(int panel, const QString& text) override { m_panels[panel] = text; }
    QString engine_status() const override { return m_status; }
    void set_engine_status(const QString& text) override { m_status = text; }
    void add_activity_line(const QString&) override {}
    void show_failure_warning() override {}
    void refresh_open_folders() override {}

private:
    QString m_panels[6];
    QString m_status;
};

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
    QuietView view;
    cvd::queue::Dispatcher dispatcher(state, view, [](const QString&, const QStringList&) {});
    dispatcher.load(dir.path() + u"/cvd.sock"_s);
    for (auto _ : bench) {
        benchmark::DoNotOptimize(dispatcher.tick());
    }
    dispatcher.unload();
}
BENCHMARK(BM_IdleTickOverHistory)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(20);

} // namespace
