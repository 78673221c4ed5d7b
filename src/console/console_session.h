#pragma once

#include "console/activity_log.h"
#include "console/console_context.h"
#include "console/console_prompter.h"
#include "console/window_owner.h"
#include "engine_link/supervision.h"

#include <memory>

namespace cvd::console {

class send_form;

// The console as one piece: its prompter (there from start-up on), the state the windows share, the owner of
// the windows, and the send window that owns the dispatch loop.
class ConsoleSession
{
public:
    explicit ConsoleSession(engine_link::EngineStarter starter = engine_link::start_detached);
    ~ConsoleSession();
    ConsoleSession(const ConsoleSession&) = delete;
    ConsoleSession& operator=(const ConsoleSession&) = delete;

    Prompter& prompter() { return m_prompter; }

    // After a successful start-up: loads and shows the send window, which starts the dispatch loop, and runs
    // the event loop until the window has unloaded. Returns the exit status.
    int run(AppState& state);
    // Asks the send window to close as File > Exit does, with its question.
    void request_close();

private:
    // Connects the send window's doors to the windows behind them.
    void wire_doors();

    ConsolePrompter m_prompter;
    ConsoleState m_shared;
    WindowOwner m_windows;
    ActivityLog m_activity;
    engine_link::EngineStarter m_starter;
    std::unique_ptr<ConsoleContext> m_context;
};

} // namespace cvd::console
