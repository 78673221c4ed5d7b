#include "dispatch/dispatcher.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/console_view.h"
#include "intake/drop_files.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace cvd::dispatch {

Dispatcher::Dispatcher(AppState& state, ConsoleView& view, engine_link::EngineStarter starter, QString proc_root)
    : m_state(state), m_view(view), m_starter(std::move(starter)), m_proc_root(std::move(proc_root))
{
}

bool Dispatcher::load(const QString& socket_path, QString* error)
{
    if (!m_channel.bind(socket_path)) {
        if (error != nullptr) {
            *error = m_channel.error();
        }
        return false;
    }
    m_integration.socket_path = m_channel.path();
    intake::UpdateIntegrationSettings(m_state, m_integration);
    intake::publish_recipients(m_state);
    intake::publish_groups(m_state);
    intake::UpdateIntegrationRunning(m_state, m_integration, 1);
    return true;
}

void Dispatcher::unload()
{
    if (m_channel.is_bound()) {
        // A line another program handed in is taken before the channel goes, not dropped with it.
        receive();
        intake::check_wm_list(m_state, m_channel.reg_messages());
    }
    // The lists an import left to the publishing worker are finished before the program says it has stopped.
    intake::wait_for_publishing();
    intake::UpdateIntegrationRunning(m_state, m_integration, 0);
    m_channel.close();
}

Dispatcher::TickResult Dispatcher::tick()
{
    TickResult result;
    m_state.clear_error_counters();
    yield_to_event_loop();
    intake::UpdateIntegrationRunning(m_state, m_integration, 1);
    intake::check_for_files(m_state);
    intake::check_registry(m_state);
    intake::check_wm_list(m_state, m_channel.reg_messages());
    m_scheduler.trans_list.inc_trans_life();
    queue::schedule_messages(m_state, m_scheduler);
    if (m_scheduler.fast_tick_requested) {
        m_scheduler.fast_tick_requested = false;
        result.next_interval_ms = kFastTickMs;
    }
    queue::update_counters(m_state, m_view, m_counters);
    engine_link::supervise_engine(m_state, m_view, m_engine_status, m_starter, m_proc_root);
    result.stop_requested = intake::IntegrationStopRequest(m_state);
    return result;
}

void Dispatcher::receive()
{
    const intake::LocalChannel::Changes changes = m_channel.drain();
    for (const QString& line : changes.activity_lines) {
        m_view.add_activity_line(line);
    }
    if (changes.status) {
        m_engine_status = *changes.status;
        m_view.set_engine_status(m_engine_status);
    }
}

} // namespace cvd::dispatch
