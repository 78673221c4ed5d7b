// How long "Display Setup" takes to apply over a send window of 10,000 recipients: the settings stored and
// saved to both databases, the send window's options, and both lists rebuilt (goal: under 150 ms).
#include "bench_program.h"
#include "console/frm_display_options.h"
#include "console/send_form.h"
#include "offscreen_application.h"

#include <QCheckBox>
#include <QDir>
#include <QPushButton>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

// The settings loaded as at start-up, from a global and a user folder of their own.
void load_settings_apart(BenchProgram<>& program)
{
    program.state.global_db_folder = program.dir.path() + u"/g/"_s;
    program.state.user_db_folder = program.dir.path() + u"/u/"_s;
    QDir().mkpath(program.state.global_db_folder);
    QDir().mkpath(program.state.user_db_folder);
    cvd::load_settings(program.state);
}

void BM_DisplaySetupApplyTenThousand(benchmark::State& bench)
{
    offscreen_application();
    BenchProgram<> program;
    load_settings_apart(program);
    fill_recipients(program.state.global_db, 10000, 20);
    cvd::console::ConsoleContext& context = program.context;
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
