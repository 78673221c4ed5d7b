#include "engine_link/supervision.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/console_view.h"
#include "platform/process_list.h"

#include <QProcess>

using namespace Qt::StringLiterals;

namespace cvd::engine_link {

int scan_processes(AppState& state, const QString& proc_root)
{
    state.process_table.fill(QString(), kProcessTableSize);
    yield_to_event_loop();
    const QList<platform::ProcessEntry> processes = platform::list_processes(kProcessTableSize, proc_root);
    int count = 0;
    for (const platform::ProcessEntry& process : processes) {
        // The program file's name, and the process's own name where that differs: an engine that is a
        // script runs as its interpreter but carries its own name.
        QString entry = process.exe_name;
        if (process.name != process.exe_name) {
            entry = entry.isEmpty() ? process.name : entry + u' ' + process.name;
        }
        state.process_table[count++] = entry;
    }
    yield_to_event_loop();
    return count;
}

bool process_running(const AppState& state, int process_count, const QString& name)
{
    const QString wanted = name.toLower();
    for (int entry = 0; entry < process_count && entry < state.process_table.size(); ++entry) {
        if (state.process_table.at(entry).toLower().contains(wanted)) {
            return true;
        }
    }
    return false;
}

void start_detached(const QString& program, const QStringList& arguments)
{
    QProcess engine;
    engine.setProgram(program);
    engine.setArguments(arguments);
    engine.setStandardInputFile(QProcess::nullDevice());
    engine.setStandardOutputFile(QProcess::nullDevice());
    engine.setStandardErrorFile(QProcess::nullDevice());
    engine.startDetached();
}

void supervise_engine(AppState& state, ConsoleView& view, QString& engine_status, const EngineStarter& starter,
                      const QString& proc_root)
{
    const int count = scan_processes(state, proc_root);
    const QString program = state.program_folder + u"cvddial"_s;
    const QStringList arguments = state.local_db ? QStringList{u"/localdb"_s} : QStringList{};
    if (state.startup_complete) {
        // The first tick starts the engine without looking; a second engine is the engine's own affair.
        state.startup_complete = false;
        starter(program, arguments);
        yield_to_event_loop();
        return;
    }
    if (!process_running(state, count, u"cvddial"_s)) {
        engine_status = kEngineNotRunningText;
        view.set_engine_status(engine_status);
        starter(program, arguments);
        yield_to_event_loop();
        return;
    }
    if (engine_status == kEngineNotRunningText) {
        engine_status.clear();
        view.set_engine_status(engine_status);
    }
}

} // namespace cvd::engine_link
