// How long "Display Setup" takes to apply over a send window of 10,000 recipients: the settings stored and
// saved to both databases, the send window's options, and both lists rebuilt (goal: under 150 ms).
#include "console/activity_log.h"
#include "console/console_context.h"
#include "console/frm_display_options.h"
#include "console/send_form.h"
#include "console/window_owner.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "offscreen_application.h"
#include "platform/registry.h"
#include "store/database.h"
#include "support/null_prompter.h"

#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

struct SetupFixture
{
    SetupFixture() : state(prompter, clock, cvd::platform::Registry(dir.path() + u"/registry"_s), dir.path())
    {
        state.global_db_folder = dir.path() + u"/g/"_s;
        state.user_db_folder = dir.path() + u"/u/"_s;
        QDir().mkpath(state.global_db_folder);
        QDir().mkpath(state.user_db_folder);
        cvd::load_settings(state);
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

void BM_DisplaySetupApplyTenThousand(benchmark::State& bench)
{
    offscreen_application();
    SetupFixture fixture;
    cvd::console::ConsoleState shared;
    cvd::console::WindowOwner windows;
    cvd::console::ActivityLog activity;
    cvd::console::ConsoleContext context{fixture.state, shared, windows, activity, nullptr, {}, {}};
    cvd::console::send_form window(context, [](const QString&, const QStringList&) {});
    context.send_form = &window;
    cvd::console::frmDisplayOptions display(context, &window);
    auto* small_font = display.findChild<QCheckBox*>(u"fSmallFont"_s);
    auto* apply = display.findChild<QPushButton*>(u"apply"_s);
    for (auto _ : bench) {
        small_font->toggle(); // a real change each time: the font and the lists follow it
        apply->click();
        benchmark::DoNotOptimize(window.unpicked_entries().size());
    }
}
BENCHMARK(BM_DisplaySetupApplyTenThousand)->Unit(benchmark::kMillisecond);

} // namespace
