#pragma once

namespace cvd {

struct AppState;
class Prompter;

namespace app {

// What shows the program to its operator: the console's windows, or the log lines of `cvd --headless`.
// The start-up and the orderly end are the same for both; a front end brings its prompter and runs the
// program between the two, owning the dispatch loop through its console view.
class FrontEnd
{
public:
    virtual ~FrontEnd() = default;

    // Every box and question of the program, from start-up on.
    virtual Prompter& prompter() = 0;
    // After a successful start-up: starts the dispatch loop, runs the event loop until the program is asked to
    // end, and unloads again (unless a halt ended the loop). Returns the exit status.
    virtual int run(AppState& state) = 0;
    // SIGINT or SIGTERM arrived: end as the operator's own request to end would.
    virtual void request_stop() = 0;
    // The orderly end has run.
    virtual void ended() {}
};

} // namespace app
} // namespace cvd
