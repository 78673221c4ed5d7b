// How fast the send window fills its recipient lists: show_users over 10,000 recipients (goal: under 100 ms).
#include "console/activity_log.h"
#include "console/console_context.h"
#include "console/send_form.h"
#include "console/window_owner.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "offscreen_application.h"
#include "platform/registry.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/null_prompter.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

struct ListFixture
{
    ListFixture() : state(prompter, clock, cvd::platform::Registry(dir.path() + u"/registry"_s), dir.path())
    {
        state.global_db_folder = dir.path() + u"/"_s;
        state.user_db_folder = dir.path() + u"/"_s;
        cvd::store::create_global_database(cvd::global_db_path(state));
        state.global_db = cvd::store::Database::open(cvd::global_db_path(state));
        cvd::store::Transaction commit(state.global_db);
        cvd::store::Statement insert = state.global_db.prepare(
            u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_ad_hoc, cv_priority) "
            u"VALUES (?1, ?2, ?3, 0, 5)"_s);
        for (int i = 0; i < 10000; ++i) {
            insert.reset();
            insert.bind(1, u"r"_s + QString::number(i))
                .bind(2, u"Recipient "_s + QString::number((i * 7919) % 10000))
                .bind(3, i % 20 == 0 ? -1 : 0);
            insert.exec();
        }
        commit.commit();
    }

    QTemporaryDir dir;
    cvd::testing::NullPrompter prompter;
    cvd::SystemClock clock;
    cvd::AppState state;
};

void BM_ShowUsersTenThousand(benchmark::State& bench)
{
    offscreen_application();
    ListFixture fixture;
    cvd::console::ConsoleState shared;
    cvd::console::WindowOwner windows;
    cvd::console::ActivityLog activity;
    cvd::console::ConsoleContext context{fixture.state, shared, windows, activity, nullptr, {}, {}};
    cvd::console::send_form window(context, [](const QString&, const QStringList&) {});
    for (auto _ : bench) {
        window.show_users();
        benchmark::DoNotOptimize(window.unpicked_entries().size());
    }
}
BENCHMARK(BM_ShowUsersTenThousand)->Unit(benchmark::kMillisecond);

} // namespace
