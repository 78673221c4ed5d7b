#pragma once

#include "dispatch/dispatcher.h"

#include <QObject>
#include <QTimer>
#include <memory>

class QSocketNotifier;

namespace cvd::dispatch {

// What drives the dispatcher: the repeating timer, the notifier of the local channel and the stop request.
// The front end that shows the program owns one: `cvd --headless` and the console's main window alike.
// A halt inside a tick is left to the application's halt barrier; a stop request asks the view to quit.
class DispatchLoop : public QObject
{
public:
    DispatchLoop(AppState& state, ConsoleView& view, engine_link::EngineStarter starter,
                 QString proc_root = QStringLiteral("/proc"));
    ~DispatchLoop() override;
    DispatchLoop(const DispatchLoop&) = delete;
    DispatchLoop& operator=(const DispatchLoop&) = delete;

    // Loads the dispatcher with its channel at socket_path and arms the first tick, soon after. False with a
    // reason when the channel cannot be bound; nothing runs then.
    bool start(const QString& socket_path, QString* error = nullptr);
    // Stops the timer and the notifier and unloads the dispatcher. Safe to call twice.
    void stop();

    bool running() const { return m_running; }
    Dispatcher& dispatcher() { return m_dispatcher; }
    // The program's one timer; off while a tick runs and armed again from its end, so ticks never overlap.
    QTimer& repeat_timer() { return m_repeat_timer; }

private:
    void run_tick();

    ConsoleView& m_view;
    Dispatcher m_dispatcher;
    QTimer m_repeat_timer;
    std::unique_ptr<QSocketNotifier> m_channel_notifier;
    bool m_running = false;
};

} // namespace cvd::dispatch
