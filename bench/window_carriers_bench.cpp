// How fast the carrier windows open: frmAddCarrier builds 18 frames of boxes (goal: well under 100 ms, so the
// dialog comes up at once) and list_carriers reads 5,000 carriers (goal: under 100 ms).
#include "console/activity_log.h"
#include "console/console_context.h"
#include "console/frm_add_carrier.h"
#include "console/list_carriers.h"
#include "console/window_owner.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "offscreen_application.h"
#include "platform/registry.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/null_prompter.h"

#include <QApplication>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

struct CarrierFixture
{
    explicit CarrierFixture(int carriers)
        : state(prompter, clock, cvd::platform::Registry(dir.path() + u"/registry"_s), dir.path())
    {
        state.global_db_folder = dir.path() + u"/"_s;
        state.user_db_folder = dir.path() + u"/"_s;
        cvd::store::create_global_database(cvd::global_db_path(state));
        state.global_db = cvd::store::Database::open(cvd::global_db_path(state));
        cvd::store::Transaction commit(state.global_db);
        cvd::store::Statement insert = state.global_db.prepare(
            u"INSERT INTO cv_carriers (cv_name, cv_phone_number, cv_modem_settings, cv_dial_type, cv_priority) "
            u"VALUES (?1, '5551234', '1200,e,7,1', 'tap', 100)"_s);
        for (int i = 0; i < carriers; ++i) {
            insert.reset();
            insert.bind(1, u"carrier"_s + QString::number((i * 7919) % carriers));
            insert.exec();
        }
        commit.commit();
    }

    QTemporaryDir dir;
    cvd::testing::NullPrompter prompter;
    cvd::SystemClock clock;
    cvd::AppState state;
    cvd::console::ConsoleState shared;
    cvd::console::WindowOwner windows;
    cvd::console::ActivityLog activity;
    cvd::console::ConsoleContext context{state, shared, windows, activity, nullptr, {}, {}};
};

void BM_AddCarrierDialogEditMode(benchmark::State& bench)
{
    offscreen_application();
    CarrierFixture fixture(10);
    for (auto _ : bench) {
        cvd::console::frmAddCarrier dialog(fixture.context, true, u"carrier3"_s, nullptr);
        benchmark::DoNotOptimize(dialog.windowTitle().size());
    }
}
BENCHMARK(BM_AddCarrierDialogEditMode)->Unit(benchmark::kMillisecond);

void BM_CarrierListFiveThousand(benchmark::State& bench)
{
    offscreen_application();
    CarrierFixture fixture(5000);
    for (auto _ : bench) {
        cvd::console::list_carriers list(fixture.context, true, nullptr);
        benchmark::DoNotOptimize(list.windowTitle().size());
    }
}
BENCHMARK(BM_CarrierListFiveThousand)->Unit(benchmark::kMillisecond);

} // namespace
