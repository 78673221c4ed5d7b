#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace cvd {
struct AppState;
class ConsoleView;
} // namespace cvd

namespace cvd::engine_link {

// Fills process_table with the base names of running programs (at most 500, the rest empty); returns how
// many are valid. proc_root is for tests.
int scan_processes(AppState& state, const QString& proc_root = QStringLiteral("/proc"));

// True when `name` is part of any valid entry, without regard to case: any program whose name contains
// "cvddial" counts as the engine.
bool process_running(const AppState& state, int process_count, const QString& name);

// Starts the delivery engine program_folder + "cvddial" detached, with "/localdb" when the databases are
// local; its output goes nowhere. A failure is not reported: the next tick tries again.
using EngineStarter = std::function<void(const QString& program, const QStringList& arguments)>;
void start_detached(const QString& program, const QStringList& arguments);

// The supervision step of the tick: the first tick after start-up starts the engine unconditionally; later
// ticks start it while none runs, showing the not-running text, and clear that text once one runs again.
// `engine_status` is the status text last shown, kept by the caller and updated here.
void supervise_engine(AppState& state, ConsoleView& view, QString& engine_status, const EngineStarter& starter,
                      const QString& proc_root = QStringLiteral("/proc"));

} // namespace cvd::engine_link
