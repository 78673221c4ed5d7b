#pragma once

#include "engine_link/supervision.h"
#include "intake/local_channel.h"
#include "intake/registry_transfer.h"
#include "queue/counters.h"
#include "queue/scheduler.h"

#include <QString>

namespace cvd {

struct AppState;
class ConsoleView;

namespace dispatch {

// The timer's intervals: from the end of one tick to the start of the next, or soon after a group was expanded.
inline constexpr int kRegularTickMs = 5000;
inline constexpr int kFastTickMs = 100;

// The steps of the program's one timer, without the timer itself (DispatchLoop drives it). It keeps its own
// state (the transaction memory, the last failed count, the engine status) and only reports to the view.
class Dispatcher
{
public:
    Dispatcher(AppState& state, ConsoleView& view, engine_link::EngineStarter starter,
               QString proc_root = QStringLiteral("/proc"));

    // What the main window's load does: the local channel bound at socket_path, the program published to
    // other programs, Running 1. False with a reason when the channel cannot be bound.
    bool load(const QString& socket_path, QString* error = nullptr);
    // The end: what still waits on the channel is enqueued, then Running 0 and the channel closed.
    void unload();

    struct TickResult
    {
        int next_interval_ms = kRegularTickMs;
        bool stop_requested = false;
    };
    // One tick, in order: Running 1, drop files, the registry, channel lines, ageing of the transaction
    // memory, the scheduler, the counters, engine supervision, the stop request.
    TickResult tick();

    // Notes what arrived on the local channel: activity lines and status texts go to the view at once,
    // message lines wait for the next tick.
    void receive();

    intake::LocalChannel& channel() { return m_channel; }
    queue::SchedulerState& scheduler() { return m_scheduler; }
    queue::CounterState& counters() { return m_counters; }
    const QString& engine_status() const { return m_engine_status; }

private:
    AppState& m_state;
    ConsoleView& m_view;
    engine_link::EngineStarter m_starter;
    QString m_proc_root;
    intake::LocalChannel m_channel;
    intake::IntegrationState m_integration;
    queue::SchedulerState m_scheduler;
    queue::CounterState m_counters;
    QString m_engine_status;
};

} // namespace dispatch
} // namespace cvd
