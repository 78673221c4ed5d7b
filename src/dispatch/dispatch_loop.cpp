#include "dispatch/dispatch_loop.h"

#include "core/console_view.h"

#include <QSocketNotifier>
#include <utility>

namespace cvd::dispatch {

DispatchLoop::DispatchLoop(AppState& state, ConsoleView& view, engine_link::EngineStarter starter, QString proc_root)
    : m_view(view), m_dispatcher(state, view, std::move(starter), std::move(proc_root))
{
    m_repeat_timer.setSingleShot(true);
    connect(&m_repeat_timer, &QTimer::timeout, this, &DispatchLoop::run_tick);
}

DispatchLoop::~DispatchLoop()
{
    m_repeat_timer.stop();
    m_channel_notifier.reset();
}

bool DispatchLoop::start(const QString& socket_path, QString* error)
{
    if (!m_dispatcher.load(socket_path, error)) {
        return false;
    }
    m_channel_notifier = std::make_unique<QSocketNotifier>(m_dispatcher.channel().fd(), QSocketNotifier::Read);
    connect(m_channel_notifier.get(), &QSocketNotifier::activated, this, [this] { m_dispatcher.receive(); });
    m_running = true;
    m_repeat_timer.start(kFastTickMs);
    return true;
}

void DispatchLoop::stop()
{
    if (!m_running) {
        return;
    }
    m_running = false;
    m_repeat_timer.stop();
    m_channel_notifier.reset();
    m_dispatcher.unload();
}

void DispatchLoop::run_tick()
{
    const Dispatcher::TickResult result = m_dispatcher.tick();
    if (result.stop_requested) {
        m_view.request_quit();
        return;
    }
    if (m_running) {
        m_repeat_timer.start(result.next_interval_ms);
    }
}

} // namespace cvd::dispatch
